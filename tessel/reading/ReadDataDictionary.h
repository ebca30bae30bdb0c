#pragma once

#include "reading/InputDictionary.h"

#include <tessel_data/DataDictionary.h>

/*!
 * The CSPro dictionary of \a file, which has one, for reading data; labels are in \a language,
 * else in the first. \a path is told in errors; throws tessel::DataError.
 */
tessel::DataDictionary dataDictionaryOf(const DictionaryFile& file, const QString& path,
    tessel::ValueSetChoice choice, const QString& language);

/*!
 * Reads the CSPro dictionary \a path as it is written, and tells on standard error what there is to
 * know of it. False, and told, when it is none or cannot be read.
 */
bool readDataDictionary(
    const QString& path, const InputOptions& options, tessel::DataDictionary& dictionary);
