#pragma once

#include "checking/DataInput.h"
#include "checking/SelectedInput.h"

#include <tessel_data/ConversionPlan.h>

/*! What a conversion is to do. */
struct ConvertSettings {
    DataInput input;
    SelectionRequest selected;
    tessel::ConversionOptions options;
    bool hasFormat = false; /*!< the format is one that settings said */
    QString config; /*!< file that settings were read from; empty: none */
    QString savedConfig; /*!< file that these settings are written to; empty: none */
    QString folder; /*!< that the files go to */
    bool replacesFiles = false;
    bool isStrict = false; /*!< nothing is made when anything is lost */
    QString problems; /*!< file that all problems of the data go to; empty: none */
    bool forSpreadsheet = false; /*!< CSV is written for spreadsheets */
};

/*! Converts and prints the summary; an ExitStatus. */
int convert(ConvertSettings settings);

/*! Prints what convert() would make; an ExitStatus. */
int printConversionPlan(ConvertSettings settings);
