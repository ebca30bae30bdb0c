#include "lookups/LookupWriters.h"
#include "lookups/ValueCounts.h"
#include "text/TextTable.h"

#include <model_Tessel/Lookup.h>

#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

#include <memory>
#include <random>
#include <vector>

namespace {

using Counts = QVector<QPair<QString, int>>;

// The counts of values that stand under the keys "1", "2" and so on.
Counts countsOf(const QStringList& values)
{
    std::vector<std::unique_ptr<TOxLookupValue>> owned;
    std::map<QString, TOxLookupValue*> records;
    for (const QString& value : values) {
        owned.push_back(std::make_unique<TOxLookupValue>(TOxLookupValue { value }));
        records.emplace(QString::number(owned.size()), owned.back().get());
    }
    Counts result;
    for (const ValueCount& count : countValues(records))
        result.append({ count.value, count.keys });
    return result;
}

// The same, one value after the other.
Counts plainCountsOf(const QStringList& values)
{
    std::map<QString, int> counts;
    for (const QString& value : values)
        ++counts[value];
    Counts result;
    for (const auto& [value, keys] : counts)
        result.append({ value, keys });
    std::stable_sort(result.begin(), result.end(),
        [](const auto& a, const auto& b) { return a.second > b.second; });
    return result;
}

} // namespace

class tst_ValueCounts : public QObject {
    Q_OBJECT

private slots:
    void emptyKey();
    void anyValues_data();
    void anyValues();
    void longValuesThatBeginAlike();
    void wideOnesFarBehind();
    void listedAsLines_data();
    void listedAsLines();
    void listedAsATable_data();
    void listedAsATable();
};

void tst_ValueCounts::emptyKey()
{
    TOxLookupValue value { "x" };
    QCOMPARE(countValues({}).size(), 0);
    QCOMPARE(countValues({ { QString(), &value } }).size(), 0);
    QCOMPARE(countValues({ { QString(), &value }, { "1", &value } }).constFirst().keys, 1);
}

void tst_ValueCounts::anyValues_data()
{
    QTest::addColumn<int>("seed");
    for (int seed = 0; seed < 200; ++seed)
        QTest::addRow("%d", seed) << seed;
}

void tst_ValueCounts::anyValues()
{
    QFETCH(int, seed);
    std::mt19937 random(seed);
    const auto upTo = [&](int most) { return int(random() % unsigned(most + 1)); };
    // Narrow ones alone are compared in another way than with wide ones among them.
    const char* const wide = seed % 3 == 0 ? "" : seed % 3 == 1 ? "\u0100" : "\u4e00\uffff";
    const QString characters =
        QString::fromUtf8("aab \u00e9\u00ff") + QString::fromUtf8(wide) + QChar(0);
    const QString start(upTo(9), 'a');
    const int length = upTo(20);
    QStringList values;
    for (int i = upTo(300); i >= 0; --i) {
        QString value = start;
        for (int left = upTo(length); left > 0; --left)
            value += characters.at(upTo(characters.size() - 1));
        values.append(value);
    }
    QCOMPARE(countsOf(values), plainCountsOf(values));
}

void tst_ValueCounts::longValuesThatBeginAlike()
{
    QStringList values;
    for (int i = 0; i < 400; ++i)
        values.append(QString(i * 5, 'x') + (i % 2 == 0 ? "" : "y"));
    values += values;
    QCOMPARE(countsOf(values), plainCountsOf(values));
}

void tst_ValueCounts::wideOnesFarBehind()
{
    QStringList values;
    for (int i = 0; i < 400; ++i)
        values.append(QString("%1 name").arg(i % 300, 9) + QChar(i % 5 == 0 ? 0x4e00 + i : 'x'));
    QCOMPARE(countsOf(values), plainCountsOf(values));
}

void tst_ValueCounts::listedAsLines_data()
{
    QTest::addColumn<int>("seed");
    QTest::addColumn<int>("count");
    for (int seed = 0; seed < 20; ++seed)
        QTest::addRow("%d", seed) << seed << seed * seed * 10; // in pieces when they are many
}

// As cells of a line and members of an object are written one by one.
void tst_ValueCounts::listedAsLines()
{
    QFETCH(int, seed);
    QFETCH(int, count);
    std::mt19937 random(seed);
    const auto upTo = [&](int most) { return int(random() % unsigned(most + 1)); };
    const QString characters =
        QString::fromUtf8("abcdefgh =-\u00e9\u4e00,\"\n\t\\") + QChar(0xD83C);
    LookupOutcome outcome;
    outcome.frequencies.emplace();
    QByteArray csv;
    QByteArray json;
    for (int keys = count; keys > 0; --keys) {
        QString value;
        for (int left = upTo(25); left > 0; --left)
            value += characters.at(upTo(upTo(3) == 0 ? characters.size() - 1 : 7));
        outcome.frequencies->append({ value, 1 + keys / 7 });
        const bool isFormula = !value.isEmpty() && QString("=-\t\n").contains(value.at(0));
        const bool isQuoted = value.contains(',') || value.contains('"') || value.contains('\n');
        const QString cell = (isFormula ? "'" : "") + value;
        const QString quoted = '"' + QString(cell).replace("\"", "\"\"") + '"';
        const QByteArray number = QByteArray::number(1 + keys / 7);
        csv += "frequency,,,," + (isQuoted ? quoted : cell).toUtf8() + ",," + number + "\r\n";
        const QJsonObject entry { { "keys", 1 + keys / 7 }, { "value", value } };
        json += (json.isEmpty() ? "\n    " : ",\n    ")
            + QJsonDocument(entry).toJson(QJsonDocument::Compact);
    }
    const auto written = [&outcome](ListingFormat::Kind kind) {
        ListingFormat format;
        format.kind = kind;
        format.forSpreadsheet = true;
        QByteArray bytes;
        writeLookup(outcome, format, [&bytes](const QByteArray& piece) { bytes += piece; });
        return bytes;
    };
    const QByteArray lines = written(ListingFormat::Kind::Csv);
    QCOMPARE(lines.mid(lines.indexOf("summary,no-separator,,,,,0\r\n") + 28), csv);
    const QByteArray text = written(ListingFormat::Kind::Json);
    QCOMPARE(text.mid(text.indexOf("\"frequencies\":[")), "\"frequencies\":[" + json + "]}\n");
}

void tst_ValueCounts::listedAsATable_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("most");
    for (const int width : { 10, 20, 24, 25, 26, 40, 80 }) {
        for (const int most : { 1, 9999, 123456 })
            QTest::addRow("%d columns, %d", width, most) << width << most;
    }
}

// Plain rows are written without a table; they are to look as if they were in one.
void tst_ValueCounts::listedAsATable()
{
    QFETCH(int, width);
    QFETCH(int, most);
    LookupOutcome outcome;
    outcome.frequencies = QVector<ValueCount> { { "First", most } };
    QStringList values { "", " ", " a", "a ", "a b", "\t", "\x01", "\x7f", "~", "'" };
    for (const int size :
        { 10, 15, 16, 17, 18, 19, 20, 21, 33, 34, 35, 36, 72, 73, 74, 75, 76, 200 })
        values << QString(size, 'x') << QString("xy ").repeated(size / 3);
    values << QString::fromUtf8("\u00e9\u024f") << QString::fromUtf8("e\u0301")
           << QString::fromUtf8("\u4e00") << QString::fromUtf8("a\u00adb")
           << QString::fromUtf8("\u00a0a") << QString::fromUtf8("\u200fb");
    for (const QString& value : values)
        outcome.frequencies->append({ value, 1 });
    ListingFormat format;
    format.width = width;
    QByteArray bytes;
    writeLookup(outcome, format, [&bytes](const QByteArray& piece) { bytes += piece; });
    const QString text = QString::fromUtf8(bytes);

    TextTable table({ { "Keys", TextTable::Align::Right }, { "Value", TextTable::Align::Left } });
    table.beginGroup("Values, and how many keys carry each");
    for (const ValueCount& count : *outcome.frequencies) {
        const bool isQuoted = count.value.isEmpty() || count.value != count.value.trimmed();
        QString value = isQuoted ? '\'' + count.value + '\'' : count.value;
        value.replace('\t', QChar(0x2409)).replace('\x01', QChar(0x2401));
        value.replace('\x7f', QChar::ReplacementCharacter);
        table.addRow({ QString::number(count.keys), value });
    }
    const QString expected = table.toText(width);
    QCOMPARE(text.right(expected.size()), expected);
}

QTEST_GUILESS_MAIN(tst_ValueCounts)
#include "tst_ValueCounts.moc"
