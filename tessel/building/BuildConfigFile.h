#pragma once

#include "building/BuildRun.h"

/*!
 * Takes the settings of the file \a path, over what \a settings says already. False, and told, when
 * it cannot be read.
 */
bool readConfig(const QString& path, BuildSettings& settings);

/*! Takes the settings \a json in the same way; what is wrong with them, or null. */
QString takeConfig(const QByteArray& json, BuildSettings& settings);

/*! The settings as JSON; \a dictionary is that of the data. */
QByteArray configText(
    const BuildSettings& settings, const tessel::DataDictionary& dictionary, bool isIndented);
