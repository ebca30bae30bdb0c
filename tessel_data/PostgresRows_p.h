#pragma once

#include <tessel_data/DatabaseTarget.h>
#include <tessel_data/LineText_p.h>
#include <tessel_data/PostgresBytes_p.h>

#include <string_view>
#include <vector>

namespace tessel {

/*
 * The rows of one table as PostgreSQL's COPY takes them in its binary format. A null character in a
 * text, which PostgreSQL does not hold, becomes its picture U+2400.
 */
class PostgresRows {
public:
    explicit PostgresRows(const DatabaseTable& table);

    static std::string_view header();
    static std::string_view trailer();

    // Adds rows from first on to the end of bytes until these are full; the first one left.
    std::size_t append(
        PostgresBytes& bytes, const DatabaseRows& rows, std::size_t first, std::size_t full);
    // Adds a row of whole numbers.
    static void append(PostgresBytes& bytes, const std::vector<qint64>& numbers);

private:
    struct Field {
        DatabaseColumn::Role role;
        DatabaseColumn::Type type;
        int decimals;
        int bytes; // of an integer
    };

    void appendRow(PostgresBytes& bytes, const DatabaseRows& rows, std::size_t row);
    char* putCell(PostgresBytes& bytes, char* out, const DatabaseRows& rows, std::size_t row,
        std::size_t column, quint32 cell);
    char* putWhole(char* out, std::size_t column, qint64 number) const;
    char* putText(PostgresBytes& bytes, char* out, std::string_view original);
    char* putDigits(PostgresBytes& bytes, char* out, std::string_view text);
    [[noreturn]] void fail(std::size_t column) const;
    char* putOther(PostgresBytes& bytes, char* out, const DatabaseRows& rows, std::size_t row,
        std::size_t column);

    const DatabaseTable& m_table;
    std::vector<Field> m_fields;
    std::size_t m_room; // of a row, whatever its numbers are; texts need more
    LineText m_line;
};

} // namespace tessel
