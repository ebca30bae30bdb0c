#pragma once

#include "converting/ConvertRun.h"

#include <optional>

/*!
 * Takes the settings of the file \a path, those of a build too. False, and told, when it cannot be
 * read.
 */
bool readConfig(const QString& path, ConvertSettings& settings);

/*! The settings as JSON; \a dictionary is that of the data. */
QByteArray configText(const ConvertSettings& settings, const tessel::DataDictionary& dictionary);

/*! What --to calls a format. */
QString formatName(tessel::ConversionFormat format);

/*! The format that \a name stands for; none for other texts. */
std::optional<tessel::ConversionFormat> formatOf(const QString& name);
