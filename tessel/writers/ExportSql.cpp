#include "writers/ExportWriters.h"

#include "writers/ExportText.h"
#include "writers/SqlValueTables.h"
#include "text/ShownText.h"

#include <QFileInfo>

#include <numeric>

using tessel::sqlComment;
using tessel::sqlIdentifier;
using tessel::SqlNote;
using tessel::SqlNotes;
using tessel::sqlText;
using tessel::SqlThing;
using tessel::sqlTypeName;

namespace {

constexpr int MostRowBytes = 7900; // that PostgreSQL surely takes in the columns of a row
constexpr int DoubleDigits = 17;
constexpr int LongestInRow = 24; // bytes of a value that PostgreSQL does not keep elsewhere

// Columns of an index.
int mostKeys(SqlDialect dialect)
{
    return dialect == SqlDialect::Sqlite ? 1000 : 32;
}

struct Column {
    QString name;
    int field = 0; // -1: none, it is the number of the row
    bool isKey = false;
};

struct Table {
    QString name;
    QString about;
    bool hasUniqueKeys = false;
    QVector<Column> columns;
    QString firstPart; // null: the table is none, or the first, of a table in parts
};

class SqlWriter {
public:
    SqlWriter(const Listing& listing, const SqlOptions& options, SqlNotes& notes)
        : m_listing(listing)
        , m_dialect(options.dialect)
        , m_hasUniqueKeys(options.hasUniqueKeys)
        , m_notes(notes)
        , m_keys(listing)
        , m_tableNames(notes)
        , m_values(options.dialect, m_tableNames)
    {
    }

    QByteArray write();

private:
    void addTables();
    Table tableOf(const FieldGroup& group);
    void divideWideTables();
    QVector<Table> partsOf(Table table);
    int bytesOf(const Column& column) const;
    bool isTooWide(int columns, int bytes) const;
    void addColumns(Table& table, SqlNames& names, const QVector<int>& fields, bool areKeys) const;
    QString about(const ListedField& field) const;
    QString heading() const;
    QString definition(const Table& table) const;
    QString columnDefinition(const Table& table, const Column& column) const;
    QString aboutColumn(const Column& column) const;
    QString keyList(const Table& table) const;
    QString uniqueness() const;
    QString index(const Table& table);
    QString comments(const Table& table) const;

    const Listing& m_listing;
    SqlDialect m_dialect;
    bool m_hasUniqueKeys;
    SqlNotes& m_notes;
    KeyFields m_keys;
    SqlNames m_tableNames;
    SqlValueTables m_values;
    QVector<Table> m_tables;
};

QByteArray SqlWriter::write()
{
    addTables();
    divideWideTables();
    for (const ListedField& field : m_listing.fields)
        m_values.add(field);
    QString text = heading() + QLatin1String("BEGIN;\n") + m_values.statements();
    for (const Table& table : qAsConst(m_tables)) {
        text += QLatin1Char('\n') + sqlComment(table.about) + QLatin1Char('\n') + definition(table);
        text += index(table);
        if (m_dialect == SqlDialect::PostgreSql)
            text += comments(table);
    }
    text += QLatin1String("\nCOMMIT;\n");
    return text.toUtf8();
}

QString SqlWriter::heading() const
{
    const bool isSqlite = m_dialect == SqlDialect::Sqlite;
    QString text = sqlComment(titleOf(m_listing)) + QLatin1Char('\n')
        + sqlComment(QStringLiteral("From %1, for %2.")
                         .arg(QFileInfo(m_listing.file).fileName(),
                             isSqlite ? QStringLiteral("SQLite") : QStringLiteral("PostgreSQL")))
        + QLatin1Char('\n');
    if (isSqlite) {
        text += QLatin1String("-- Foreign keys are checked where a program says "
                              "'PRAGMA foreign_keys = ON'.\n");
    }
    return text;
}

// A file with identification items only still has its keys.
void SqlWriter::addTables()
{
    const QVector<FieldGroup> groups = groupsOf(m_listing);
    for (const FieldGroup& group : groups) {
        if (group.record || m_listing.records.isEmpty())
            m_tables.append(tableOf(group));
    }
}

Table SqlWriter::tableOf(const FieldGroup& group)
{
    Table table;
    const ListedRecord* record = group.record;
    const QString wanted = record ? record->name : QFileInfo(m_listing.file).completeBaseName();
    table.name = m_tableNames.take(wanted, { SqlThing::Kind::Table, shortened(wanted), QString() });
    table.about = record ? record->label : titleOf(m_listing);
    SqlNames names(m_notes);
    if (record) {
        table.hasUniqueKeys = m_hasUniqueKeys && record->maxRecords == 1;
        addColumns(table, names, m_keys.of(*record), true);
    }
    addColumns(table, names, group.fields, false);
    if (table.columns.isEmpty())
        m_notes.append({ SqlNote::Kind::NoColumns, { SqlThing::Kind::Table, table.name, QString() },
            QString(), SqlNote::Reason::None, 0, 0, QStringList() });
    return table;
}

// The names of the parts come after those of the records.
void SqlWriter::divideWideTables()
{
    QVector<Table> tables;
    for (const Table& table : qAsConst(m_tables))
        tables += partsOf(table);
    m_tables = tables;
}

// At most as many bytes as a value takes in a row of PostgreSQL, with what aligns the next.
int SqlWriter::bytesOf(const Column& column) const
{
    constexpr int Word = 8;
    if (column.field < 0)
        return Word;
    const ListedField& field = m_listing.fields.at(column.field);
    const SqlType type = sqlTypeOf(field, m_dialect);
    if (type == SqlType::Integer)
        return Word;
    // Four digits are two bytes, and a character is four bytes at most.
    const int digits = field.start > 0 ? field.length : DoubleDigits;
    const qint64 bytes =
        type == SqlType::Real ? 7 + qint64(digits) / 2 : 1 + qint64(4) * field.length;
    return field.length > 0 && bytes < LongestInRow ? int(bytes + Word - 1) / Word * Word
                                                    : LongestInRow;
}

bool SqlWriter::isTooWide(int columns, int bytes) const
{
    return columns > tessel::mostSqlColumns(m_dialect)
        || (m_dialect == SqlDialect::PostgreSql && bytes > MostRowBytes);
}

// The rows of the parts of a table that is too wide belong together by their numbers.
QVector<Table> SqlWriter::partsOf(Table table)
{
    const auto addBytes = [&](int sum, const Column& column) { return sum + bytesOf(column); };
    if (!isTooWide(table.columns.size(),
            std::accumulate(table.columns.cbegin(), table.columns.cend(), 0, addBytes)))
        return { table };
    QVector<Column> columns;
    std::swap(columns, table.columns);
    QVector<Table> parts { table };
    const int rowNumberBytes = bytesOf({ QString(), -1, false });
    int bytes = rowNumberBytes;
    for (const Column& column : qAsConst(columns)) {
        bytes += bytesOf(column);
        if (isTooWide(parts.constLast().columns.size() + 2, bytes)) {
            bytes = rowNumberBytes + bytesOf(column);
            parts.append(Table());
        }
        parts.last().columns.append(column);
    }
    SqlNotes ignored; // the names of the columns were told of
    SqlNames names(ignored);
    for (const Column& column : qAsConst(columns))
        names.take(column.name);
    const Column number { names.take(QStringLiteral("row_number")), -1, false };
    for (int i = 0; i < parts.size(); ++i) {
        Table& part = parts[i];
        part.columns.prepend(number);
        if (i == 0)
            continue;
        const QString wanted = QStringLiteral("%1_%2").arg(table.name, QString::number(i + 1));
        part.name =
            m_tableNames.take(wanted, { SqlThing::Kind::Part, QString::number(i + 1), table.name });
        part.about = table.about;
        part.firstPart = table.name;
    }
    m_notes.append({ SqlNote::Kind::InParts, { SqlThing::Kind::Table, table.name, QString() },
        parts.constLast().name, SqlNote::Reason::None, columns.size(), parts.size(),
        { number.name } });
    return parts;
}

void SqlWriter::addColumns(
    Table& table, SqlNames& names, const QVector<int>& fields, bool areKeys) const
{
    for (const int field : fields) {
        const QString wanted = m_listing.fields.at(field).name;
        const QString name =
            names.take(wanted, { SqlThing::Kind::Column, shortened(wanted), table.name });
        table.columns.append({ name, field, areKeys });
    }
}

QString SqlWriter::about(const ListedField& field) const
{
    const QStringList tables = m_values.tablesOf(field);
    if (tables.isEmpty())
        return field.fullLabel();
    return QStringLiteral("%1 (values: %2)")
        .arg(field.fullLabel(), tables.join(QLatin1String(", ")));
}

QString SqlWriter::aboutColumn(const Column& column) const
{
    return column.field < 0 ? QStringLiteral("Number of the row, the same in all parts")
                            : about(m_listing.fields.at(column.field));
}

QString SqlWriter::columnDefinition(const Table& table, const Column& column) const
{
    QString text = sqlIdentifier(column.name) + QLatin1Char(' ');
    if (column.field < 0) {
        text += sqlTypeName(SqlType::Integer, m_dialect) + QLatin1String(" NOT NULL UNIQUE");
        if (!table.firstPart.isNull()) {
            text += QStringLiteral(" REFERENCES %1 (%2)")
                        .arg(sqlIdentifier(table.firstPart), sqlIdentifier(column.name));
        }
        return text;
    }
    const ListedField& field = m_listing.fields.at(column.field);
    text += tessel::sqlTypeName(sqlShapeOf(field), m_dialect);
    if (column.isKey && table.hasUniqueKeys)
        text += QLatin1String(" NOT NULL");
    const QString reference = m_values.referenceOf(field);
    if (!reference.isNull())
        text += QStringLiteral(" REFERENCES %1 (code)").arg(sqlIdentifier(reference));
    return text;
}

// Empty when the keys are too many for an index.
QString SqlWriter::keyList(const Table& table) const
{
    QStringList keys;
    for (const Column& column : table.columns) {
        if (column.isKey)
            keys.append(sqlIdentifier(column.name));
    }
    return keys.size() > mostKeys(m_dialect) ? QString() : keys.join(QLatin1String(", "));
}

// In SQLite a primary key that is one whole number takes null for a number of its own making.
QString SqlWriter::uniqueness() const
{
    return m_dialect == SqlDialect::Sqlite ? QStringLiteral("UNIQUE")
                                           : QStringLiteral("PRIMARY KEY");
}

QString SqlWriter::definition(const Table& table) const
{
    if (table.columns.isEmpty())
        return QString();
    const QString keys = keyList(table);
    const bool areUnique = table.hasUniqueKeys && !keys.isEmpty();
    QString text = QStringLiteral("CREATE TABLE %1 (\n").arg(sqlIdentifier(table.name));
    for (int i = 0; i < table.columns.size(); ++i) {
        const Column& column = table.columns.at(i);
        const bool isLast = i + 1 == table.columns.size() && !areUnique;
        text += QLatin1String("  ") + columnDefinition(table, column)
            + (isLast ? QString() : QStringLiteral(",")) + QLatin1Char(' ')
            + sqlComment(aboutColumn(column)) + QLatin1Char('\n');
    }
    if (areUnique)
        text += QStringLiteral("  %1 (%2)\n").arg(uniqueness(), keys);
    return text + QLatin1String(");\n");
}

// The keys find the rows of a case also where data may repeat them.
QString SqlWriter::index(const Table& table)
{
    const QString keys = keyList(table);
    if (keys.isEmpty() || table.hasUniqueKeys)
        return QString();
    const QString wanted = table.name + QLatin1String("_key");
    const QString name =
        m_tableNames.take(wanted, { SqlThing::Kind::KeyIndex, QString(), table.name });
    return QStringLiteral("CREATE INDEX %1 ON %2 (%3);\n")
        .arg(sqlIdentifier(name), sqlIdentifier(table.name), keys);
}

QString SqlWriter::comments(const Table& table) const
{
    const QString name = sqlIdentifier(table.name);
    if (table.columns.isEmpty())
        return QString();
    QString text = QStringLiteral("COMMENT ON TABLE %1 IS %2;\n").arg(name, sqlText(table.about));
    for (const Column& column : table.columns) {
        text += QStringLiteral("COMMENT ON COLUMN %1.%2 IS %3;\n")
                    .arg(name, sqlIdentifier(column.name), sqlText(aboutColumn(column)));
    }
    return text;
}

} // namespace

QByteArray writeSql(const Listing& listing, const SqlOptions& options, SqlNotes& notes)
{
    return SqlWriter(listing, options, notes).write();
}
