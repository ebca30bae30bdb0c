#pragma once

#include <QString>
#include <QVector>

class TCSProDataImport;

/*! One code of a field and its label. */
struct ListedCode {
    QString code;
    QString label;
};

/*! One field as a person expects it: numbers in digits, codes apart from their labels. */
struct ListedField {
    QString name; /*!< of an occurrence: ends in "_" and its number in digits */
    QString item; /*!< name in the dictionary */
    int occurrence = 0; /*!< number of the occurrence, from 1; 0: not repeated */
    QString label;
    QString record; /*!< name of the record; null for an identification item */
    QString type; /*!< "integer", "real" or "string" */
    int start = 0; /*!< first column, from 1 */
    int length = 0; /*!< in columns */
    int decimals = 0;
    bool hasDecimalChar = false; /*!< the decimal point is in the data */
    bool isSubItem = false;
    QString missing; /*!< code; null: none */
    QString notApplicable; /*!< code; null: none */
    QString min; /*!< null: none */
    QString max; /*!< null: none */
    QString valueSet; /*!< name; null: none */
    QVector<ListedCode> codes;
};

struct ListedRecord {
    QString name;
    QString label;
    QString recordType; /*!< code in the data line */
    int maxRecords = 0;
    int length = 0; /*!< last column */
};

/*! What one dictionary holds. */
struct Listing {
    QString file;
    QString name;
    QString label;
    QString version; /*!< as written, for example "CSPro 7.7" */
    int recordTypeStart = 0; /*!< first column, from 1 */
    int recordTypeLength = 0; /*!< 0: one record type */
    QVector<ListedRecord> records;
    QVector<ListedField> fields;
};

/*! Lists the fields of \a importer, which was opened from \a file. */
Listing listFields(const QString& file, TCSProDataImport& importer);
