#pragma once

#include "reading/DictionaryText.h"

#include <QString>

#include <memory>

class TCSProDataImport;

/*!
 * Reads the dictionary \a text of the file \a path and tells on standard error, by file and line,
 * all that a person must know of how it was read. Null when it could not be read.
 */
std::unique_ptr<TCSProDataImport> openDictionary(
    const QString& path, const DictionaryText& text, const DictionaryOptions& options);
