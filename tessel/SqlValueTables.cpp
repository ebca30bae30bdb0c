#include "SqlValueTables.h"

#include <QLocale>
#include <QSet>

#include <algorithm>
#include <cmath>

namespace {

constexpr int LongestInteger = 18; // digits that always fit 64 bits
constexpr int RowsPerStatement = 200;

bool hasRanges(const QVector<ListedCode>& codes)
{
    return std::any_of(codes.cbegin(), codes.cend(),
        [](const ListedCode& entry) { return !entry.highCode.isNull(); });
}

bool isSpecial(const ListedCode& entry)
{
    return !entry.special.isNull();
}

bool isDigits(const QString& text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar character) {
        return character >= QLatin1Char('0') && character <= QLatin1Char('9');
    });
}

// Null for texts that are no number: blanks, and the missing codes of Stata.
QString numberLiteral(const QString& code, SqlType type)
{
    bool isNumber = false;
    QString trimmed = code.trimmed();
    if (type == SqlType::Integer) {
        const qlonglong number = trimmed.toLongLong(&isNumber);
        return isNumber ? QString::number(number) : QString();
    }
    if (isDigits(trimmed)) { // may have more digits than fit a double
        while (trimmed.size() > 1 && trimmed.startsWith(QLatin1Char('0')))
            trimmed.remove(0, 1);
        return trimmed;
    }
    const double number = trimmed.toDouble(&isNumber);
    return isNumber && std::isfinite(number)
        ? QString::number(number, 'g', QLocale::FloatingPointShortest)
        : QString();
}

// Dictionaries pad codes to the width of the columns, databases do not; null for blanks.
QString textLiteral(const QString& code)
{
    int length = code.size();
    while (length > 0 && code.at(length - 1) == QLatin1Char(' '))
        --length;
    return length > 0 ? sqlText(code.left(length)) : QString();
}

bool hasCode(const QVector<ListedCode>& codes, const ListedCode& wanted)
{
    return std::any_of(codes.cbegin(), codes.cend(),
        [&](const ListedCode& entry) { return entry.code == wanted.code; });
}

// A missing value without a label may be in the data, but is in no table.
bool lacksMissing(const ListedField& field, const QVector<ListedCode>& codes)
{
    return std::any_of(
        field.missingRanges.cbegin(), field.missingRanges.cend(), [&](const ListedCode& entry) {
            return !entry.highCode.isNull() || !hasCode(codes, entry);
        });
}

} // namespace

SqlType sqlTypeOf(const ListedField& field, SqlDialect dialect)
{
    if (field.type == QLatin1String("string"))
        return SqlType::Text;
    // The library takes long whole numbers for real; columns without decimals are whole.
    const bool isWhole =
        field.type == QLatin1String("integer") || (field.start > 0 && field.decimals == 0);
    if (!isWhole)
        return SqlType::Real;
    if (field.length <= LongestInteger)
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

QString SqlValueTables::keyOf(const ListedField& field, const ListedValueSet& valueSet) const
{
    QString key = QString::number(int(sqlTypeOf(field, m_dialect)));
    for (const ListedCode& entry : valueSet.codes) {
        for (const QString& part : { entry.code, entry.highCode, entry.label, entry.special })
            key += QString::number(part.isNull() ? -1 : part.size()) + QLatin1Char(':') + part;
    }
    return key;
}

void SqlValueTables::add(const ListedField& field)
{
    for (const ListedValueSet& valueSet : field.valueSets) {
        if (valueSet.codes.isEmpty())
            continue;
        const QString key = keyOf(field, valueSet);
        if (!m_indexes.contains(key)) {
            const QString wanted =
                valueSet.name.isEmpty() ? field.item + QLatin1String("_labels") : valueSet.name;
            const QString name = m_tableNames.take(
                wanted, QStringLiteral("the table of value set %1 of %2").arg(wanted, field.name));
            m_indexes.insert(key, m_tables.size());
            m_tables.append({ name, valueSet.label, sqlTypeOf(field, m_dialect),
                hasRanges(valueSet.codes), valueSet.codes, {} });
        }
        QStringList& fields = m_tables[m_indexes.value(key)].fields;
        if (!fields.contains(field.item))
            fields.append(field.item);
    }
}

QStringList SqlValueTables::tablesOf(const ListedField& field) const
{
    QStringList names;
    for (const ListedValueSet& valueSet : field.valueSets) {
        const auto index = m_indexes.constFind(keyOf(field, valueSet));
        if (index != m_indexes.cend() && !names.contains(m_tables.at(*index).name))
            names.append(m_tables.at(*index).name);
    }
    return names;
}

QString SqlValueTables::referenceOf(const ListedField& field) const
{
    const QStringList names = tablesOf(field);
    if (names.size() != 1 || field.measure == QLatin1String("scale"))
        return QString();
    const QVector<ListedCode>& codes = field.valueSets.constFirst().codes;
    const bool isClosed = !hasRanges(codes) && !lacksMissing(field, codes)
        && !std::all_of(codes.cbegin(), codes.cend(), isSpecial);
    return isClosed ? names.constFirst() : QString();
}

QString SqlValueTables::literal(const QString& code, SqlType type) const
{
    if (code.isNull())
        return QStringLiteral("NULL");
    const QString known = type == SqlType::Text ? textLiteral(code) : numberLiteral(code, type);
    return known.isNull() ? QStringLiteral("NULL") : known;
}

QString SqlValueTables::definition(const Table& table) const
{
    const QString type = sqlTypeName(table.type, m_dialect);
    const QString codes = table.hasRanges
        ? QStringLiteral("  code_from %1,\n  code_to %1,\n").arg(type)
        : QStringLiteral("  code %1 UNIQUE,\n").arg(type);
    return QStringLiteral("CREATE TABLE %1 (\n%2  written TEXT NOT NULL,\n  label TEXT NOT NULL,\n"
                          "  special TEXT\n);\n")
        .arg(sqlIdentifier(table.name), codes);
}

// A code that is listed twice has the first label; the other row keeps what was written.
QStringList SqlValueTables::rows(const Table& table) const
{
    QStringList rows;
    QSet<QString> seen;
    for (const ListedCode& entry : table.codes) {
        QString code = literal(entry.code, table.type);
        if (table.hasRanges) {
            const QString& high = entry.highCode.isNull() ? entry.code : entry.highCode;
            code += QLatin1String(", ") + literal(high, table.type);
        } else if (seen.contains(code)) {
            code = QStringLiteral("NULL");
        }
        seen.insert(code);
        const QStringList cells { code, sqlText(codeText(entry)), sqlText(entry.label),
            entry.special.isNull() ? QStringLiteral("NULL") : sqlText(entry.special) };
        rows.append(QLatin1String("  (") + cells.join(QLatin1String(", ")) + QLatin1Char(')'));
    }
    return rows;
}

QString SqlValueTables::statements() const
{
    QString text;
    for (const Table& table : m_tables) {
        const QString fields = table.fields.join(QLatin1String(", "));
        const QString about = (table.label.isEmpty() ? QStringLiteral("Values") : table.label)
            + QLatin1String(" (") + fields + QLatin1Char(')');
        const QString name = sqlIdentifier(table.name);
        text += QLatin1Char('\n') + sqlComment(about) + QLatin1Char('\n') + definition(table);
        if (m_dialect == SqlDialect::PostgreSql)
            text += QLatin1String("COMMENT ON TABLE ") + name + QLatin1String(" IS ")
                + sqlText(about) + QLatin1String(";\n");
        const QStringList lines = rows(table);
        for (int i = 0; i < lines.size(); i += RowsPerStatement) {
            text += QLatin1String("INSERT INTO ") + name + QLatin1String(" VALUES\n")
                + lines.mid(i, RowsPerStatement).join(QLatin1String(",\n")) + QLatin1String(";\n");
        }
    }
    return text;
}
