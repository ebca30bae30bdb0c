#pragma once

#include <tessel_data/DatabaseTarget.h>

namespace tessel {

// What the tables of a build are in every database.

// The first column tells the rows of a table apart.
bool isKeyed(const DatabasePlan& plan, const DatabaseTable& table);

// Begins like wanted, and no name of a table or view of the plan begins so.
QString freePrefix(const DatabasePlan& plan, const QString& wanted);

// Whether tables of these names, as a database has them, are those of a build.
bool areOfBuild(const QStringList& tables);

// What a build tells of itself; rows: carries out a query.
ExistingDatabase existingDatabase(
    const std::function<std::vector<QStringList>(const QString&)>& rows);

} // namespace tessel
