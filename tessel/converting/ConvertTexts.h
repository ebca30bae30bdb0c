#pragma once

#include "converting/ConvertRun.h"
#include "process/Console.h"

#include <tessel_data/Converter.h>

#include <QString>

/*! What a plan makes, with all that a format cannot hold as it is, for people. */
QString conversionPlanText(const tessel::ConversionPlan& plan);

/*! Tells the same in short: how much of each kind; losses with \a severity, the rest as notes. */
void tellPlan(const tessel::ConversionPlan& plan, Console::Severity severity);

/*! Tells what of the data did not fit. */
void tellReport(const tessel::ConversionPlan& plan, const tessel::ConversionReport& report,
    Console::Severity severity);

/*! What was made, with the sums that have to add up. */
QString conversionSummary(const tessel::DataSource& source, const ConvertSettings& settings,
    const tessel::ConversionPlan& plan, const tessel::ConversionReport& report);
