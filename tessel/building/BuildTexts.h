#pragma once

#include <tessel_data/DatabaseBuilder.h>

#include <QString>

/*! What a plan makes, for people. */
QString planText(const tessel::DatabasePlan& plan);

/*! What was built, with the sums that have to add up. */
QString buildSummary(
    const tessel::DataSource& source, const QString& target, const tessel::BuildReport& report);
