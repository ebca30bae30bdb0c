#include "writers/DiffWriters.h"

#include "text/CsvText.h"
#include "text/JsonWriter.h"
#include "text/ShownText.h"
#include "writers/ListingNames.h"

#include <QJsonObject>

#include <algorithm>

namespace {

// Changes only when a reader of the JSON has to change.
constexpr int JsonVersion = 1;

QByteArray lineOf(const QString& text)
{
    return printable(text).toUtf8() + '\n';
}

// Names of a record's variables, or as wide as is wanted.
int nameWidth(const RecordDifferences& record)
{
    constexpr int Widest = 24;
    int width = 0;
    for (const VariableDifferences& variable : record.variables)
        width = qMax(width, variable.variable.size());
    return qMin(width, Widest);
}

void writeVariable(const VariableDifferences& variable, int width, const ByteSink& sink)
{
    const bool tellsSet = variable.haveSeveralSets();
    const QString indent = QStringLiteral("    ");
    QString name = variable.variable.isNull()
        ? QString()
        : variable.variable.leftJustified(width) + QStringLiteral("  ");
    for (const DifferenceRun& run : variable.runs) {
        sink(lineOf(indent + name + textOf(run, tellsSet)));
        name.fill(QLatin1Char(' '));
    }
}

QString titleOf(const RecordDifferences& record, const Listing& listing)
{
    if (!record.record.isNull())
        return record.record;
    return listing.hasRecords() ? QStringLiteral("Identification items")
                                : QStringLiteral("Variables");
}

void writeSection(
    const QString& title, const ComparedFiles& files, bool breaking, const ByteSink& sink)
{
    const QVector<RecordDifferences> records = groupDifferences(files.differences, breaking);
    if (records.isEmpty())
        return;
    sink(lineOf(title));
    for (const RecordDifferences& record : records) {
        sink(lineOf(QStringLiteral("  ") + titleOf(record, files.before)));
        const int width = nameWidth(record);
        for (const VariableDifferences& variable : record.variables)
            writeVariable(variable, width, sink);
    }
    sink("\n");
}

QVector<Difference> toldOf(const ComparedFiles& files)
{
    QVector<Difference> told = files.differences;
    const auto isLeftOut = [](const Difference& difference) { return !difference.breaks; };
    if (files.onlyBreaking)
        told.erase(std::remove_if(told.begin(), told.end(), isLeftOut), told.end());
    return told;
}

// ---- CSV and JSON

QStringList cellsOf(const Difference& difference)
{
    return { nameOf(difference.kind),
        difference.breaks ? QStringLiteral("yes") : QStringLiteral("no"), difference.record,
        difference.variable, difference.valueSet, difference.code, difference.highCode,
        nameOf(difference.property), textOf(difference.before), textOf(difference.after) };
}

QJsonObject jsonOf(const Listing& listing)
{
    return { { QStringLiteral("file"), listing.file },
        { QStringLiteral("kind"), nameOf(listing.kind) } };
}

QJsonObject jsonOf(const Difference& difference)
{
    return { { QStringLiteral("kind"), nameOf(difference.kind) },
        { QStringLiteral("breaks"), difference.breaks },
        { QStringLiteral("record"), textOrNull(difference.record) },
        { QStringLiteral("variable"), textOrNull(difference.variable) },
        { QStringLiteral("valueSet"), textOrNull(difference.valueSet) },
        { QStringLiteral("code"), textOrNull(difference.code) },
        { QStringLiteral("to"), textOrNull(difference.highCode) },
        { QStringLiteral("property"), textOrNull(nameOf(difference.property)) },
        { QStringLiteral("before"), textOrNull(textOf(difference.before)) },
        { QStringLiteral("after"), textOrNull(textOf(difference.after)) } };
}

} // namespace

void writeDiffText(const ComparedFiles& files, const ByteSink& sink)
{
    writeSection(QStringLiteral("These can break data that fits %1:").arg(files.before.file), files,
        true, sink);
    if (!files.onlyBreaking)
        writeSection(QStringLiteral("These break none:"), files, false, sink);
    sink(lineOf(summaryOf(files.differences, files.before.file, files.after.file)));
}

void writeDiffCsv(const ComparedFiles& files, bool forSpreadsheet, const ByteSink& sink)
{
    const QVector<Difference> told = toldOf(files);
    const CsvWriter csv(sink, forSpreadsheet);
    csv.addLine({ QStringLiteral("kind"), QStringLiteral("breaks"), QStringLiteral("record"),
        QStringLiteral("variable"), QStringLiteral("value_set"), QStringLiteral("code"),
        QStringLiteral("to"), QStringLiteral("property"), QStringLiteral("before"),
        QStringLiteral("after") });
    for (const Difference& difference : told)
        csv.addLine(cellsOf(difference));
}

void writeDiffJson(const ComparedFiles& files, const ByteSink& sink)
{
    const QVector<Difference> told = toldOf(files);
    const int breaking = countBreaking(files.differences);
    JsonWriter json(sink);
    json.beginObject({ { QStringLiteral("tesselDiff"), JsonVersion },
        { QStringLiteral("before"), jsonOf(files.before) },
        { QStringLiteral("after"), jsonOf(files.after) }, { QStringLiteral("breaking"), breaking },
        { QStringLiteral("fitting"), files.differences.size() - breaking } });
    json.beginList("differences");
    for (const Difference& difference : told)
        json.add(jsonOf(difference));
    json.endList();
    json.endObject();
    json.finish();
}
