#pragma once

#include "checking/DataInput.h"
#include "checking/SelectedInput.h"

#include <tessel_data/DatabaseBuilder.h>

#include <memory>

/*! What a build is to do. */
struct BuildSettings {
    DataInput input;
    QString target; /*!< file of the database, or connection to a server */
    QString schema; /*!< on a server; empty: the first of the search path */
    bool replacesTarget = false;
    bool addsToTarget = false;
    QString repeats; /*!< "columns" or "tables", of repeated items; empty: columns */
    bool hasAllLanguages = false;
    SelectionRequest selected;
    QString configFile; /*!< that these settings are written to; empty: none */

    bool hasRepeatTables() const
    {
        return repeats == QLatin1String("tables");
    }
};

/*! What the target is called in messages and in the database; never with a password. */
QString targetName(const BuildSettings& settings);

/*! Builds and prints the summary; an ExitStatus. */
int build(BuildSettings settings);

/*! Prints what build() would make; an ExitStatus. */
int printPlan(BuildSettings settings);
