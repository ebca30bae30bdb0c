#include "writers/FiguresJson.h"

#include "text/JsonWriter.h"

#include <QJsonArray>

#include <cmath>

using namespace tessel;

namespace {

constexpr int JsonVersion = 1;

QJsonValue numberOrNull(const std::optional<double>& number)
{
    return number && std::isfinite(*number) ? QJsonValue(*number) : QJsonValue();
}

QJsonObject cellObject(const StatisticsCell& cell, bool isWeighted)
{
    const std::optional<qint64> count = cell.count();
    if (!count)
        return { { QStringLiteral("hidden"), true } };
    QJsonObject object { { QStringLiteral("count"), *count } };
    if (isWeighted)
        object.insert(QStringLiteral("weighted"), numberOrNull(cell.weight()));
    return object;
}

QJsonObject with(QJsonObject object, const QString& name, const QJsonValue& value)
{
    object.insert(name, value);
    return object;
}

QJsonObject momentsObject(const StatisticsMoments& moments)
{
    return { { QStringLiteral("mean"), numberOrNull(moments.mean) },
        { QStringLiteral("standardDeviation"), numberOrNull(moments.deviation) },
        { QStringLiteral("lowerQuartile"), numberOrNull(moments.lowerQuartile) },
        { QStringLiteral("median"), numberOrNull(moments.median) },
        { QStringLiteral("upperQuartile"), numberOrNull(moments.upperQuartile) },
        { QStringLiteral("quartileError"), moments.quartileError } };
}

class FiguresWriter {
public:
    FiguresWriter(const DataFigures& figures, const ByteSink& sink)
        : m_dictionary(figures.dictionary)
        , m_report(figures.report)
        , m_json(sink)
    {
    }

    void write();

private:
    const DataVariable& variable(int index) const
    {
        return m_dictionary.variables[std::size_t(index)];
    }
    QJsonValue recordName(int record) const
    {
        return record < 0 ? QJsonValue()
                          : QJsonValue(m_dictionary.records[std::size_t(record)].name);
    }
    QJsonObject codeObject(int valueSet, int code) const;
    void addRecords();
    void addVariable(const VariableStatistics& figures);
    void addValueSet(const StatisticsValueSet& set, bool isWeighted);
    void addCodes(
        const char* name, const QVector<StatisticsCode>& codes, bool isWeighted, bool hasBounds);
    void addNumbers(const VariableStatistics& figures);
    void addCross(const CrossTable& cross);
    void addCells(const char* name, const CrossTable& cross, int line);
    void addCategories(const char* name, int valueSet);

    const DataDictionary& m_dictionary;
    const StatisticsReport& m_report;
    JsonWriter m_json;
};

void FiguresWriter::write()
{
    QJsonObject head { { QStringLiteral("tesselFigures"), JsonVersion },
        { QStringLiteral("dictionary"), m_dictionary.name },
        { QStringLiteral("lines"), m_report.counts.lines },
        { QStringLiteral("rejectedLines"), m_report.counts.rejectedLines },
        { QStringLiteral("weight"), QJsonValue() }, { QStringLiteral("cases"), QJsonValue() },
        { QStringLiteral("hiddenBelow"), m_report.hiddenBelow } };
    if (m_report.weight >= 0)
        head.insert(QStringLiteral("weight"), variable(m_report.weight).name);
    if (m_report.hasCases)
        head.insert(QStringLiteral("cases"), cellObject(m_report.cases, false));
    QJsonArray files;
    for (const SourceFile& file : m_report.files)
        files.append(file.path);
    head.insert(QStringLiteral("files"), files);
    m_json.beginObject(head);
    addRecords();
    m_json.beginList("variables");
    for (const VariableStatistics& figures : m_report.variables)
        addVariable(figures);
    m_json.endList();
    m_json.beginList("crosses");
    for (const CrossTable& cross : m_report.crosses)
        addCross(cross);
    m_json.endList();
    m_json.endObject();
    m_json.finish();
}

void FiguresWriter::addRecords()
{
    m_json.beginList("records");
    for (std::size_t r = 0; r < m_report.records.size(); ++r) {
        const RecordStatistics& rows = m_report.records[r];
        m_json.add({ { QStringLiteral("name"), m_dictionary.records[r].name },
            { QStringLiteral("rows"), cellObject(rows.rows, rows.isWeighted) },
            { QStringLiteral("withoutWeight"), rows.withoutWeight() } });
    }
    m_json.endList();
}

QJsonObject FiguresWriter::codeObject(int valueSet, int code) const
{
    const DataCode& entry = m_dictionary.valueSets[std::size_t(valueSet)].codes.at(code);
    return { { QStringLiteral("code"), entry.code },
        { QStringLiteral("highCode"), textOrNull(entry.highCode) },
        { QStringLiteral("label"), m_dictionary.labelText(entry.label) } };
}

void FiguresWriter::addVariable(const VariableStatistics& figures)
{
    const DataVariable& named = variable(figures.variable);
    const bool isWeighted = figures.isWeighted;
    const bool isItem = figures.occurrences > 0;
    m_json.beginObject({ { QStringLiteral("record"), recordName(figures.record) },
        { QStringLiteral("name"), isItem ? named.itemName : named.name },
        { QStringLiteral("label"), m_dictionary.labelText(named.label) },
        { QStringLiteral("occurrences"), figures.occurrences },
        { QStringLiteral("isOccurrence"), figures.isOccurrence },
        { QStringLiteral("isWeighted"), isWeighted },
        { QStringLiteral("isQuantity"), figures.isQuantity },
        { QStringLiteral("total"), cellObject(figures.total, isWeighted) },
        { QStringLiteral("outside"), cellObject(figures.outside, isWeighted) },
        { QStringLiteral("allOutsideCodes"), figures.hasAllOutsideCodes } });
    QJsonObject kinds;
    for (std::size_t kind = 0; kind < StatisticsKindCount; ++kind) {
        kinds.insert(
            statisticsKindName(StatisticsKind(kind)), cellObject(figures.kinds[kind], isWeighted));
    }
    m_json.beginObject(kinds, "kinds");
    m_json.endObject();
    addCodes("missingKinds", figures.missingKinds, isWeighted, false);
    addCodes("outsideCodes", figures.outsideCodes, false, true);
    m_json.beginList("valueSets");
    for (const StatisticsValueSet& set : figures.valueSets)
        addValueSet(set, isWeighted);
    m_json.endList();
    if (figures.hasNumbers)
        addNumbers(figures);
    m_json.endObject();
}

void FiguresWriter::addCodes(
    const char* name, const QVector<StatisticsCode>& codes, bool isWeighted, bool hasBounds)
{
    m_json.beginList(name);
    for (const StatisticsCode& code : codes) {
        QJsonObject object =
            with(cellObject(code.cell, isWeighted), QStringLiteral("code"), code.code);
        if (hasBounds)
            object.insert(QStringLiteral("uncertain"), code.uncertain);
        m_json.add(object);
    }
    m_json.endList();
}

void FiguresWriter::addValueSet(const StatisticsValueSet& set, bool isWeighted)
{
    m_json.beginObject(
        { { QStringLiteral("name"), m_dictionary.valueSets[std::size_t(set.valueSet)].name },
            { QStringLiteral("rest"), cellObject(set.rest, isWeighted) } });
    m_json.beginList("codes");
    for (std::size_t i = 0; i < set.codes.size(); ++i) {
        QJsonObject object = codeObject(set.valueSet, int(i));
        object.insert(QStringLiteral("kind"), statisticsKindName(set.kinds[i]));
        const QJsonObject cell = cellObject(set.codes[i], isWeighted);
        for (auto member = cell.begin(); member != cell.end(); ++member)
            object.insert(member.key(), member.value());
        m_json.add(object);
    }
    m_json.endList();
    m_json.endObject();
}

void FiguresWriter::addNumbers(const VariableStatistics& figures)
{
    m_json.beginObject(with(with(momentsObject(figures.moments), QStringLiteral("lowest"),
                                textOrNull(figures.lowest)),
                           QStringLiteral("highest"), textOrNull(figures.highest)),
        "numbers");
    m_json.endObject();
    if (figures.isWeighted) {
        m_json.beginObject(momentsObject(figures.weightedMoments), "weightedNumbers");
        m_json.endObject();
    }
    m_json.beginList("histogram");
    for (const StatisticsBin& bin : figures.histogram) {
        m_json.add(
            with(with(cellObject(bin.cell, figures.isWeighted), QStringLiteral("low"), bin.low),
                QStringLiteral("high"), bin.high));
    }
    m_json.endList();
}

void FiguresWriter::addCategories(const char* name, int valueSet)
{
    m_json.beginList(name);
    const int count = m_dictionary.valueSets[std::size_t(valueSet)].codes.size();
    for (int i = 0; i < count; ++i)
        m_json.add(codeObject(valueSet, i));
    m_json.endList();
}

// Line -1 is that of the totals; each line ends with its total.
void FiguresWriter::addCells(const char* name, const CrossTable& cross, int line)
{
    m_json.beginList(name);
    for (int column = 0; column < cross.columnCount; ++column) {
        const StatisticsCell& cell =
            line < 0 ? cross.columnTotals[std::size_t(column)] : cross.cell(line, column);
        m_json.add(cellObject(cell, cross.isWeighted));
    }
    m_json.add(
        cellObject(line < 0 ? cross.total : cross.lineTotals[std::size_t(line)], cross.isWeighted));
    m_json.endList();
}

void FiguresWriter::addCross(const CrossTable& cross)
{
    m_json.beginObject({ { QStringLiteral("first"), variable(cross.first).name },
        { QStringLiteral("second"), variable(cross.second).name },
        { QStringLiteral("record"), recordName(cross.record) },
        { QStringLiteral("isWeighted"), cross.isWeighted } });
    addCategories("lines", cross.firstValueSet);
    addCategories("columns", cross.secondValueSet);
    m_json.beginList("cells");
    for (int line = 0; line < cross.lineCount; ++line) {
        m_json.beginObject({});
        addCells("line", cross, line);
        m_json.endObject();
    }
    m_json.endList();
    addCells("totals", cross, -1);
    m_json.endObject();
}

} // namespace

void writeFigures(const DataFigures& figures, const ByteSink& sink)
{
    FiguresWriter(figures, sink).write();
}
