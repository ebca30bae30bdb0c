#pragma once

#include <QString>
#include <QVector>

/*!
 * \file CSProStructure.h
 * Parts of a CSPro dictionary that stand beside its records, items and value sets.
 *
 * Format: CSPro data dictionary (.dcf), text form and JSON.
 */

/*! One language of the dictionary's labels. */
struct CSProLanguage {
    QString name; /*!< for example "EN" */
    QString label;
};

/*! One level of the questionnaire; its number is its place among the levels, from 1. */
struct CSProLevel {
    QString name;
    QString label;
    QString note;
};

/*! How the records of a relation find each other. */
struct CSProRelationLink {
    QString primaryLink; /*!< item; empty: by occurrence number */
    QString secondary; /*!< record or repeated item */
    QString secondaryLink; /*!< item; empty: by occurrence number */
};

/*! A relation between records or repeated items. */
struct CSProRelation {
    QString name;
    QString primary; /*!< record or repeated item */
    QVector<CSProRelationLink> links;
};
