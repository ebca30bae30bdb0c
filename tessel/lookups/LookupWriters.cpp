#include "lookups/LookupWriters.h"

#include "text/CsvText.h"
#include "text/JsonWriter.h"
#include "text/Prefetch.h"
#include "text/ShownText.h"
#include "text/TextTable.h"

#include <algorithm>

namespace {

// Changes only when a reader of the JSON has to change.
constexpr int JsonVersion = 1;

constexpr int PieceSize = 32'768; // characters or bytes
constexpr int NarrowestPlain = 20; // columns; below that a table may lay out in another way

using Align = TextTable::Align;

// The numbers of keys as text, with what stands around them. Neighbours in a listing mostly have
// the same.
class KeysText {
public:
    KeysText(const char* before, const char* behind)
        : m_before(before)
        , m_behind(behind)
    {
    }

    const QByteArray& of(const ValueCount& count)
    {
        if (count.keys != m_keys)
            m_text = m_before + QByteArray::number(m_keys = count.keys) + m_behind;
        return m_text;
    }

private:
    QByteArray m_before;
    QByteArray m_behind;
    int m_keys = 0; // no value has as few
    QByteArray m_text;
};

// Values that come soon, as they are in the order of their texts and not of the file.
void prefetchValue(const QVector<ValueCount>& counts, int index)
{
    constexpr int Ahead = 12;
    if (counts.size() - index > Ahead)
        prefetch(counts.at(index + Ahead).value);
}

// ---- table

// A text that is empty, or has blanks at its ends, would not be seen as it is.
QString shown(const QString& text)
{
    const bool needsQuotes = text != text.trimmed() || text.isEmpty();
    return printable(needsQuotes ? QLatin1Char('\'') + text + QLatin1Char('\'') : text);
}

QString messageTable(const QVector<TOxLookupProblem>& problems, int width)
{
    if (problems.isEmpty())
        return QString();
    TextTable table(
        { { QStringLiteral("Line"), Align::Right }, { QStringLiteral("Message"), Align::Left } });
    table.beginGroup(QStringLiteral("Messages"));
    for (const TOxLookupProblem& problem : problems)
        table.addRow({ QString::number(problem.line), printable(problem.text) });
    return table.toText(width);
}

// True for a text that stands in a row as it is, a column for each character.
bool isPlain(const QString& text, int room)
{
    if (text.isEmpty() || text.size() > room || text.at(0).isSpace()
        || text.at(text.size() - 1).isSpace())
        return false;
    return std::all_of(text.cbegin(), text.cend(), [](QChar character) {
        const ushort code = character.unicode();
        return (code >= 0x20 && code < 0x7F) || (code >= 0xC0 && code < 0x250);
    });
}

TextTable frequencyHead(const ValueCount& first)
{
    TextTable table(
        { { QStringLiteral("Keys"), Align::Right }, { QStringLiteral("Value"), Align::Left } });
    table.beginGroup(QStringLiteral("Values, and how many keys carry each"));
    table.addRow({ QString::number(first.keys), shown(first.value) });
    return table;
}

// There may be millions of rows, so plain ones are written without a table, and many at a time. The
// first row has the highest number, which all are aligned by.
void writeFrequencyTable(const QVector<ValueCount>& frequencies, int width, const ByteSink& sink)
{
    const TextTable head = frequencyHead(frequencies.constFirst());
    const int digits = qMax(4, QString::number(frequencies.constFirst().keys).size());
    const int room = width - digits - 1;
    QString text = head.toText(width);
    const int headLength = text.size();
    QString number; // as long as the counts are the same
    for (int i = 1; i < frequencies.size(); ++i) {
        const ValueCount& count = frequencies.at(i);
        prefetchValue(frequencies, i);
        if (i == 1 || count.keys != frequencies.at(i - 1).keys)
            number = QString::number(count.keys).rightJustified(digits) + QLatin1Char(' ');
        if (text.size() >= PieceSize) {
            sink(text.toUtf8());
            text.resize(0); // keeps its memory
        }
        if (room >= NarrowestPlain && isPlain(count.value, room)) {
            text += number;
            text += count.value;
            text += QLatin1Char('\n');
            continue;
        }
        TextTable table = head;
        table.addRow({ QString::number(count.keys), shown(count.value) });
        text += table.toText(width).midRef(headLength);
    }
    sink(text.toUtf8());
}

void addDifferences(
    TextTable& table, const QString& title, const QVector<LabelDifference>& differences)
{
    if (differences.isEmpty())
        return;
    table.beginGroup(title);
    for (const LabelDifference& difference : differences) {
        table.addRow(
            { shown(difference.key), difference.text.isNull() ? QString() : shown(difference.text),
                difference.label.isNull() ? QString() : shown(difference.label) });
    }
}

QString comparisonTable(const LabelComparison& comparison, int width)
{
    TextTable table({ { QStringLiteral("Key"), Align::Left },
        { QStringLiteral("Text"), Align::Left }, { QStringLiteral("Label"), Align::Left } });
    addDifferences(table, QStringLiteral("Keys without a label"), comparison.keysWithoutLabel);
    addDifferences(table, QStringLiteral("Labels without a key"), comparison.labelsWithoutKey);
    addDifferences(table, QStringLiteral("Texts that differ"), comparison.differentTexts);
    return table.toText(width);
}

void writeTable(const LookupOutcome& outcome, int width, const ByteSink& sink)
{
    const QStringList summary = lookupSummary(outcome);
    QString text;
    for (const QString& line : summary) {
        const QStringList parts = wrapped(printable(line), width);
        text += parts.join(QLatin1Char('\n')) + QLatin1Char('\n');
    }
    text += messageTable(outcome.problems, width);
    if (outcome.comparison)
        text += comparisonTable(*outcome.comparison, width);
    sink(text.toUtf8());
    if (outcome.frequencies && !outcome.frequencies->isEmpty())
        writeFrequencyTable(*outcome.frequencies, width, sink);
}

// ---- CSV

void addCount(const CsvWriter& csv, const char* name, int count)
{
    csv.addLine({ QStringLiteral("summary"), QLatin1String(name), QString(), QString(), QString(),
        QString(), QString::number(count) });
}

void addDifferences(
    const CsvWriter& csv, const char* name, const QVector<LabelDifference>& differences)
{
    for (const LabelDifference& difference : differences) {
        csv.addLine({ QStringLiteral("difference"), QLatin1String(name), QString(), difference.key,
            difference.text, difference.label, QString() });
    }
}

// There may be millions of lines, so many are handed out at a time.
void writeFrequencyLines(
    const QVector<ValueCount>& frequencies, const CsvWriter& csv, const ByteSink& sink)
{
    const QByteArray before = "frequency,,,,";
    KeysText behind(",,", "\r\n");
    QByteArray text;
    text.reserve(2 * PieceSize); // and keeps it
    for (int i = 0; i < frequencies.size(); ++i) {
        const ValueCount& count = frequencies.at(i);
        prefetchValue(frequencies, i);
        text += before;
        csv.appendCell(text, count.value);
        text += behind.of(count);
        if (text.size() >= PieceSize) {
            sink(text);
            text.resize(0);
        }
    }
    sink(text);
}

void writeCsv(const LookupOutcome& outcome, bool forSpreadsheet, const ByteSink& sink)
{
    const CsvWriter csv(sink, forSpreadsheet);
    csv.addLine({ QStringLiteral("part"), QStringLiteral("name"), QStringLiteral("line"),
        QStringLiteral("key"), QStringLiteral("text"), QStringLiteral("label"),
        QStringLiteral("count") });
    addCount(csv, "lines", outcome.lines);
    addCount(csv, "keys", outcome.keys);
    addCount(csv, "duplicate-key", outcome.duplicateKeys);
    addCount(csv, "wrong-key-length", outcome.wrongKeyLengths);
    addCount(csv, "no-separator", outcome.withoutSeparator);
    for (const TOxLookupProblem& problem : outcome.problems) {
        csv.addLine({ QStringLiteral("message"), lookupProblemName(problem.kind),
            QString::number(problem.line), QString(), problem.text, QString(), QString() });
    }
    if (outcome.comparison) {
        addDifferences(csv, "key-without-label", outcome.comparison->keysWithoutLabel);
        addDifferences(csv, "label-without-key", outcome.comparison->labelsWithoutKey);
        addDifferences(csv, "text-differs", outcome.comparison->differentTexts);
    }
    if (outcome.frequencies)
        writeFrequencyLines(*outcome.frequencies, csv, sink);
}

// ---- JSON

void addDifferences(JsonWriter& json, const char* name, const QVector<LabelDifference>& differences)
{
    json.beginList(name);
    for (const LabelDifference& difference : differences) {
        json.add({ { QStringLiteral("key"), difference.key },
            { QStringLiteral("text"), textOrNull(difference.text) },
            { QStringLiteral("label"), textOrNull(difference.label) } });
    }
    json.endList();
}

void addComparison(JsonWriter& json, const LabelComparison& comparison)
{
    json.beginObject({ { QStringLiteral("file"), comparison.file },
                         { QStringLiteral("variable"), comparison.variable } },
        "against");
    addDifferences(json, "keysWithoutLabel", comparison.keysWithoutLabel);
    addDifferences(json, "labelsWithoutKey", comparison.labelsWithoutKey);
    addDifferences(json, "differentTexts", comparison.differentTexts);
    json.endObject();
}

void addMessages(JsonWriter& json, const QVector<TOxLookupProblem>& problems)
{
    json.beginList("messages");
    for (const TOxLookupProblem& problem : problems) {
        json.add({ { QStringLiteral("line"), problem.line },
            { QStringLiteral("kind"), lookupProblemName(problem.kind) },
            { QStringLiteral("text"), problem.text } });
    }
    json.endList();
}

void addFrequencies(JsonWriter& json, const QVector<ValueCount>& frequencies)
{
    json.beginList("frequencies");
    KeysText before("{\"keys\":", ",\"value\":");
    for (int i = 0; i < frequencies.size(); ++i) {
        const ValueCount& count = frequencies.at(i);
        prefetchValue(frequencies, i);
        QByteArray& text = json.beginText();
        text += before.of(count);
        appendJsonString(text, count.value);
        text += '}';
    }
    json.endList();
}

void writeJson(const LookupOutcome& outcome, const ByteSink& sink)
{
    JsonWriter json(sink);
    json.beginObject({ { QStringLiteral("tesselLookup"), JsonVersion },
        { QStringLiteral("file"), outcome.path }, { QStringLiteral("encoding"), outcome.encoding },
        { QStringLiteral("separator"), TOxLookup::separatorNames().at(outcome.separator) },
        { QStringLiteral("separatorGuessed"), outcome.isGuessed },
        { QStringLiteral("consistent"), outcome.isConsistent() },
        { QStringLiteral("lines"), outcome.lines }, { QStringLiteral("keys"), outcome.keys },
        { QStringLiteral("duplicateKeys"), outcome.duplicateKeys },
        { QStringLiteral("wrongKeyLengths"), outcome.wrongKeyLengths },
        { QStringLiteral("withoutSeparator"), outcome.withoutSeparator } });
    addMessages(json, outcome.problems);
    if (outcome.frequencies)
        addFrequencies(json, *outcome.frequencies);
    if (outcome.comparison)
        addComparison(json, *outcome.comparison);
    json.endObject();
    json.finish();
}

} // namespace

QStringList lookupSummary(const LookupOutcome& outcome)
{
    QString withoutSeparator = QStringLiteral("%1 without a separator")
                                   .arg(plural(outcome.withoutSeparator, QStringLiteral("line")));
    if (outcome.repeatedBySeparator > 0) {
        withoutSeparator +=
            QStringLiteral(" (duplicate keys among them: %1)").arg(outcome.repeatedBySeparator);
    }
    QStringList lines { QStringLiteral("%1: separator %2, encoding %3")
                            .arg(outcome.path, TOxLookup::separatorNames().at(outcome.separator),
                                outcome.encoding),
        QStringLiteral("%1, %2").arg(plural(outcome.lines, QStringLiteral("line")),
            plural(outcome.keys, QStringLiteral("key"))),
        QStringLiteral("%1, %2 of another length, %3")
            .arg(plural(outcome.duplicateKeys, QStringLiteral("duplicate key")),
                plural(outcome.wrongKeyLengths, QStringLiteral("key")), withoutSeparator) };
    if (outcome.comparison) {
        const LabelComparison& labels = *outcome.comparison;
        lines.append(
            QStringLiteral("Against %1, variable %2: %3 without a label, %4 without a key, %5")
                .arg(labels.file, labels.variable,
                    plural(labels.keysWithoutLabel.size(), QStringLiteral("key")),
                    plural(labels.labelsWithoutKey.size(), QStringLiteral("label")),
                    plural(labels.differentTexts.size(), QStringLiteral("different text"))));
    }
    lines.append(outcome.isConsistent() ? QStringLiteral("The lookup is consistent.")
                                        : QStringLiteral("The lookup is not consistent."));
    return lines;
}

void writeLookup(const LookupOutcome& outcome, const ListingFormat& format, const ByteSink& sink)
{
    switch (format.kind) {
    case ListingFormat::Kind::Csv:
        return writeCsv(outcome, format.forSpreadsheet, sink);
    case ListingFormat::Kind::Json:
        return writeJson(outcome, sink);
    case ListingFormat::Kind::Table:
        return writeTable(outcome, format.width, sink);
    }
}
