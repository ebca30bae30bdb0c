#pragma once

#include "converting/ConvertRun.h"

#include <optional>

/*!
 * Takes the settings of the file \a path, those of a build too. False, and told, when it cannot be
 * read.
 */
bool readConfig(const QString& path, ConvertSettings& settings);

/*!
 * Writes the settings to the file that they name; \a dictionary is that of the data. False, and
 * told, when that fails.
 */
bool writeConfig(const ConvertSettings& settings, const tessel::DataDictionary& dictionary);

/*! What --to calls a format. */
QString formatName(tessel::ConversionFormat format);

/*! The format that \a name stands for; none for other texts. */
std::optional<tessel::ConversionFormat> formatOf(const QString& name);
