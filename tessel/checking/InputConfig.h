#pragma once

#include "checking/DataInput.h"
#include "checking/SelectedInput.h"

#include <tessel_data/BuildConfig.h>

/*! Takes the sources and what is taken of them from settings. */
void takeInput(const tessel::BuildConfig& config, DataInput& input, SelectionRequest& selected);

/*! The other way round; \a dictionary is that of the data. */
void saveInput(tessel::BuildConfig& config, const DataInput& input,
    const SelectionRequest& selected, const tessel::DataDictionary& dictionary);

/*! Reads the settings of the file \a path. False, and told, when they cannot be read. */
bool readConfigFile(const QString& path, tessel::BuildConfig& config);
