#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

class TCSProDataImport;

/*! How dictionaries are opened. */
struct DictionaryOptions {
    enum class Decimals { No, Yes, Ask };
    Decimals decimals = Decimals::No; /*!< what becomes of value sets with decimal codes */
    QByteArray encoding; /*!< name of the text codec; empty: UTF-8 or what a byte-order mark says */
};

/*!
 * Opens the dictionary \a path and tells on standard error, by file and line, all that a person
 * must know of how it was read. Null when it could not be read.
 */
std::unique_ptr<TCSProDataImport> openDictionary(
    const QString& path, const DictionaryOptions& options);
