#pragma once

#include "reading/InputDictionary.h"

#include <tessel_data/DataSource.h>

#include <QString>
#include <QStringList>

#include <memory>

/*! What the first file is, as far as the rest of the command line depends on it. */
enum class DataKind { Text, CSProDb, Spss, Stata };

/*! Data that are to be read, with what describes them. */
struct DataInput {
    QString first; /*!< a CSPro dictionary, or data that hold their own */
    QStringList data; /*!< text files that the dictionary describes; "-": standard input */
    QString dictionary; /*!< for a CSPro DB, in place of its own; empty: its own */
    DictionaryOptions reading; /*!< encoding and language of the dictionary */
    bool isDictionaryTold = false; /*!< what is to be known of the dictionary was told before */
    DataKind kind = DataKind::Text; /*!< of the first file; checkDataInput() finds it */
    tessel::ValueSetChoice valueSets = tessel::ValueSetChoice::First;
    QString dataEncoding; /*!< of text data without a mark: see isDataEncoding(); empty: found */
};

/*! Data that are open. */
struct OpenedData {
    std::unique_ptr<tessel::DataSource> source; /*!< null, and told: they cannot be read */
    QByteArray dictionaryText; /*!< of the CSPro dictionary that was read, in UTF-8; else empty */
};

/*!
 * Finds the kind of \a input. Null when its files go together, else what is wrong. Its options are
 * not looked at.
 */
QString checkDataInput(DataInput& input);

/*! Opens the data, which were checked. What is to be known of their dictionary is told. */
OpenedData openData(const DataInput& input);

/*! True for the names that DataInput::dataEncoding takes. */
bool isDataEncoding(const QString& name);

/*! Tells of \a files, which belong to \a input, what the reader of text data had to assume. */
void tellAssumptions(const DataInput& input, const std::vector<tessel::SourceFile>& files);
