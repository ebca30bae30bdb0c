#pragma once

#include <model_Tessel/DictionaryFile.h>

#include <QByteArray>
#include <QString>

/*! How dictionaries are opened. */
struct DictionaryOptions {
    enum class Decimals { No, Yes, Ask };
    bool asWritten = true; /*!< what the dictionary says; false: the rules hosts have relied on */
    Decimals decimals = Decimals::No; /*!< for value sets with decimal codes, when not as written */
    QByteArray encoding; /*!< name of the text codec; empty: it is found */
    QString language; /*!< of the labels, by name; empty: the first */
};

/*! How files are read, the same in every command that reads dictionaries. */
struct InputOptions {
    DictionaryFileKind kind = DictionaryFileKind::Unknown; /*!< Unknown: as the content says */
    DictionaryOptions dictionary;
    QString encodingOption = QStringLiteral("--encoding"); /*!< that messages name */
    bool isTold = false; /*!< what is to be known of the file was told before */
};

/*! The dictionary of a file, and where in it it stood. */
struct InputDictionary {
    DictionaryFile file;
    QString origin; /*!< the CSPro DB that holds it; null: a file of its own */
};

/*!
 * Reads the dictionary of the file \a path, whatever kind it is, a CSPro DB too, and tells on
 * standard error all that a person must know of how it was read.
 */
InputDictionary readInputDictionary(const QString& path, const InputOptions& options);
