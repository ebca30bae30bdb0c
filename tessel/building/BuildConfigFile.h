#pragma once

#include "building/BuildRun.h"

/*!
 * Takes the settings of the file \a path, in whose folder relative names are, over what \a settings
 * says already. False, and told, when it cannot be read.
 */
bool readConfig(const QString& path, BuildSettings& settings);

/*! Takes the settings \a json, names as they are; what is wrong with them, or null. */
QString takeConfig(const QByteArray& json, BuildSettings& settings);

/*!
 * Writes the settings to their file of settings; \a dictionary is that of the data. False, and
 * told, when that fails.
 */
bool writeConfig(const BuildSettings& settings, const tessel::DataDictionary& dictionary);

/*! The settings as a database keeps them: the names of their files mean the same everywhere. */
QByteArray keptConfig(const BuildSettings& settings, const tessel::DataDictionary& dictionary);
