#pragma once

#include <tessel_data/DatabaseTarget.h>

#include <string>
#include <string_view>

namespace tessel {

/* Rows as PostgreSQL's COPY takes them in its binary format. */
namespace PostgresRows {

std::string_view header();
std::string_view trailer();

/*
 * Adds rows to the end of bytes. A null character in a text, which PostgreSQL does not hold,
 * becomes its picture U+2400.
 */
void append(std::string& bytes, const DatabaseTable& table, const DatabaseRows& rows);
/* Adds a row of whole numbers. */
void append(std::string& bytes, const std::vector<qint64>& numbers);

} // namespace PostgresRows

} // namespace tessel
