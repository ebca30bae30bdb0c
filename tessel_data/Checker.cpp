#include <tessel_data/Checker.h>

#include <tessel_data/CaseChecker_p.h>
#include <tessel_data/ColumnCounter_p.h>

#include <algorithm>
#include <cmath>

namespace tessel {

namespace {

// Different values that are kept of all columns together; bounds the memory.
constexpr std::size_t MostDistinct = 1'000'000;

constexpr const char* kindNames[] = { "unknown-record-type", "ends-in-identification",
    "id-not-a-number", "too-long-line", "damaged-record", "text-beyond-record",
    "control-characters", "other-encoding", "not-utf-8", "not-in-dictionary", "too-wide-value",
    "key-differs", "special-without-code", "file-changed", "blank-id-item", "blank-identification",
    "not-a-number", "unfit-number", "out-of-range", "outside-value-set", "missing-record",
    "too-many-records", "level-without-parent", "duplicate-case", "scattered-case",
    "partly-saved-case" };
static_assert(sizeof(kindNames) / sizeof(kindNames[0]) == ProblemKindCount);

#define TESSEL_SAME_PLACE(name)                                                                    \
    static_assert(problemKindOf(LineProblem::name) == ProblemKind::name, #name)
TESSEL_SAME_PLACE(UnknownRecordType);
TESSEL_SAME_PLACE(EndsInIdentification);
TESSEL_SAME_PLACE(IdNotANumber);
TESSEL_SAME_PLACE(EndlessLine);
TESSEL_SAME_PLACE(DamagedRecord);
TESSEL_SAME_PLACE(TextBeyondRecord);
TESSEL_SAME_PLACE(ControlCharacters);
TESSEL_SAME_PLACE(OtherEncoding);
TESSEL_SAME_PLACE(NotUtf8);
TESSEL_SAME_PLACE(NotInDictionary);
TESSEL_SAME_PLACE(TooWideValue);
TESSEL_SAME_PLACE(KeyDiffers);
TESSEL_SAME_PLACE(SpecialWithoutCode);
#undef TESSEL_SAME_PLACE

bool isBefore(const DataBatch::Told& told, const DataBatch::Record& record)
{
    return told.file != record.file ? told.file < record.file : told.line < record.line;
}

} // namespace

QString problemKindName(ProblemKind kind)
{
    return QLatin1String(kindNames[int(kind)]);
}

bool isTolerated(ProblemKind kind)
{
    return kind == ProblemKind::OutOfRange || kind == ProblemKind::OutsideValueSet
        || kind == ProblemKind::IdBlank || kind == ProblemKind::SpecialWithoutCode;
}

bool CheckReport::isClean(bool isStrict) const
{
    for (int kind = 0; kind < ProblemKindCount; ++kind) {
        if (problemCounts.at(kind) > 0 && (isStrict || !isTolerated(ProblemKind(kind))))
            return false;
    }
    return addsUp;
}

class Checker::Job {
public:
    Job(const DataDictionary& data, const CheckOptions& checkOptions)
        : dictionary(data)
        , options(checkOptions)
        , counters(std::size_t(data.columnCount()))
        , cases(data, [this](const DataProblem& problem) { tell(problem); })
        , samples(ProblemKindCount)
    {
        const std::size_t columns = std::max<std::size_t>(1, counters.size());
        limits.distinct = std::max<std::size_t>(
            16, std::min(std::size_t(options.distinctLimit), MostDistinct / columns));
        limits.outsideCodes = std::size_t(std::max(1, options.distinctLimit));
        report.recordCounts.resize(dictionary.records.size());
        for (const DataRecord& record : dictionary.records) {
            for (int c = 0; c < record.columns.size(); ++c) {
                counters[std::size_t(record.firstColumn + c)].setWidth(
                    dictionary.variables[std::size_t(record.columns.at(c))].width);
            }
        }
        for (const int id : dictionary.ids)
            caseIdCount += dictionary.variables[std::size_t(id)].level == 1 ? 1 : 0;
    }

    void take(const DataBatch& batch);
    void takeRecord(const DataBatch& batch, const DataBatch::Record& record);
    void takeOtherValue(
        const DataBatch& batch, const DataBatch::Record& record, int column, quint32 cell);
    bool isNameless(const DataBatch& batch, const DataBatch::Record& record) const;
    void tellNameless(const DataBatch::Record& record);
    void takeTold(const DataBatch& batch, const DataBatch::Told& told);
    bool finish(const DataSource& source, const CaseIndex::GoesOn& goesOn);
    void reportColumns();
    // True when a problem of this kind is shown or handed out; others are only counted.
    bool isWanted(ProblemKind kind) const;
    void tell(const DataProblem& problem);
    QString shown(std::string_view text) const;
    QString valueText(const DataBatch& batch, quint32 cell, const DataVariable& variable) const;

    const DataDictionary& dictionary;
    CheckOptions options;
    ColumnCounter::Limits limits;
    std::vector<ColumnCounter> counters; // of the columns of all records
    CaseChecker cases;
    std::vector<std::vector<DataProblem>> samples; // by kind
    qint64 rejected = 0;
    int caseIdCount = 0; // columns of each record that identify the case
    CheckReport report;
};

void Checker::Job::take(const DataBatch& batch)
{
    auto begun = batch.cases.begin();
    auto told = batch.told.begin();
    // A case may have no record but those that were rejected.
    const auto takeNext = [&] {
        for (; begun != batch.cases.end() && begun->number <= told->caseNumber; ++begun)
            cases.beginCase(batch, *begun);
        takeTold(batch, *told++);
    };
    for (std::size_t r = 0; r < batch.records.size(); ++r) {
        const DataBatch::Record& record = batch.records[r];
        while (told != batch.told.end() && isBefore(*told, record))
            takeNext();
        for (; begun != batch.cases.end() && begun->firstRecord <= r; ++begun)
            cases.beginCase(batch, *begun);
        takeRecord(batch, record);
    }
    while (told != batch.told.end())
        takeNext();
    for (; begun != batch.cases.end(); ++begun)
        cases.beginCase(batch, *begun);
}

void Checker::Job::takeRecord(const DataBatch& batch, const DataBatch::Record& record)
{
    const DataRecord& type = dictionary.records[std::size_t(record.record)];
    const int count = type.columns.size();
    ++report.recordCounts[std::size_t(record.record)];
    ColumnCounter* const columns = counters.data() + type.firstColumn;
    const ValueState* const states = batch.states.data() + record.firstCell;
    const qint64* const numbers = batch.numbers.data() + record.firstCell;
    for (int c = 0; c < count; ++c) {
        if (states[c] == ColumnCounter::PlainNumber)
            columns[c].addNumber(numbers[c], limits);
        else
            takeOtherValue(batch, record, c, record.firstCell + quint32(c));
    }
    if (isNameless(batch, record))
        tellNameless(record);
    if (report.hasCases)
        cases.addRecord(batch, record);
}

// True when all the items that identify its case are blank.
bool Checker::Job::isNameless(const DataBatch& batch, const DataBatch::Record& record) const
{
    const ValueState* const states = batch.states.data() + record.firstCell;
    for (int c = 0; c < caseIdCount; ++c) {
        if (states[c].kind() != ValueKind::Blank)
            return false;
    }
    return caseIdCount > 0;
}

void Checker::Job::tellNameless(const DataBatch::Record& record)
{
    DataProblem problem;
    problem.kind = ProblemKind::BlankIdentification;
    problem.file = record.file;
    problem.line = record.line;
    problem.caseNumber = record.caseNumber + 1;
    problem.record = record.record;
    tell(problem);
}

void Checker::Job::takeOtherValue(
    const DataBatch& batch, const DataBatch::Record& record, int column, quint32 cell)
{
    const DataRecord& type = dictionary.records[std::size_t(record.record)];
    counters[std::size_t(type.firstColumn + column)].add(batch, cell, limits);
    const ValueState state = batch.states[cell];
    ProblemKind kind = ProblemKind::NotANumber;
    if (state.isOutside())
        kind = state.isOutOfRange() ? ProblemKind::OutOfRange : ProblemKind::OutsideValueSet;
    else if (state.kind() == ValueKind::Unfit)
        kind = ProblemKind::UnfitNumber;
    else if (state.kind() == ValueKind::Blank && column < type.idCount
        && (column >= caseIdCount || !isNameless(batch, record)))
        kind = ProblemKind::IdBlank;
    else if (state.kind() != ValueKind::NotANumber)
        return;
    if (!isWanted(kind)) {
        ++report.problemCounts[int(kind)];
        return;
    }
    DataProblem problem;
    problem.kind = kind;
    problem.file = record.file;
    problem.line = record.line;
    problem.caseNumber = cases.caseCount();
    problem.caseKey = shown(cases.key());
    problem.record = record.record;
    problem.variable = type.columns.at(column);
    problem.value = valueText(batch, cell, dictionary.variables[std::size_t(problem.variable)]);
    tell(problem);
}

QString Checker::Job::shown(std::string_view text) const
{
    constexpr std::size_t mostBytes = 4; // of a character
    const auto most = std::size_t(std::max(0, options.longestText));
    const auto size = int(std::min(text.size(), most * mostBytes));
    return QString::fromUtf8(text.data(), size).left(options.longestText);
}

QString Checker::Job::valueText(
    const DataBatch& batch, quint32 cell, const DataVariable& variable) const
{
    switch (batch.states[cell].kind()) {
    case ValueKind::Blank:
        return QString();
    case ValueKind::Number:
        return numberText(batch.numbers[cell], variable.decimals);
    case ValueKind::Real:
        return realText(batch.realOf(cell));
    default:
        return shown(batch.textOf(cell));
    }
}

void Checker::Job::takeTold(const DataBatch& batch, const DataBatch::Told& told)
{
    const ProblemKind kind = problemKindOf(told.problem);
    rejected += isRejected(told.problem) ? 1 : 0;
    DataProblem problem;
    problem.kind = kind;
    problem.file = told.file;
    problem.line = told.line;
    problem.variable = told.variable;
    problem.record = told.record;
    if (told.record < 0 && told.variable >= 0)
        problem.record = dictionary.variables[std::size_t(told.variable)].record;
    if (told.caseNumber >= 0 && told.caseNumber == cases.caseCount() - 1)
        problem.caseKey = shown(cases.key());
    else if (told.key.size > 0)
        problem.caseKey = shown(batch.text(told.key));
    if (told.caseNumber >= 0)
        problem.caseNumber = told.caseNumber + 1;
    problem.value = shown(batch.text(told.text));
    tell(problem);
}

bool Checker::Job::isWanted(ProblemKind kind) const
{
    return options.onProblem || int(samples[std::size_t(kind)].size()) < options.samplesPerKind;
}

void Checker::Job::tell(const DataProblem& problem)
{
    ++report.problemCounts[int(problem.kind)];
    std::vector<DataProblem>& shownOnes = samples[std::size_t(problem.kind)];
    if (int(shownOnes.size()) < options.samplesPerKind)
        shownOnes.push_back(problem);
    if (options.onProblem)
        options.onProblem(problem);
}

bool Checker::Job::finish(const DataSource& source, const CaseIndex::GoesOn& goesOn)
{
    if (!cases.finish(goesOn))
        return false;
    report.files = source.files();
    report.hasCases = source.hasCases();
    for (std::size_t i = 0; i < report.files.size(); ++i) {
        if (!report.files[i].changedWhileRead)
            continue;
        DataProblem changed;
        changed.kind = ProblemKind::FileChanged;
        changed.file = int(i);
        tell(changed);
    }
    report.counts = source.counts();
    qint64 records = 0;
    for (const qint64 count : report.recordCounts)
        records += count;
    report.addsUp = report.counts.addUp() && records == report.counts.records
        && rejected == report.counts.rejectedLines
        && (!report.hasCases || cases.caseCount() == report.counts.cases);
    reportColumns();
    for (const std::vector<DataProblem>& ofKind : samples)
        report.samples.insert(report.samples.end(), ofKind.begin(), ofKind.end());
    return true;
}

void Checker::Job::reportColumns()
{
    for (std::size_t r = 0; r < dictionary.records.size(); ++r) {
        const DataRecord& record = dictionary.records[r];
        for (int c = 0; c < record.columns.size(); ++c) {
            ColumnReport column = counters[std::size_t(record.firstColumn + c)].report(
                dictionary.variable(int(r), c), options.shownOutsideCodes, limits);
            column.record = int(r);
            column.variable = record.columns.at(c);
            report.addsUp = report.addsUp && column.rows == report.recordCounts[r];
            report.columns.push_back(std::move(column));
        }
    }
}

Checker::Checker(const DataDictionary& dictionary, const CheckOptions& options)
    : m_job(std::make_unique<Job>(dictionary, options))
{
}

Checker::~Checker() = default;

void Checker::take(const DataBatch& batch)
{
    m_job->take(batch);
}

void Checker::finish(const DataSource& source)
{
    m_job->finish(source, {});
}

bool Checker::finishWhile(const DataSource& source, const std::function<bool()>& goesOn)
{
    return m_job->finish(source, goesOn);
}

const CheckReport& Checker::report() const
{
    return m_job->report;
}

} // namespace tessel
