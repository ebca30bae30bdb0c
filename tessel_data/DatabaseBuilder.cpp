#include <tessel_data/DatabaseBuilder.h>

#include <tessel_data/CaseContent_p.h>
#include <tessel_data/DataError.h>
#include <tessel_data/FileDigests_p.h>
#include <tessel_data/RowWriter_p.h>

#include <QDateTime>
#include <QFileInfo>

#include <algorithm>
#include <limits>
#include <set>
#include <tuple>

namespace tessel {

namespace {

using Role = DatabaseColumn::Role;

QString nameOf(Special special)
{
    switch (special) {
    case Special::Missing:
        return QStringLiteral("missing");
    case Special::NotApplicable:
        return QStringLiteral("not-applicable");
    case Special::Refused:
        return QStringLiteral("refused");
    case Special::Default:
        return QStringLiteral("default");
    case Special::None:
        break;
    }
    return QString();
}

QString nameOf(DataVariable::Type type)
{
    switch (type) {
    case DataVariable::Type::Number:
    case DataVariable::Type::Real:
        return QStringLiteral("number");
    case DataVariable::Type::Text:
        return QStringLiteral("text");
    case DataVariable::Type::Binary:
        break;
    }
    return QStringLiteral("binary");
}

// Tells whether a file is one that was read before; null for what is read only once, as a pipe.
QString absolutePath(const QString& path)
{
    const QFileInfo file(path);
    return file.isFile() ? file.canonicalFilePath() : QString();
}

QString now()
{
    return QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
}

} // namespace

class DatabaseBuilder::Job {
public:
    Job(const DataSource& source, DatabaseTarget& databaseTarget, const BuildOptions& buildOptions)
        : dictionary(source.dictionary())
        , target(databaseTarget)
        , options(buildOptions)
        , plan(dictionary, planOptions(source, databaseTarget, buildOptions))
        , checker(dictionary, checkOptions())
        , cases(target, plan, SystemTable::cases, report.rows)
        , problems(target, plan, SystemTable::problems, report.rows)
        , rejects(target, plan, SystemTable::rejects, report.rows)
        , missing(target, plan, SystemTable::missing, report.rows)
        , deleted(target, plan, SystemTable::deleted, report.rows)
        , content(dictionary)
        , rows(plan.tables.size())
        , counts(dictionary.records.size())
        , started(now())
        , digests(source.files())
        , knowsPartlySaved(source.knowsPartlySaved())
    {
        report.rows.resize(plan.tables.size());
        for (int record = 0; record < int(dictionary.records.size()); ++record)
            tablesOf.push_back(plan.tablesOf(record));
        for (const int id : dictionary.ids)
            caseIds += dictionary.variables[std::size_t(id)].level == 1 ? 1 : 0;
        target.begin(plan);
        addValueTables();
    }

    void take(const DataBatch& batch);
    bool finish(const DataSource& source, const std::function<bool()>& goesOn);

    const DataDictionary& dictionary;
    DatabaseTarget& target;
    const BuildOptions options;
    DatabasePlan plan;
    BuildReport report;

private:
    struct OpenCase {
        bool isOpen = false;
        qint64 number = 0;
        int file = 0;
        qint64 line = 0;
        bool isPartlySaved = false;
        QByteArray uuid;
        QByteArray key;
        bool hasIds = false;
        std::vector<OwnValue> ids;
        qint64 records = 0;
    };

    static PlanOptions planOptions(
        const DataSource& source, const DatabaseTarget& target, const BuildOptions& options);
    CheckOptions checkOptions();
    void addValueTables();
    void addEntry(
        RowWriter& writer, const DatabaseValueTable& table, const DatabaseValueTable::Entry& entry);
    void takeRecord(const DataBatch& batch, const DataBatch::Record& record);
    void addOccurrences(int table, const DataBatch& batch, const DatabaseRows::Row& row);
    void addMissing(int table, const DataBatch& batch, const DatabaseRows::Row& row);
    void keepIds(const DataBatch& batch, const DataBatch::Record& record);
    void beginCase(const DataBatch& batch, const DataBatch::Case& begun);
    void endCase();
    std::vector<OwnValue> idsOfKey(const QByteArray& caseKey) const;
    void addDeleted(const DataBatch& batch);
    void addProblem(const DataProblem& problem);
    void addRejects(const DataBatch& batch);
    void addNullCharacters(const DataBatch& batch);
    using Place = std::tuple<int, qint64, qint64, int>; // file, line, case, variable
    void addNullCharacters(
        const DataBatch& batch, const DataBatch::Record& record, const std::set<Place>& places);
    void addRecords();
    void addVariables();
    void addValues();
    void addCodes(RowWriter& writer, const DataValueSet& set, int table);
    void addSources(const DataSource& source);
    void addBuild(const SourceCounts& read);
    static void checkUnchanged(const DataSource& source);
    void checkCounts(const SourceCounts& read) const;
    qint64 rowsOfRecords() const;

    Checker checker;
    RowWriter cases;
    RowWriter problems;
    RowWriter rejects;
    RowWriter missing;
    RowWriter deleted;
    CaseContent content;
    std::vector<std::vector<DatabaseRows::Row>> rows; // of the batch, by table
    std::vector<QVector<int>> tablesOf; // by record
    std::vector<qint64> counts; // of the current case, by record
    qint64 countedCase = -1;
    OpenCase openCase;
    int caseIds = 0;
    std::vector<qint64> recordRows = std::vector<qint64>(dictionary.records.size());
    QString started;
    FileDigests digests;
    bool knowsPartlySaved;
};

PlanOptions DatabaseBuilder::Job::planOptions(
    const DataSource& source, const DatabaseTarget& target, const BuildOptions& options)
{
    PlanOptions chosen = options.plan;
    chosen.dialect = target.dialect();
    chosen.hasCases = source.hasCases();
    chosen.hasWidths = source.hasWidths();
    return chosen;
}

CheckOptions DatabaseBuilder::Job::checkOptions()
{
    CheckOptions chosen;
    chosen.longestText = std::numeric_limits<int>::max();
    chosen.onProblem = [this](const DataProblem& problem) { addProblem(problem); };
    return chosen;
}

void DatabaseBuilder::Job::addValueTables()
{
    for (const DatabaseValueTable& table : plan.valueTables) {
        RowWriter writer(target, plan, plan.tables[std::size_t(table.table)].name, report.rows);
        for (const DatabaseValueTable::Entry& entry : table.entries)
            addEntry(writer, table, entry);
        writer.flush();
    }
}

void DatabaseBuilder::Job::addEntry(
    RowWriter& writer, const DatabaseValueTable& table, const DatabaseValueTable::Entry& entry)
{
    using Type = DatabaseColumn::Type;
    const auto add = [&](qint64 number, double real) {
        if (entry.isBlank)
            writer.null();
        else if (table.type == Type::Text)
            writer.text(entry.text);
        else if (table.type == Type::Real)
            writer.real(real);
        else
            writer.number(number);
    };
    add(entry.low, entry.lowReal);
    if (table.hasRanges)
        add(entry.high, entry.highReal);
    for (const QString& label : entry.labels)
        writer.text(label);
    writer.textOrNull(nameOf(entry.special));
    writer.endRow();
}

void DatabaseBuilder::Job::take(const DataBatch& batch)
{
    checker.take(batch);
    auto begun = batch.cases.begin();
    for (std::size_t r = 0; r < batch.records.size(); ++r) {
        for (; begun != batch.cases.end() && begun->firstRecord <= r; ++begun)
            beginCase(batch, *begun);
        takeRecord(batch, batch.records[r]);
    }
    for (; begun != batch.cases.end(); ++begun)
        beginCase(batch, *begun);
    for (std::size_t t = 0; t < rows.size(); ++t) {
        report.rows[t] += target.append(int(t), DatabaseRows(plan.tables[t], batch, rows[t]));
        rows[t].clear();
    }
    addRejects(batch);
    if (!target.holdsNullCharacters() && batch.bytes.find('\0') != std::string::npos)
        addNullCharacters(batch);
    addDeleted(batch);
}

void DatabaseBuilder::Job::takeRecord(const DataBatch& batch, const DataBatch::Record& record)
{
    const auto type = std::size_t(record.record);
    ++recordRows[type];
    if (plan.hasCases && countedCase != record.caseNumber) {
        std::fill(counts.begin(), counts.end(), 0);
        countedCase = record.caseNumber;
    }
    const DatabaseRows::Row row { record.firstCell, 0, record.caseNumber + 1,
        plan.hasCases ? ++counts[type] : record.line };
    for (const int table : qAsConst(tablesOf[type])) {
        if (plan.tables[std::size_t(table)].kind == DatabaseTable::Kind::Repeat)
            addOccurrences(table, batch, row);
        else
            rows[std::size_t(table)].push_back(row);
        if (plan.hasMissingKinds)
            addMissing(table, batch, row);
    }
    if (plan.hasCases)
        content.add(batch, record, row.number);
    ++openCase.records;
    if (openCase.isOpen && !openCase.hasIds)
        keepIds(batch, record);
}

// An occurrence that is blank has no row.
void DatabaseBuilder::Job::addOccurrences(
    int table, const DataBatch& batch, const DatabaseRows::Row& row)
{
    const DatabaseTable& definition = plan.tables[std::size_t(table)];
    for (std::size_t occurrence = 0; occurrence < definition.cells.size(); ++occurrence) {
        const QVector<int>& cells = definition.cells[occurrence];
        const bool isThere = std::any_of(cells.begin(), cells.end(), [&](int cell) {
            return cell >= 0
                && batch.states[row.firstCell + quint32(cell)].kind() != ValueKind::Blank;
        });
        if (!isThere)
            continue;
        DatabaseRows::Row repeated = row;
        repeated.occurrence = int(occurrence);
        rows[std::size_t(table)].push_back(repeated);
    }
}

void DatabaseBuilder::Job::addMissing(
    int table, const DataBatch& batch, const DatabaseRows::Row& row)
{
    const DatabaseTable& definition = plan.tables[std::size_t(table)];
    const QVector<int>& cells = definition.cells.front();
    for (int c = 0; c < cells.size(); ++c) {
        const char kind =
            cells.at(c) < 0 ? '\0' : batch.missingKind(row.firstCell + quint32(cells.at(c)));
        if (kind == '\0')
            continue;
        const char text[] { '.', kind };
        missing.text(definition.name);
        missing.text(definition.columns.at(c).name);
        missing.number(row.number);
        missing.text(std::string_view(text, sizeof text));
        missing.endRow();
    }
}

void DatabaseBuilder::Job::keepIds(const DataBatch& batch, const DataBatch::Record& record)
{
    openCase.hasIds = true;
    for (int c = 0; c < caseIds; ++c)
        openCase.ids.push_back(OwnValue::of(batch, record.firstCell + quint32(c)));
}

void DatabaseBuilder::Job::beginCase(const DataBatch& batch, const DataBatch::Case& begun)
{
    const auto bytes = [&](TextRef ref) {
        const std::string_view text = batch.text(ref);
        return QByteArray(text.data(), int(text.size()));
    };
    endCase();
    openCase.isOpen = true;
    openCase.hasIds = false;
    openCase.ids.clear();
    openCase.number = begun.number;
    openCase.file = begun.file;
    openCase.line = begun.line;
    openCase.isPartlySaved = begun.isPartlySaved;
    openCase.uuid = bytes(begun.uuid);
    openCase.key = bytes(begun.key);
    openCase.records = 0;
    content.begin(openCase.isPartlySaved, batch.text(begun.key));
}

void DatabaseBuilder::Job::endCase()
{
    if (!openCase.isOpen)
        return;
    openCase.isOpen = false;
    cases.number(openCase.file + 1);
    cases.number(openCase.line);
    cases.textOrNull(openCase.uuid);
    cases.number(openCase.records);
    if (knowsPartlySaved)
        cases.number(openCase.isPartlySaved ? 1 : 0);
    else
        cases.null();
    cases.null();
    cases.number(content.value());
    if (!openCase.hasIds)
        openCase.ids = idsOfKey(openCase.key);
    for (const OwnValue& value : openCase.ids)
        cases.value(value);
    cases.endRow(openCase.number + 1);
    ++report.cases;
}

// A case without records has its identification in its key only.
std::vector<OwnValue> DatabaseBuilder::Job::idsOfKey(const QByteArray& caseKey) const
{
    std::vector<OwnValue> ids;
    const QString key = QString::fromUtf8(caseKey);
    int start = 0;
    for (int i = 0; i < caseIds; ++i) {
        const DataVariable& variable = dictionary.variables[std::size_t(dictionary.ids.at(i))];
        const QByteArray text = key.mid(start, variable.width).toUtf8();
        ids.push_back(OwnValue::read(text, variable));
        start += variable.width;
    }
    return ids;
}

void DatabaseBuilder::Job::addDeleted(const DataBatch& batch)
{
    if (plan.addition == Addition::None)
        return;
    for (const DataBatch::Deleted& one : batch.deleted) {
        const std::string_view key = batch.text(one.key);
        deleted.textOrNull(batch.text(one.uuid));
        for (const OwnValue& value : idsOfKey(QByteArray(key.data(), int(key.size()))))
            deleted.value(value);
        deleted.endRow();
    }
}

void DatabaseBuilder::Job::addProblem(const DataProblem& problem)
{
    ++report.problems;
    problems.text(problemKindName(problem.kind));
    problems.number(problem.file + 1);
    problems.numberOrNull(problem.line);
    problems.numberOrNull(problem.caseNumber);
    problems.textOrNull(problem.caseKey);
    problems.textOrNull(
        problem.record < 0 ? QString() : dictionary.records[std::size_t(problem.record)].name);
    problems.textOrNull(problem.variable < 0
            ? QString()
            : dictionary.variables[std::size_t(problem.variable)].name);
    problems.textOrNull(problem.value);
    problems.numberOrNull(problem.otherFile + 1);
    problems.numberOrNull(problem.otherLine);
    problems.numberOrNull(problem.otherCase);
    problems.endRow();
    if (plan.hasCases && problem.otherCase > 0) {
        cases.flush();
        target.markDuplicate(problem.caseNumber, problem.otherCase);
    }
}

void DatabaseBuilder::Job::addRejects(const DataBatch& batch)
{
    for (const DataBatch::Told& told : batch.told) {
        if (!isRejected(told.problem))
            continue;
        rejects.number(told.file + 1);
        rejects.numberOrNull(told.line);
        rejects.text(problemKindName(problemKindOf(told.problem)));
        rejects.text(batch.text(told.text));
        rejects.number(told.problem == LineProblem::EndlessLine ? 0 : 1);
        rejects.endRow();
        ++report.rejects;
    }
}

// The target replaces them by their picture; what is changed so is told.
void DatabaseBuilder::Job::addNullCharacters(const DataBatch& batch)
{
    std::set<Place> places; // told of by the source, as characters that no text should have
    for (const DataBatch::Told& odd : batch.told) {
        if (odd.problem == LineProblem::ControlCharacters)
            places.emplace(odd.file, odd.line, odd.caseNumber, odd.variable);
    }
    for (const DataBatch::Record& record : batch.records)
        addNullCharacters(batch, record, places);
    for (const DataBatch::Told& told : batch.told) {
        if (!isRejected(told.problem) || batch.text(told.text).find('\0') == std::string_view::npos)
            continue;
        DataProblem problem;
        problem.kind = ProblemKind::ControlCharacters;
        problem.file = told.file;
        problem.line = told.line;
        addProblem(problem);
        ++report.nullCharacters;
    }
}

void DatabaseBuilder::Job::addNullCharacters(
    const DataBatch& batch, const DataBatch::Record& record, const std::set<Place>& places)
{
    const QVector<int>& columns = dictionary.records[std::size_t(record.record)].columns;
    for (int c = 0; c < columns.size(); ++c) {
        const quint32 cell = record.firstCell + quint32(c);
        if (batch.states[cell].kind() != ValueKind::Text)
            continue;
        const std::string_view text = batch.textOf(cell);
        if (text.find('\0') == std::string_view::npos)
            continue;
        ++report.nullCharacters;
        if (places.count({ record.file, record.line, record.caseNumber, columns.at(c) }) != 0)
            continue;
        DataProblem problem;
        problem.kind = ProblemKind::ControlCharacters;
        problem.file = record.file;
        problem.line = record.line;
        problem.caseNumber = record.caseNumber + 1;
        problem.record = record.record;
        problem.variable = columns.at(c);
        problem.value = QString::fromUtf8(text.data(), int(text.size()));
        addProblem(problem);
    }
}

bool DatabaseBuilder::Job::finish(const DataSource& source, const std::function<bool()>& goesOn)
{
    endCase();
    cases.flush();
    if (!checker.finishWhile(source, goesOn))
        return false;
    report.check = checker.report();
    checkUnchanged(source);
    problems.flush();
    rejects.flush();
    missing.flush();
    deleted.flush();
    const SourceCounts read = source.counts();
    checkCounts(read);
    addRecords();
    addVariables();
    addValues();
    addSources(source);
    addBuild(read);
    return true;
}

// A file that another program wrote to may have been read half.
void DatabaseBuilder::Job::checkUnchanged(const DataSource& source)
{
    for (const SourceFile& file : source.files()) {
        if (file.changedWhileRead) {
            throw DataError(DataError::Code::Busy, file.path,
                QStringLiteral("changed while it was read, so no database is made of it; wait "
                               "until no other program writes to it and build again"));
        }
    }
}

qint64 DatabaseBuilder::Job::rowsOfRecords() const
{
    qint64 sum = 0;
    for (const auto& tables : tablesOf)
        sum += report.rows[std::size_t(tables.first())];
    return sum;
}

void DatabaseBuilder::Job::checkCounts(const SourceCounts& read) const
{
    bool addsUp = report.check.addsUp && read.addUp() && rowsOfRecords() == read.records
        && report.rejects == read.rejectedLines
        && report.rows[std::size_t(plan.table(SystemTable::rejects))] == read.rejectedLines;
    if (plan.hasCases) {
        const int table = plan.table(SystemTable::cases);
        addsUp =
            addsUp && report.cases == read.cases && report.rows[std::size_t(table)] == read.cases;
    }
    for (std::size_t record = 0; record < tablesOf.size(); ++record) {
        for (const int table : tablesOf[record]) {
            if (plan.tables[std::size_t(table)].kind == DatabaseTable::Kind::Record)
                addsUp = addsUp && report.rows[std::size_t(table)] == recordRows[record];
        }
    }
    if (!addsUp) {
        throw DataError(DataError::Code::DoesNotAddUp, target.name(),
            QStringLiteral("is not made: %1 lines were read, but %2 rows, %3 rejected, %4 deleted "
                           "and %5 blank lines arrived and %6 were left out; this is an error of "
                           "the program")
                .arg(read.lines)
                .arg(rowsOfRecords())
                .arg(report.rejects)
                .arg(read.deletedLines)
                .arg(read.blankLines)
                .arg(read.leftOutLines));
    }
}

void DatabaseBuilder::Job::addRecords()
{
    RowWriter writer(target, plan, SystemTable::records, report.rows);
    for (std::size_t t = 0; t < plan.tables.size(); ++t) {
        const DatabaseTable& table = plan.tables[t];
        if (table.record < 0)
            continue;
        const DataRecord& record = dictionary.records[std::size_t(table.record)];
        writer.text(table.name);
        writer.text(record.name);
        writer.text(table.label);
        writer.textOrNull(record.typeCode);
        writer.number(record.level);
        writer.number(record.isRequired ? 1 : 0);
        writer.number(record.maximum);
        writer.number(report.rows[t]);
        writer.textOrNull(table.labelView);
        writer.textOrNull(table.validView);
        writer.endRow();
    }
    writer.flush();
}

void DatabaseBuilder::Job::addVariables()
{
    RowWriter writer(target, plan, SystemTable::variables, report.rows);
    for (const DatabaseTable& table : plan.tables) {
        for (int c = 0; c < table.columns.size(); ++c) {
            const DatabaseColumn& column = table.columns.at(c);
            if (column.variable < 0 || table.kind == DatabaseTable::Kind::Deleted)
                continue;
            const DataVariable& variable = dictionary.variables[std::size_t(column.variable)];
            writer.text(table.name);
            writer.text(column.name);
            writer.number(c + 1);
            writer.textOrNull(
                table.record < 0 ? QString() : dictionary.records[std::size_t(table.record)].name);
            writer.text(variable.name);
            writer.text(variable.itemName);
            writer.text(column.label);
            writer.text(nameOf(variable.type));
            writer.number(variable.width);
            writer.number(variable.decimals);
            writer.number(variable.level);
            writer.number(column.isId ? 1 : 0);
            writer.numberOrNull(variable.occurrence);
            writer.textOrNull(variable.valueSets.isEmpty()
                    ? QString()
                    : dictionary.valueSets[std::size_t(variable.valueSets.first())].name);
            writer.textOrNull(column.valueTable < 0
                    ? QString()
                    : plan.tables[std::size_t(
                                      plan.valueTables[std::size_t(column.valueTable)].table)]
                          .name);
            writer.endRow();
        }
    }
    writer.flush();
}

// Every set, also one that no variable with a table of its own has; as often as it has tables.
void DatabaseBuilder::Job::addValues()
{
    std::vector<QVector<int>> tablesOfSet(dictionary.valueSets.size());
    for (const DatabaseValueTable& table : plan.valueTables) {
        for (const int set : table.sets)
            tablesOfSet[std::size_t(set)].append(table.table);
    }
    RowWriter writer(target, plan, SystemTable::values, report.rows);
    for (std::size_t set = 0; set < tablesOfSet.size(); ++set) {
        if (tablesOfSet[set].isEmpty())
            addCodes(writer, dictionary.valueSets[set], -1);
        for (const int table : qAsConst(tablesOfSet[set]))
            addCodes(writer, dictionary.valueSets[set], table);
    }
    writer.flush();
}

void DatabaseBuilder::Job::addCodes(RowWriter& writer, const DataValueSet& set, int table)
{
    const QVector<int> languages =
        options.plan.languages.isEmpty() ? QVector<int> { 0 } : options.plan.languages;
    const QVector<int> further = languages.mid(1);
    for (int position = 0; position < set.codes.size(); ++position) {
        const DataCode& code = set.codes.at(position);
        writer.text(set.name);
        writer.text(dictionary.labelText(set.label, languages.first()));
        writer.textOrNull(table < 0 ? QString() : plan.tables[std::size_t(table)].name);
        writer.number(position + 1);
        writer.text(code.code);
        writer.textOrNull(code.highCode);
        writer.text(dictionary.labelText(code.label, languages.first()));
        writer.textOrNull(nameOf(code.special));
        for (const int language : further)
            writer.text(dictionary.labelText(code.label, language));
        writer.endRow();
    }
}

void DatabaseBuilder::Job::addSources(const DataSource& source)
{
    RowWriter writer(target, plan, SystemTable::sources, report.rows);
    int number = 0;
    for (const SourceFile& file : source.files()) {
        writer.number(++number);
        writer.number(1);
        writer.text(file.path);
        writer.textOrNull(absolutePath(file.path));
        writer.number(file.bytes);
        writer.textOrNull(digests.wait().at(number - 1));
        writer.textOrNull(file.encoding);
        const SourceCounts& read = file.counts;
        for (const qint64 count : { read.lines, read.records, read.deletedLines, read.blankLines,
                 read.rejectedLines, read.leftOutLines, read.casesRead, read.cases,
                 read.deletedCases, read.partlySavedCases, read.leftOutCases })
            writer.number(count);
        writer.textOrNull(options.dictionaryText);
        writer.endRow();
    }
    writer.flush();
}

void DatabaseBuilder::Job::addBuild(const SourceCounts& read)
{
    RowWriter writer(target, plan, SystemTable::builds, report.rows);
    writer.number(1);
    writer.number(DatabaseForm);
    writer.text(started);
    writer.text(now());
    writer.textOrNull(options.version);
    writer.textOrNull(options.options);
    for (const qint64 count : { read.lines, read.records, read.rejectedLines, read.deletedLines,
             read.blankLines, read.leftOutLines, read.cases, read.deletedCases, read.leftOutCases,
             read.cases, qint64(0), qint64(0), qint64(0), report.problems })
        writer.number(count);
    writer.endRow();
    writer.flush();
}

DatabaseBuilder::DatabaseBuilder(
    const DataSource& source, DatabaseTarget& target, const BuildOptions& options)
    : m_job(std::make_unique<Job>(source, target, options))
{
}

DatabaseBuilder::~DatabaseBuilder() = default;

void DatabaseBuilder::take(const DataBatch& batch)
{
    m_job->take(batch);
}

void DatabaseBuilder::finish(const DataSource& source)
{
    m_job->finish(source, {});
}

bool DatabaseBuilder::finishWhile(const DataSource& source, const std::function<bool()>& goesOn)
{
    return m_job->finish(source, goesOn);
}

const DatabasePlan& DatabaseBuilder::plan() const
{
    return m_job->plan;
}

const BuildReport& DatabaseBuilder::report() const
{
    return m_job->report;
}

bool buildDatabase(DataSource& source, DatabaseTarget& target, const BuildOptions& options,
    BuildReport& report, const DataProgress& progress)
{
    try {
        DatabaseBuilder builder(source, target, options);
        if (!runPipeline(source, builder, progress)) {
            target.abandon();
            return false;
        }
        report = builder.report();
        const qint64 size = source.size();
        const bool isDone = target.finish([&] { return !progress || progress(size, size); });
        report.changes = target.changes();
        return isDone;
    } catch (...) {
        target.abandon();
        throw;
    }
}

} // namespace tessel
