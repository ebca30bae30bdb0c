#pragma once

#include <tessel_data/CheckReport.h>
#include <tessel_data/DataDictionary.h>

#include <QByteArray>
#include <QString>

/*! What is wrong, for people, to stand before a number of problems. */
QString describeKind(tessel::ProblemKind kind);

/*! A problem of data read by \a dictionary from \a files, ready to be shown. */
struct ShownProblem {
    ShownProblem(const tessel::DataProblem& problem, const tessel::DataDictionary& dictionary,
        const std::vector<tessel::SourceFile>& files);

    /*! As JSON, an object; there may be millions. */
    QByteArray json() const;

    QString kind; /*!< see tessel::problemKindName() */
    QString file;
    qint64 line; /*!< 0: none */
    QString caseKey;
    QString record; /*!< null: none, and the identification items */
    QString variable; /*!< null: none */
    QString value;
    QString otherFile; /*!< where the case stands first; null: nowhere */
    qint64 otherLine;
};
