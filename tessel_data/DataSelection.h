#pragma once

#include <tessel_data/DataDictionary.h>

#include <QString>
#include <QStringList>
#include <QVector>

namespace tessel {

/*! A record type that is taken, and which of its variables. */
struct SelectedRecord {
    QString name;
    bool hasAllVariables = true;
    QStringList variables; /*!< names of variables, or of items for all their occurrences */
};

/*! What is taken of one record of a dictionary. */
struct SelectedColumns {
    bool isTaken = false; /*!< false: none of its rows */
    QVector<int> columns; /*!< places among the record's columns, in order */
};

/*! What is taken of data, by names. Identification items are always taken. */
struct TESSEL_DATA_EXPORT DataSelection {
    QVector<SelectedRecord> records; /*!< in any order; empty: all, with all variables */
    QString where; /*!< conditions on the identification, as CaseFilter reads them; empty: none */
    double sample = 0; /*!< share of the cases, above 0 and up to 1; 0: no sample */
    quint32 seed = 1; /*!< of the sample */
    qint64 every = 0; /*!< each so many-th case; 0: no such choice */
    bool needsWholeItems = false; /*!< occurrences are taken all or none */

    /*! True when nothing is left out. */
    bool isAll() const;

    /*!
     * Takes the records \a names only, with the variables that were chosen for them before; throws
     * DataError.
     */
    void chooseRecords(const DataDictionary& dictionary, const QStringList& names);
    /*!
     * Takes the variables \a names only, of the records that are taken: NAME in all of them, or
     * RECORD.NAME; throws DataError.
     */
    void chooseVariables(const DataDictionary& dictionary, const QStringList& names);
    /*!
     * What is taken of each record of \a dictionary; throws DataError where that has no such record
     * or variable.
     */
    QVector<SelectedColumns> columns(const DataDictionary& dictionary) const;
};

/*!
 * \a dictionary with the columns only that \a columns says, see DataSelection::columns(). Its
 * variables are the same, so that their indexes stay.
 */
TESSEL_DATA_EXPORT DataDictionary selectedDictionary(
    const DataDictionary& dictionary, const QVector<SelectedColumns>& columns);

} // namespace tessel
