#pragma once

#include <model_Tessel/CSProItem.h>
#include <model_Tessel/CSProProblem.h>
#include <model_Tessel/CSProStructure.h>
#include <model_Tessel/model_Tessel_global.h>

#include <QList>
#include <QString>
#include <QVector>

#include <map>

class QMessageBox;

/*!
 * What a CSPro dictionary holds, and where its reader stands.
 *
 * Ownership: the common record, the lists and what is in them are never deleted by the library.
 */
struct MODEL_TESSEL_EXPORT CSProModel {
    CSProModel();

    int recordTypeStart = 1; /*!< column of the record-type code in a data line, from 1 */
    int recordTypeLen = 1; /*!< width of the record-type code; 0: one record type */
    QMessageBox* msgBox = nullptr; /*!< the one dialog; owned; null in a program without widgets */
    int recordsCount = 0; /*!< what getRecordsCount() returned last */
    int decimalAnswer = 0; /*!< 0 none, 1 yes to all, 2 no to all */
    int undefinedAnswer = 0; /*!< 0 none, 1 yes to all, 2 no to all */
    int decimalButton = 0; /*!< QMessageBox::StandardButton pressed last */
    int undefinedButton = 0; /*!< QMessageBox::StandardButton pressed last */
    QString version;
    QString label;
    QString name;
    QString positions; /*!< "Positions" as written */
    QString zeroFill; /*!< "ZeroFill" as written */
    QString decimalChar; /*!< "DecimalChar" as written */
    TCSProRecord* commonRecord; /*!< holds the identification items; not among \c records */
    QList<TCSProRecord*>* records; /*!< in file order */
    std::map<QString, TCSProRecord*> recordsByValue; /*!< latest record of each value */
    QList<TCSProItem*>* items; /*!< of all records, in file order, occurrences one by one */
    TCSProItem* lastItem = nullptr; /*!< item added last, which the next value set describes */
    TCSProRecord* currentRecord; /*!< record that receives the next items */
    bool lastItemNumeric = false; /*!< the last "[Item]" section is not alphanumeric */

private:
    Q_DISABLE_COPY(CSProModel)
};

/*! What the loads of a dictionary told besides its records, items and value sets. */
struct CSProFindings {
    QString note; /*!< of the dictionary itself */
    QVector<CSProLanguage> languages;
    QVector<CSProLevel> levels;
    QVector<CSProRelation> relations;
    QVector<CSProProblem> problems; /*!< those of each load in order of the lines */
};
