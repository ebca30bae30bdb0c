#include "checking/CheckWriters.h"

#include "checking/ProblemTexts.h"
#include "text/CsvText.h"
#include "text/JsonWriter.h"
#include "text/ShownText.h"
#include "text/TextTable.h"

#include <tessel_data/DataSource.h>

#include <algorithm>

using tessel::CheckReport;
using tessel::ColumnReport;
using tessel::DataDictionary;
using tessel::DataProblem;
using tessel::DataRecord;
using tessel::ProblemKind;
using tessel::SourceCounts;
using tessel::SourceFile;

namespace {

// Changes only when a reader of the JSON has to change.
constexpr int JsonVersion = 1;

constexpr int MeanDigits = 6;

using Align = TextTable::Align;

// Numbers of a column report that every form has, by their names in CSV; in JSON "_n" is "N".
struct Statistic {
    const char* name;
    const char* heading;
    qint64 ColumnReport::*count;
};

constexpr Statistic statistics[] = {
    { "values", "Values", &ColumnReport::values },
    { "blank", "Blank", &ColumnReport::blank },
    { "missing", "Missing", &ColumnReport::missing },
    { "not_applicable", "N/A", &ColumnReport::notApplicable },
    { "refused", "Refused", &ColumnReport::refused },
    { "default", "Default", &ColumnReport::defaults },
    { "not_a_number", "No number", &ColumnReport::notANumber },
    { "unfit", "Unfit", &ColumnReport::unfit },
    { "outside", "Outside", &ColumnReport::outside },
    { "out_of_range", "of range", &ColumnReport::outOfRange },
    { "distinct", "Distinct", &ColumnReport::distinct },
};

struct SourceCount {
    const char* name;
    qint64 SourceCounts::*count;
};

constexpr SourceCount sourceCounts[] = {
    { "lines", &SourceCounts::lines },
    { "records", &SourceCounts::records },
    { "deleted_lines", &SourceCounts::deletedLines },
    { "blank_lines", &SourceCounts::blankLines },
    { "rejected_lines", &SourceCounts::rejectedLines },
    { "cases_read", &SourceCounts::casesRead },
    { "cases", &SourceCounts::cases },
    { "deleted_cases", &SourceCounts::deletedCases },
    { "partly_saved_cases", &SourceCounts::partlySavedCases },
};

const DataRecord& recordOf(const DataDictionary& dictionary, const ColumnReport& column)
{
    return dictionary.records[std::size_t(column.record)];
}

const tessel::DataVariable& variableOf(const DataDictionary& dictionary, const ColumnReport& column)
{
    return dictionary.variables[std::size_t(column.variable)];
}

QString numberOrNothing(qint64 number)
{
    return number == 0 ? QString() : QString::number(number);
}

QString meanText(const ColumnReport& column)
{
    return column.hasNumbers ? QString::number(column.mean, 'g', MeanDigits) : QString();
}

QString lineEndsOf(const SourceFile& file)
{
    QStringList ends;
    if (file.lfLines > 0)
        ends.append(QStringLiteral("LF"));
    if (file.crlfLines > 0)
        ends.append(QStringLiteral("CRLF"));
    if (file.crLines > 0)
        ends.append(QStringLiteral("CR"));
    return ends.join(QStringLiteral(" and "));
}

// ---- table

QVector<TextTable::Column> variableHeadings()
{
    QVector<TextTable::Column> columns { { QStringLiteral("Variable"), Align::Left } };
    for (const Statistic& statistic : statistics)
        columns.append({ QLatin1String(statistic.heading), Align::Right });
    for (const char* heading : { "Min", "Max", "Mean" })
        columns.append({ QLatin1String(heading), Align::Right });
    columns.append({ QString(), Align::Left }); // the last one of a table wraps, as no number may
    return columns;
}

QString countText(const tessel::OutsideCode& outside)
{
    const QString count = QString::number(outside.count);
    return outside.uncertain > 0 ? QLatin1String("at least ") + count : count;
}

// "99 (12), 7 (3), ...": each code and how often it comes.
QString outsideCodes(const ColumnReport& column)
{
    QStringList codes;
    qint64 told = 0;
    for (const tessel::OutsideCode& outside : column.outsideCodes) {
        codes.append(QStringLiteral("%1 (%2)").arg(shownCode(outside.code), countText(outside)));
        told += outside.count;
    }
    if (!column.hasAllOutsideCodes)
        codes.append(QStringLiteral("and too many others to count each"));
    else if (told < column.outside)
        codes.append(QStringLiteral("..."));
    return printable(codes.join(QStringLiteral(", ")));
}

QStringList variableCells(const ColumnReport& column, const QString& name)
{
    QStringList cells { printable(name) };
    for (const Statistic& statistic : statistics)
        cells.append(numberOrNothing(column.*statistic.count));
    if (!column.hasAllDistinct)
        cells.last().prepend(QLatin1Char('>'));
    const bool hasNumbers = column.hasNumbers;
    cells.append(hasNumbers ? column.lowest : QString());
    cells.append(hasNumbers ? column.highest : QString());
    cells.append(meanText(column));
    cells.append(QString());
    return cells;
}

QString variableTable(const CheckReport& report, const DataDictionary& dictionary, int width)
{
    TextTable table(variableHeadings());
    int record = -1;
    for (const ColumnReport& column : report.columns) {
        if (column.record != record) {
            record = column.record;
            table.beginGroup(printable(recordOf(dictionary, column).name) + QLatin1String(": ")
                + plural(report.recordCounts[std::size_t(record)], QStringLiteral("record")));
        }
        table.addRow(variableCells(column, variableOf(dictionary, column).name));
        if (column.outside > 0)
            table.addDetail(QStringLiteral("outside: ") + outsideCodes(column));
    }
    return table.toText(width);
}

// The line alone where there is one file.
QString placeText(const CheckReport& report, const QString& file, qint64 line)
{
    if (report.files.size() > 1)
        return line > 0 ? QStringLiteral("%1:%2").arg(file).arg(line) : file;
    return line > 0 ? QString::number(line) : QString();
}

QStringList problemCells(const CheckReport& report, const ShownProblem& problem)
{
    QString variable = problem.record;
    if (!problem.variable.isNull())
        variable += (variable.isNull() ? QString() : QStringLiteral(".")) + problem.variable;
    QString value = problem.value.isNull() ? QString() : shownCode(problem.value);
    if (!problem.otherFile.isNull())
        value =
            QStringLiteral("first at ") + placeText(report, problem.otherFile, problem.otherLine);
    QStringList cells { placeText(report, problem.file, problem.line), problem.caseKey, variable,
        value };
    for (QString& cell : cells)
        cell = printable(cell);
    return cells;
}

void beginKind(TextTable& table, ProblemKind kind, qint64 count, qint64 shown)
{
    QString title = QStringLiteral("%1: %2").arg(describeKind(kind)).arg(count);
    if (shown < count)
        title += QStringLiteral(", the first %1 of them").arg(shown);
    table.beginGroup(title);
}

QString placeHeading(const CheckOutcome& outcome)
{
    return outcome.source->countsRows() ? QStringLiteral("Row") : QStringLiteral("Line");
}

QString problemTable(const CheckOutcome& outcome, int width)
{
    const CheckReport& report = outcome.report;
    if (report.samples.empty())
        return QString();
    const bool hasOneFile = report.files.size() == 1;
    TextTable table({ hasOneFile ? TextTable::Column { placeHeading(outcome), Align::Right }
                                 : TextTable::Column { QStringLiteral("Place"), Align::Left },
        { QStringLiteral("Case"), Align::Left }, { QStringLiteral("Variable"), Align::Left },
        { QStringLiteral("Value"), Align::Left } });
    for (std::size_t i = 0; i < report.samples.size(); ++i) {
        const DataProblem& problem = report.samples[i];
        if (i == 0 || problem.kind != report.samples[i - 1].kind) {
            const auto shown = std::count_if(report.samples.begin(), report.samples.end(),
                [&](const DataProblem& other) { return other.kind == problem.kind; });
            beginKind(table, problem.kind, report.problemCount(problem.kind), shown);
        }
        table.addRow(problemCells(report, { problem, outcome.source->dictionary(), report.files }));
    }
    return table.toText(width);
}

QString fileLine(const SourceFile& file, bool isText)
{
    QStringList facts { plural(
        file.counts.lines, isText ? QStringLiteral("line") : QStringLiteral("row")) };
    if (!file.encoding.isEmpty()) {
        facts.append(file.encoding
            + (file.hasByteOrderMark ? QStringLiteral(" with a byte-order mark") : QString()));
    }
    const QString ends = lineEndsOf(file);
    if (!ends.isEmpty())
        facts.append(ends);
    return file.path + QLatin1String(": ") + facts.join(QStringLiteral(", "));
}

QString lineSum(const SourceCounts& counts, bool isText)
{
    if (!isText)
        return QStringLiteral("%1 read").arg(plural(counts.lines, QStringLiteral("row")));
    return QStringLiteral("%1 read = %2 + %3 deleted + %4 blank + %5 rejected")
        .arg(plural(counts.lines, QStringLiteral("line")),
            plural(counts.records, QStringLiteral("record")))
        .arg(counts.deletedLines)
        .arg(counts.blankLines)
        .arg(counts.rejectedLines);
}

QString caseSum(const SourceCounts& counts)
{
    return QStringLiteral("%1 read = %2 checked, %3 of them saved before complete, + %4 deleted")
        .arg(plural(counts.casesRead, QStringLiteral("case")))
        .arg(counts.cases)
        .arg(counts.partlySavedCases)
        .arg(counts.deletedCases);
}

QString problemSum(const CheckReport& report, bool isStrict)
{
    qint64 wrong = 0;
    qint64 tolerated = 0;
    for (int kind = 0; kind < tessel::ProblemKindCount; ++kind) {
        const bool isTolerated = !isStrict && tessel::isTolerated(ProblemKind(kind));
        (isTolerated ? tolerated : wrong) += report.problemCounts.at(kind);
    }
    QString text = plural(wrong, QStringLiteral("problem"));
    if (tolerated > 0) {
        text += QStringLiteral("; %1 that only --strict minds")
                    .arg(plural(tolerated, QStringLiteral("value")));
    }
    return text;
}

QString verdict(const CheckOutcome& outcome)
{
    if (!outcome.report.addsUp)
        return QStringLiteral("What was checked is not what was read: this is an error of tessel.");
    if (!outcome.isClean())
        return QStringLiteral("The data do not fit their dictionary.");
    return outcome.report.isClean(true)
        ? QStringLiteral("The data fit their dictionary.")
        : QStringLiteral("The data fit their dictionary, but for what only --strict minds.");
}

QStringList summary(const CheckOutcome& outcome)
{
    const CheckReport& report = outcome.report;
    QStringList lines;
    for (const SourceFile& file : report.files)
        lines.append(fileLine(file, report.hasCases));
    lines.append(lineSum(report.counts, report.hasCases));
    if (report.hasCases)
        lines.append(caseSum(report.counts));
    lines.append(problemSum(report, outcome.isStrict));
    lines.append(verdict(outcome));
    return lines;
}

QByteArray asTable(const CheckOutcome& outcome, int width)
{
    QString text = variableTable(outcome.report, outcome.source->dictionary(), width);
    text += problemTable(outcome, width);
    if (!text.isEmpty())
        text += QLatin1Char('\n');
    const QStringList lines = summary(outcome);
    for (const QString& line : lines)
        text += wrapped(printable(line), width).join(QLatin1Char('\n')) + QLatin1Char('\n');
    return text.toUtf8();
}

// ---- CSV

class CheckCsv {
public:
    CheckCsv(const CheckOutcome& outcome, bool forSpreadsheet, const ByteSink& sink)
        : m_report(outcome.report)
        , m_dictionary(outcome.source->dictionary())
        , m_csv(sink, forSpreadsheet)
    {
    }

    void write();

private:
    void addHead();
    void addCounts(const char* part, const QString& file, const SourceCounts& counts);
    void addVariable(const ColumnReport& column);
    void add(const char* part, const QString& name, const QString& file, const QString& record,
        const QString& variable, const QString& count);
    void add(const char* part, const QString& name, const QString& file, const QString& record,
        const QString& variable, qint64 count)
    {
        add(part, name, file, record, variable, QString::number(count));
    }

    const CheckReport& m_report;
    const DataDictionary& m_dictionary;
    CsvWriter m_csv;
};

QStringList variableColumns()
{
    QStringList names;
    for (const Statistic& statistic : statistics)
        names.append(QLatin1String(statistic.name));
    return names << QStringLiteral("min") << QStringLiteral("max") << QStringLiteral("mean");
}

void CheckCsv::addHead()
{
    m_csv.addLine(
        QStringList { QStringLiteral("part"), QStringLiteral("name"), QStringLiteral("file"),
            QStringLiteral("record"), QStringLiteral("variable"), QStringLiteral("count") }
        + variableColumns());
}

void CheckCsv::add(const char* part, const QString& name, const QString& file,
    const QString& record, const QString& variable, const QString& count)
{
    static const int empty = variableColumns().size();
    QStringList cells { QLatin1String(part), name, file, record, variable, count };
    for (int i = 0; i < empty; ++i)
        cells.append(QString());
    m_csv.addLine(cells);
}

void CheckCsv::addCounts(const char* part, const QString& file, const SourceCounts& counts)
{
    for (const SourceCount& entry : sourceCounts)
        add(part, QLatin1String(entry.name), file, {}, {}, counts.*entry.count);
}

void CheckCsv::addVariable(const ColumnReport& column)
{
    const QString record = recordOf(m_dictionary, column).name;
    const QString variable = variableOf(m_dictionary, column).name;
    QStringList cells { QStringLiteral("variable"), QString(), QString(), record, variable,
        QString::number(column.rows) };
    for (const Statistic& statistic : statistics)
        cells.append(QString::number(column.*statistic.count));
    if (!column.hasAllDistinct)
        cells.last().prepend(QLatin1Char('>'));
    m_csv.addLine(cells << column.lowest << column.highest << meanText(column));
    for (const tessel::OutsideCode& outside : column.outsideCodes)
        add("outside-code", outside.code, {}, record, variable,
            (outside.uncertain > 0 ? QStringLiteral(">=") : QString())
                + QString::number(outside.count));
}

void CheckCsv::write()
{
    addHead();
    addCounts("summary", QString(), m_report.counts);
    for (const SourceFile& file : m_report.files)
        addCounts("file", file.path, file.counts);
    for (int kind = 0; kind < tessel::ProblemKindCount; ++kind) {
        if (m_report.problemCounts.at(kind) > 0)
            add("problem", tessel::problemKindName(ProblemKind(kind)), {}, {}, {},
                m_report.problemCounts.at(kind));
    }
    for (std::size_t r = 0; r < m_dictionary.records.size(); ++r)
        add("record", {}, {}, m_dictionary.records[r].name, {}, m_report.recordCounts[r]);
    for (const ColumnReport& column : m_report.columns)
        addVariable(column);
}

// ---- JSON

// "not_a_number" is notANumber.
QString memberName(const char* name)
{
    QString member;
    bool isRaised = false;
    for (const char* at = name; *at != '\0'; ++at) {
        const QChar letter = QLatin1Char(*at);
        if (letter != QLatin1Char('_'))
            member += isRaised ? letter.toUpper() : letter;
        isRaised = letter == QLatin1Char('_');
    }
    return member;
}

QJsonObject countsObject(const SourceCounts& counts)
{
    QJsonObject object;
    for (const SourceCount& entry : sourceCounts)
        object.insert(memberName(entry.name), counts.*entry.count);
    return object;
}

void addFiles(JsonWriter& json, const CheckReport& report)
{
    json.beginList("files");
    for (const SourceFile& file : report.files) {
        QJsonObject object = countsObject(file.counts);
        object.insert(QStringLiteral("file"), file.path);
        object.insert(QStringLiteral("encoding"), file.encoding);
        object.insert(QStringLiteral("byteOrderMark"), file.hasByteOrderMark);
        object.insert(QStringLiteral("bytes"), file.bytes);
        object.insert(QStringLiteral("lfLines"), file.lfLines);
        object.insert(QStringLiteral("crlfLines"), file.crlfLines);
        object.insert(QStringLiteral("crLines"), file.crLines);
        json.add(object);
    }
    json.endList();
}

void addRecords(JsonWriter& json, const CheckReport& report, const DataDictionary& dictionary)
{
    json.beginList("records");
    for (std::size_t r = 0; r < dictionary.records.size(); ++r) {
        const DataRecord& record = dictionary.records[r];
        json.add({ { QStringLiteral("name"), record.name },
            { QStringLiteral("label"), dictionary.labelText(record.label) },
            { QStringLiteral("level"), record.level },
            { QStringLiteral("records"), report.recordCounts[r] } });
    }
    json.endList();
}

void addVariable(JsonWriter& json, const ColumnReport& column, const DataDictionary& dictionary)
{
    const tessel::DataVariable& variable = variableOf(dictionary, column);
    const bool hasNumbers = column.hasNumbers;
    QJsonObject object { { QStringLiteral("record"), recordOf(dictionary, column).name },
        { QStringLiteral("name"), variable.name },
        { QStringLiteral("label"), dictionary.labelText(variable.label) },
        { QStringLiteral("rows"), column.rows },
        { QStringLiteral("distinctComplete"), column.hasAllDistinct },
        { QStringLiteral("outsideCodesComplete"), column.hasAllOutsideCodes },
        { QStringLiteral("min"), hasNumbers ? QJsonValue(column.lowest) : QJsonValue() },
        { QStringLiteral("max"), hasNumbers ? QJsonValue(column.highest) : QJsonValue() },
        { QStringLiteral("mean"), hasNumbers ? QJsonValue(column.mean) : QJsonValue() } };
    for (const Statistic& statistic : statistics)
        object.insert(memberName(statistic.name), column.*statistic.count);
    json.beginObject(object);
    json.beginList("outsideCodes");
    for (const tessel::OutsideCode& outside : column.outsideCodes) {
        json.add(
            { { QStringLiteral("code"), outside.code }, { QStringLiteral("count"), outside.count },
                { QStringLiteral("uncertain"), outside.uncertain } });
    }
    json.endList();
    json.endObject();
}

void addProblems(JsonWriter& json, const CheckReport& report)
{
    json.beginList("problems");
    for (int kind = 0; kind < tessel::ProblemKindCount; ++kind) {
        if (report.problemCounts.at(kind) == 0)
            continue;
        json.add({ { QStringLiteral("kind"), tessel::problemKindName(ProblemKind(kind)) },
            { QStringLiteral("count"), report.problemCounts.at(kind) },
            { QStringLiteral("strictOnly"), tessel::isTolerated(ProblemKind(kind)) } });
    }
    json.endList();
}

void writeJson(const CheckOutcome& outcome, const ByteSink& sink)
{
    const CheckReport& report = outcome.report;
    const DataDictionary& dictionary = outcome.source->dictionary();
    JsonWriter json(sink);
    json.beginObject({ { QStringLiteral("tesselCheck"), JsonVersion },
        { QStringLiteral("clean"), outcome.isClean() },
        { QStringLiteral("strict"), outcome.isStrict },
        { QStringLiteral("dictionary"), dictionary.name } });
    json.beginObject(countsObject(report.counts), "counts");
    json.endObject();
    addFiles(json, report);
    addProblems(json, report);
    json.beginList("samples");
    for (const DataProblem& problem : report.samples)
        json.beginText() += ShownProblem(problem, dictionary, report.files).json();
    json.endList();
    addRecords(json, report, dictionary);
    json.beginList("variables");
    for (const ColumnReport& column : report.columns)
        addVariable(json, column, dictionary);
    json.endList();
    json.endObject();
    json.finish();
}

} // namespace

void writeCheck(const CheckOutcome& outcome, const ListingFormat& format, const ByteSink& sink)
{
    switch (format.kind) {
    case ListingFormat::Kind::Csv:
        return CheckCsv(outcome, format.forSpreadsheet, sink).write();
    case ListingFormat::Kind::Json:
        return writeJson(outcome, sink);
    case ListingFormat::Kind::Table:
        return sink(asTable(outcome, format.width));
    }
}
