#pragma once

#include "checking/DataInput.h"
#include "checking/SelectedInput.h"

#include <tessel_data/BuildConfig.h>

/*! Takes the sources and what is taken of them from settings. */
void takeInput(const tessel::BuildConfig& config, DataInput& input, SelectionRequest& selected);

/*! The other way round; \a dictionary is that of the data. */
void saveInput(tessel::BuildConfig& config, const DataInput& input,
    const SelectionRequest& selected, const tessel::DataDictionary& dictionary);

/*!
 * Reads the settings of the file \a path, in whose folder relative names are; in \a config they
 * count from that in which the program runs. False, and told, when they cannot be read.
 */
bool readConfigFile(const QString& path, tessel::BuildConfig& config);

/*! The other way round, whole or not at all. False, and told, when they cannot be written. */
bool writeConfigFile(const QString& path, tessel::BuildConfig& config);

/*! Has the names of files mean the same everywhere. */
void makeAbsolute(tessel::BuildConfig& config);
