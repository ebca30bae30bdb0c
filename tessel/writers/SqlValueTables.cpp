#include "writers/SqlValueTables.h"

#include "text/PlainNumber.h"
#include "text/ShownText.h"
#include "writers/ListingNames.h"

#include <model_Tessel/UtilStrings.h>

#include <QLocale>

#include <algorithm>
#include <cmath>

using tessel::sqlComment;
using tessel::sqlIdentifier;
using tessel::sqlText;
using tessel::sqlTypeName;

namespace {

constexpr int LongestCode = 600; // characters that fit PostgreSQL's indexes whatever they are
constexpr int RowsPerStatement = 200;

bool hasRanges(const QVector<ListedCode>& codes)
{
    return std::any_of(
        codes.cbegin(), codes.cend(), [](const ListedCode& entry) { return entry.isRange(); });
}

bool isBlank(const QString& code)
{
    return code.trimmed().isEmpty();
}

QString null()
{
    return QStringLiteral("NULL");
}

// Null for texts that are no number: blanks, and the missing codes of Stata.
QString numberLiteral(const QString& code, SqlType type)
{
    bool isNumber = false;
    const QString trimmed = code.trimmed();
    if (type == SqlType::Integer) {
        const qlonglong number = trimmed.toLongLong(&isNumber);
        return isNumber ? QString::number(number) : QString();
    }
    QString plain = plainNumber(trimmed); // may have more digits than fit a double
    if (!plain.isNull())
        return plain;
    const double number = trimmed.toDouble(&isNumber);
    return isNumber && std::isfinite(number)
        ? plainNumber(QString::number(number, 'f', QLocale::FloatingPointShortest))
        : QString();
}

// Dictionaries pad codes to the width of the columns, databases do not; null for blanks, and for
// texts that an index does not take.
QString textLiteral(const QString& code)
{
    const QString text = withoutTrailingBlanks(code);
    return !text.isEmpty() && text.size() <= LongestCode ? sqlText(text) : QString();
}

} // namespace

// The library takes long whole numbers for real; columns without decimals are whole.
tessel::SqlShape sqlShapeOf(const ListedField& field)
{
    tessel::SqlShape shape;
    shape.isText = field.isText();
    shape.isFixed = field.start > 0;
    shape.isWhole = field.type == ValueType::Integer || (shape.isFixed && field.decimals == 0);
    shape.width = field.length;
    shape.decimals = field.decimals;
    shape.hasDecimalMark = field.hasDecimalChar;
    return shape;
}

SqlType sqlTypeOf(const ListedField& field, SqlDialect dialect)
{
    return tessel::sqlTypeOf(sqlShapeOf(field), dialect);
}

QString SqlValueTables::keyOf(const ListedField& field, const ListedValueSet& valueSet) const
{
    QString key = QString::number(int(sqlTypeOf(field, m_dialect)));
    for (const ListedCode& entry : valueSet.codes) {
        key += QString::number(int(entry.special));
        for (const QString& part : { entry.code, entry.highCode, entry.label })
            key += QString::number(part.isNull() ? -1 : part.size()) + QLatin1Char(':') + part;
    }
    return key;
}

SqlValueTables::CodesId SqlValueTables::idOf(
    const ListedField& field, const ListedValueSet& valueSet) const
{
    return { valueSet.codes.constData(), int(sqlTypeOf(field, m_dialect)) };
}

void SqlValueTables::add(const ListedField& field)
{
    for (const ListedValueSet& valueSet : field.valueSets) {
        if (valueSet.codes.isEmpty())
            continue;
        const CodesId id = idOf(field, valueSet);
        if (!m_known.contains(id)) {
            const QString key = keyOf(field, valueSet);
            if (!m_indexes.contains(key))
                m_indexes.insert(key, addTable(field, valueSet));
            m_known.insert(id, m_indexes.value(key));
        }
        Table& table = m_tables[m_known.value(id)];
        if (table.knownFields.contains(field.item))
            continue;
        table.knownFields.insert(field.item);
        table.fields.append(field.item);
    }
}

int SqlValueTables::addTable(const ListedField& field, const ListedValueSet& valueSet)
{
    const QString wanted =
        valueSet.name.isEmpty() ? field.item + QLatin1String("_labels") : valueSet.name;
    Table table;
    table.name =
        m_tableNames.take(wanted, { tessel::SqlThing::Kind::ValueTable, wanted, field.name });
    table.label = valueSet.label;
    table.type = sqlTypeOf(field, m_dialect);
    table.hasRanges = hasRanges(valueSet.codes);
    table.codes = valueSet.codes;
    table.isClosed = !table.hasRanges
        && !std::all_of(valueSet.codes.cbegin(), valueSet.codes.cend(),
            [](const ListedCode& entry) { return entry.isSpecial(); });
    for (const ListedCode& entry : valueSet.codes) {
        const QString code = literal(entry.code, table.type);
        table.literals.insert(code);
        const bool isHeld = code != null() || isBlank(entry.code) || entry.isSpecial();
        table.isClosed = table.isClosed && isHeld;
    }
    m_tables.append(table);
    return m_tables.size() - 1;
}

QStringList SqlValueTables::tablesOf(const ListedField& field) const
{
    QStringList names;
    for (const ListedValueSet& valueSet : field.valueSets) {
        const auto index = m_known.constFind(idOf(field, valueSet));
        if (index != m_known.cend() && !names.contains(m_tables.at(*index).name))
            names.append(m_tables.at(*index).name);
    }
    return names;
}

// A missing value without a label may be in the data, but is in no table; blanks are null in both.
bool SqlValueTables::lacksMissing(const ListedField& field, const Table& table) const
{
    return std::any_of(
        field.missingRanges.cbegin(), field.missingRanges.cend(), [&](const ListedCode& entry) {
            return entry.isRange()
                || (!isBlank(entry.code)
                    && !table.literals.contains(literal(entry.code, table.type)));
        });
}

QString SqlValueTables::referenceOf(const ListedField& field) const
{
    if (!field.areValuesListed || field.measure == Measure::Scale || tablesOf(field).size() != 1)
        return QString();
    const auto first = std::find_if(field.valueSets.cbegin(), field.valueSets.cend(),
        [](const ListedValueSet& valueSet) { return !valueSet.codes.isEmpty(); });
    const Table& table = m_tables.at(m_known.value(idOf(field, *first)));
    return table.isClosed && !lacksMissing(field, table) ? table.name : QString();
}

QString SqlValueTables::literal(const QString& code, SqlType type) const
{
    const QString known = type == SqlType::Text ? textLiteral(code) : numberLiteral(code, type);
    return known.isNull() ? null() : known;
}

// The same text for what the database takes for the same code: SQLite rounds, PostgreSQL does not.
QString SqlValueTables::uniqueKey(const QString& literal, SqlType type) const
{
    if (type != SqlType::Real || m_dialect == SqlDialect::PostgreSql || literal == null())
        return literal;
    return QString::number(literal.toDouble(), 'g', QLocale::FloatingPointShortest);
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
            const QString& high = entry.isRange() ? entry.highCode : entry.code;
            code += QLatin1String(", ") + literal(high, table.type);
        } else {
            const QString key = uniqueKey(code, table.type);
            if (seen.contains(key))
                code = null();
            seen.insert(key);
        }
        const QStringList cells { code, sqlText(entry.text()), sqlText(entry.label),
            entry.isSpecial() ? sqlText(nameOf(entry.special)) : null() };
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
