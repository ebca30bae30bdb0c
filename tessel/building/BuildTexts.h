#pragma once

#include "building/BuildRun.h"

#include <QString>

/*! What a plan makes, for people. */
QString planText(const tessel::DatabasePlan& plan);

/*! What was built, with the sums that have to add up. */
QString buildSummary(const tessel::DataSource& source, const BuildSettings& settings,
    const tessel::BuildReport& report);
