#pragma once

#include "ReadRecords.h"
#include "SlicedData.h"

#include <QDir>
#include <QSet>
#include <QtTest>

/* What the lines of a dictionary's data are to become, and comparing it with what was read of them.
 */

// A number of either side in the same digits; line breaks as CSPro writes them.
inline QString sameCell(const QString& cell)
{
    bool isNumber = false;
    const double number = cell.toDouble(&isNumber);
    if (isNumber)
        return QString::number(number, 'g', 15);
    return QString(cell).replace('\n', QChar(0x2424));
}

// The first value set of an item as the dictionary has it.
struct Expected {
    QMap<QString, QString> labels; // of the codes that are one value, by value
    QSet<QString> missing; // of whole numbers each one
};

inline void addRange(QSet<QString>& values, const QString& low, const QString& high)
{
    const double first = low.toDouble();
    const auto more = qint64(high.toDouble() - first);
    for (qint64 i = 0; i <= more; ++i)
        values.insert(QString::number(first + double(i), 'g', 15));
}

inline bool isBehindRange(const TCSProValueSet& set, const TValueSetItem* code)
{
    for (const TValueSetItem* entry : qAsConst(*set.items)) {
        const QString high = set.detail(entry).highCode;
        if (entry == code)
            return false;
        if (!high.isNull() && entry->code.toDouble() <= code->code.toDouble()
            && code->code.toDouble() <= high.toDouble())
            return true;
    }
    return false;
}

// An impossible value is no missing one.
inline bool isMissing(const TValueSetItem* entry)
{
    constexpr int defaultType = 4;
    return entry->special && entry->type != defaultType;
}

inline void addCode(Expected& expected, const TCSProItem& item, const TCSProValueSet& set,
    const TValueSetItem* entry)
{
    QString code = entry->code;
    while (code.endsWith(' '))
        code.chop(1);
    const QString high = set.detail(entry).highCode;
    if (!high.isNull()) {
        if (isMissing(entry))
            addRange(expected.missing, code, high);
        return;
    }
    bool isNumber = false;
    code.toDouble(&isNumber);
    if (!item.isAlpha && (!isNumber || isBehindRange(set, entry)))
        return;
    const QString key = item.isAlpha ? code : sameCell(code.trimmed());
    const QString label = entry->label.section('|', 0, 0).replace(QChar(0), QChar(0x2400));
    if (!expected.labels.contains(key) && !label.isEmpty())
        expected.labels.insert(key, label);
    if (isMissing(entry) && !code.isEmpty())
        expected.missing.insert(key);
}

inline Expected expectedOf(const TCSProItem& item, bool isBoundToDoubles = true)
{
    Expected expected;
    constexpr int mostDigits = 15;
    const bool isWide =
        isBoundToDoubles && !item.isAlpha && item.len - (item.hasDecimalChar ? 1 : 0) > mostDigits;
    if (!item.getHasValueSet() || isWide)
        return expected;
    const TCSProValueSet& set = *item.getValueSet(0);
    for (const TValueSetItem* entry : qAsConst(*set.items))
        addCode(expected, item, set, entry);
    return expected;
}

// The items whose columns a record's lines have: identification, then its own.
inline QVector<const TCSProItem*> itemsOf(const TCSPro& reader, const TCSProRecord& record)
{
    QVector<const TCSProItem*> ids;
    QVector<const TCSProItem*> own;
    for (const TCSProItem* item : qAsConst(*reader.items)) {
        if (item->record == &record)
            own.append(item);
        else if (!reader.records->contains(item->record)
            && item->detail().level <= std::max(1, record.level))
            ids.append(item);
    }
    return ids + own;
}

// What a program takes of names and labels.
struct Program {
    bool hasOwnNames = true;
    int longestLabel = 100'000;
    int longestValueLabel = 100'000;
};

inline QString fullLabelOf(const TCSProItem& item)
{
    const QString own = item.detail().occurrenceLabel.section('|', 0, 0);
    const QString label = item.label.section('|', 0, 0);
    return own.isEmpty() ? label : QStringLiteral("%1 (%2)").arg(label, own);
}

// Whole numbers of ranges each by itself.
inline QSet<QString> missingOf(const ReadColumn& column)
{
    QSet<QString> missing;
    for (const QString& value : column.missing) {
        if (value.contains(':'))
            addRange(missing, value.section(':', 0, 0), value.section(':', 1));
        else
            missing.insert(sameCell(value));
    }
    return missing;
}

inline QVector<QStringList> sameRows(const QVector<QStringList>& rows)
{
    QVector<QStringList> result;
    for (const QStringList& row : rows) {
        QStringList cells;
        for (const QString& cell : row)
            cells.append(cell.isNull() ? QString("") : sameCell(cell));
        result.append(cells);
    }
    return result;
}

inline QString labelText(const TCSPro& reader, const QString& label)
{
    return reader.languages().isEmpty() ? label : label.section('|', 0, 0);
}

inline void compareColumn(const ReadColumn& column, const TCSProItem& item, const Program& program)
{
    const QString own = item.detail().occurrenceLabel.section('|', 0, 0);
    QString label = item.label.section('|', 0, 0);
    if (!own.isEmpty())
        label += QStringLiteral(" (%1)").arg(own);
    QCOMPARE(column.label, label.left(program.longestLabel));
    if (program.hasOwnNames)
        QCOMPARE(column.name, item.name);
    Expected expected = expectedOf(item);
    for (QString& text : expected.labels)
        text = text.left(program.longestValueLabel);
    Expected found;
    for (auto it = column.labels.begin(); it != column.labels.end(); ++it)
        found.labels.insert(item.isAlpha ? it.key().trimmed() : sameCell(it.key()), it.value());
    QCOMPARE(found.labels, expected.labels);
    for (const QString& value : column.missing) {
        if (value.contains(':'))
            addRange(found.missing, value.section(':', 0, 0), value.section(':', 1));
        else
            found.missing.insert(sameCell(value));
    }
    QCOMPARE(found.missing, expected.missing);
}

inline void compareRows(const QVector<QStringList>& found, const QVector<QStringList>& expected,
    const QVector<const TCSProItem*>& items)
{
    QCOMPARE(found.size(), expected.size());
    for (int i = 0; i < expected.size(); ++i) {
        QStringList row; // behind the numbers of the case and the row, without what is no text
        for (int column = 0; column < items.size(); ++column) {
            if (items.at(column)->detail().contentType.isEmpty())
                row.append(sameCell(expected.at(i).at(column + 2)));
        }
        QStringList cells;
        for (const QString& cell : found.at(i))
            cells.append(sameCell(cell));
        QCOMPARE(cells, row);
    }
}

// Calls compare for each record with its items and the rows of a slice of their own.
template <typename Compare>
void eachRecord(const QString& dictionary, const QString& data, const Compare& compare)
{
    const Slice slice(dictionary, data);
    TCSPro reader;
    reader.setReading(CSProReading::AsWritten);
    reader.loadFromFile(dictionary);
    for (const TCSProRecord* record : qAsConst(*reader.records))
        compare(record->name, itemsOf(reader, *record), slice.rowsOf(record->name));
}

inline void compareRecords(const ReadRecords& found, const QString& dictionary, const QString& data,
    const Program& program)
{
    int rows = 0;
    eachRecord(dictionary, data, [&](const QString& name, const auto& items, const auto& expected) {
        QVERIFY2(items.isEmpty() || found.contains(name), qPrintable(name));
        const ReadRecord& read = found[name];
        compareRows(read.rows, expected, items);
        int column = 0;
        for (const TCSProItem* item : items) {
            if (item->detail().contentType.isEmpty())
                compareColumn(read.columns.value(column++), *item, program);
        }
        QCOMPARE(read.columns.size(), column);
        rows += read.rows.size();
    });
    QVERIFY(rows > 0);
}

inline void addPairs()
{
    QTest::addColumn<QString>("base");
    QTest::newRow("example") << QString(TESSEL_EXAMPLES "/census");
    QTest::newRow("hostile") << QString(TESSEL_TEST_DATA "/export_setup");
    if (!qEnvironmentVariableIsSet("TESSEL_CORPUS"))
        return;
    for (const char* folder : { "/cspro/", "/cspro-json/" }) {
        const QDir dir(qEnvironmentVariable("TESSEL_CORPUS") + QString::fromLatin1(folder));
        for (const QString& name : dir.entryList({ QStringLiteral("*.dat") })) {
            const QString base = dir.filePath(QFileInfo(name).completeBaseName());
            if (QFile::exists(base + ".dcf"))
                QTest::newRow(qPrintable(name)) << base;
        }
    }
}
