#pragma once

#include <tessel_data/tessel_data_global.h>

#include <QString>

namespace tessel {

enum class SqlDialect { Sqlite, PostgreSql };

/*! What a column holds; the name of its type is the dialect's. */
enum class SqlType { Integer, Real, Text };

/*! What decides on the type of a column. */
struct SqlShape {
    bool isText = false;
    bool isWhole = false; /*!< a number without decimals */
    int width = 0; /*!< characters; 0: not known */
    int decimals = 0;
    bool isFixed = false; /*!< the data have columns, and the width and decimals are theirs */
    bool hasDecimalMark = false; /*!< in the data, where it may stand anywhere */
};

/*! Digits of a whole number that always fits 64 bits. */
constexpr int LongestSqlInteger = 18;

/*! Bytes of a row that PostgreSQL surely takes; texts that are long are kept apart. */
constexpr int MostSqlRowBytes = 7900;

/*! Whole numbers of more than 18 digits do not fit an integer. */
TESSEL_DATA_EXPORT SqlType sqlTypeOf(const SqlShape& shape, SqlDialect dialect);

/*! Name of \a type for values that may be of any length. */
TESSEL_DATA_EXPORT QString sqlTypeName(SqlType type, SqlDialect dialect);

/*! Name of the type of a column, with its width where the database takes that. */
TESSEL_DATA_EXPORT QString sqlTypeName(const SqlShape& shape, SqlDialect dialect);

/*! Bytes of an integer that holds every number of so many digits; 0 digits: any number. */
TESSEL_DATA_EXPORT int sqlIntegerBytes(int digits);

/*! Name of PostgreSQL's integer of so many bytes. */
TESSEL_DATA_EXPORT QString postgresIntegerName(int bytes);

/*! Columns that a table may have. */
TESSEL_DATA_EXPORT int mostSqlColumns(SqlDialect dialect);

} // namespace tessel
