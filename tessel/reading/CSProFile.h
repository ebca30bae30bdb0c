#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

class TCSProDataImport;

/*! How dictionaries are opened. */
struct DictionaryOptions {
    enum class Decimals { No, Yes, Ask };
    bool asWritten = true; /*!< what the dictionary says; false: the rules hosts have relied on */
    Decimals decimals = Decimals::No; /*!< for value sets with decimal codes, when not as written */
    QByteArray encoding; /*!< name of the text codec; empty: it is found */
    QString language; /*!< of the labels, by name; empty: the first */
};

/*!
 * Opens the dictionary \a path and tells on standard error, by file and line, all that a person
 * must know of how it was read. Null when it could not be read.
 */
std::unique_ptr<TCSProDataImport> openDictionary(
    const QString& path, const DictionaryOptions& options);
