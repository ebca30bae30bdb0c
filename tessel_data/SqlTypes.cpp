#include <tessel_data/SqlTypes.h>

namespace tessel {

namespace {

constexpr int LongestText = 10485760; // that PostgreSQL takes in VARCHAR(n)
constexpr int MostDigits = 1000; // that PostgreSQL takes in NUMERIC(n)

} // namespace

SqlType sqlTypeOf(const SqlShape& shape, SqlDialect dialect)
{
    if (shape.isText)
        return SqlType::Text;
    if (!shape.isWhole)
        return SqlType::Real;
    if (shape.width <= LongestSqlInteger)
        return SqlType::Integer;
    return dialect == SqlDialect::PostgreSql ? SqlType::Real : SqlType::Text;
}

QString sqlTypeName(SqlType type, SqlDialect dialect)
{
    const bool isSqlite = dialect == SqlDialect::Sqlite;
    switch (type) {
    case SqlType::Integer:
        return isSqlite ? QStringLiteral("INTEGER") : QStringLiteral("BIGINT");
    case SqlType::Real:
        return isSqlite ? QStringLiteral("REAL") : QStringLiteral("NUMERIC");
    case SqlType::Text:
        break;
    }
    return QStringLiteral("TEXT");
}

// Widths are the data's own where they have columns; elsewhere they say how values are shown.
QString sqlTypeName(const SqlShape& shape, SqlDialect dialect)
{
    const SqlType type = sqlTypeOf(shape, dialect);
    const bool isSqlite = dialect == SqlDialect::Sqlite;
    if (type == SqlType::Text && shape.isText && shape.width > 0 && shape.width <= LongestText) {
        return isSqlite ? QStringLiteral("TEXT(%1)").arg(shape.width)
                        : QStringLiteral("VARCHAR(%1)").arg(shape.width);
    }
    // Where the data has the point it may stand anywhere.
    const bool hasDigits = shape.isFixed && shape.width > 0 && shape.width <= MostDigits
        && shape.decimals <= shape.width && !shape.hasDecimalMark;
    if (type == SqlType::Real && !isSqlite && hasDigits)
        return QStringLiteral("NUMERIC(%1, %2)").arg(shape.width).arg(shape.decimals);
    return sqlTypeName(type, dialect);
}

int sqlIntegerBytes(int digits)
{
    constexpr int mostOfTwo = 4; // bytes
    constexpr int mostOfFour = 9;
    if (digits <= 0 || digits > mostOfFour)
        return int(sizeof(qint64));
    return digits > mostOfTwo ? int(sizeof(qint32)) : int(sizeof(qint16));
}

QString postgresIntegerName(int bytes)
{
    switch (bytes) {
    case sizeof(qint16):
        return QStringLiteral("SMALLINT");
    case sizeof(qint32):
        return QStringLiteral("INTEGER");
    default:
        return QStringLiteral("BIGINT");
    }
}

int mostSqlColumns(SqlDialect dialect)
{
    return dialect == SqlDialect::Sqlite ? 2000 : 1600;
}

} // namespace tessel
