#pragma once

#include "reading/InputDictionary.h"

#include <tessel_data/DataSource.h>

#include <QString>
#include <QStringList>

#include <memory>

/*! Data that are to be read, with what describes them. */
struct DataInput {
    QString first; /*!< a CSPro dictionary, or data that hold their own */
    QStringList data; /*!< text files that the dictionary describes; "-": standard input */
    QString dictionary; /*!< for a CSPro DB, in place of its own; empty: its own */
    DictionaryOptions reading; /*!< encoding and language of the dictionary */
    tessel::ValueSetChoice valueSets = tessel::ValueSetChoice::First;
};

/*! What the first file is, as far as the rest of the command line depends on it. */
enum class DataKind { Text, CSProDb, Spss, Stata };

DataKind dataKindOf(const QString& path);

/*! Null when the files of \a input go together, else what is wrong. */
QString checkDataInput(const DataInput& input);

/*!
 * Opens the data. What is to be known of their dictionary is told. Null, and told, when they cannot
 * be read.
 */
std::unique_ptr<tessel::DataSource> openDataSource(const DataInput& input);

/*! Tells of \a files what their reader had to assume. */
void tellAssumptions(const std::vector<tessel::SourceFile>& files);
