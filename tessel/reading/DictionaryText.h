#pragma once

#include <QByteArray>
#include <QString>

class InputFile;

/*! How dictionaries are opened. */
struct DictionaryOptions {
    enum class Decimals { No, Yes, Ask };
    bool asWritten = true; /*!< what the dictionary says; false: the rules hosts have relied on */
    Decimals decimals = Decimals::No; /*!< for value sets with decimal codes, when not as written */
    QByteArray encoding; /*!< name of the text codec; empty: it is found */
    QString language; /*!< of the labels, by name; empty: the first */
};

/*! The text of a CSPro dictionary, from a file of its own or from a CSPro DB. */
struct DictionaryText {
    QByteArray bytes;
    QByteArray encoding; /*!< name of the text codec */
    QString origin; /*!< the CSPro DB that holds it; null: a file of its own */
};

/*!
 * Takes the dictionary from \a file, which was opened. False, and told, when it cannot be read or
 * is no CSPro dictionary. An encoding that had to be assumed is told.
 */
bool readDictionaryText(InputFile& file, const DictionaryOptions& options, DictionaryText& text);
