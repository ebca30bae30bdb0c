#pragma once

#include <tessel_data/DatabasePlan.h>

namespace tessel {

// Statements that make the views of a table, in SQL that both databases take.
QString labelViewSql(const DatabasePlan& plan, const DatabaseTable& table);
QString validViewSql(const DatabaseTable& table);

} // namespace tessel
