#include <tessel_data/SelectedSource.h>

#include <tessel_data/CaseFilter.h>

#include <algorithm>
#include <utility>

namespace tessel {

class SelectedSource::Job : public BatchSink {
public:
    Job(std::unique_ptr<DataSource> dataSource, const DataSelection& selection)
        : source(std::move(dataSource))
        , columns(selection.columns(source->dictionary()))
        , dictionary(selectedDictionary(source->dictionary(), columns))
        , filter(source->dictionary(), selection, source->hasCases())
        , hasCases(source->hasCases())
        , files(source->files())
        , leftOut(files.size())
    {
        int taken = 0;
        for (const SelectedColumns& record : qAsConst(columns))
            recordNumbers.push_back(record.isTaken ? taken++ : -1);
    }

    DataBatch& batch() override
    {
        return sink->batch();
    }
    // Also what is empty goes on: the consumer tells progress and may cancel.
    bool deliver() override
    {
        select(sink->batch());
        return sink->deliver();
    }
    bool goesOn() override
    {
        return sink->goesOn();
    }
    void countFiles();

    std::unique_ptr<DataSource> source;
    QVector<SelectedColumns> columns; // by record of the source
    DataDictionary dictionary;
    CaseFilter filter;
    bool hasCases;
    std::vector<SourceFile> files;
    BatchSink* sink = nullptr;

private:
    // A case of the source, and its number here; -1: it is left out.
    struct CaseNumbers {
        qint64 before = -1;
        qint64 now = -1;
    };

    void select(DataBatch& batch);
    bool takesRecord(const DataBatch& batch, const DataBatch::Record& record);
    bool beginCase(const DataBatch& batch, const DataBatch::Case& begun, std::size_t record);
    void selectColumns(DataBatch& batch, const DataBatch::Record& record) const;
    void selectTold(DataBatch& batch) const;
    qint64 caseNumber(qint64 before) const;

    std::vector<SourceCounts> leftOut; // by file
    std::vector<int> recordNumbers; // by record of the source; -1: left out
    std::vector<CaseNumbers> cases; // those that the batch may speak of; the last one is open
    qint64 caseCount = 0;
};

void SelectedSource::Job::select(DataBatch& batch)
{
    if (!cases.empty())
        cases.erase(cases.begin(), cases.end() - 1);
    std::size_t begun = 0;
    std::size_t keptCases = 0;
    std::size_t keptRecords = 0;
    const auto beginCases = [&](std::size_t record) {
        for (; begun < batch.cases.size() && batch.cases[begun].firstRecord <= record; ++begun) {
            if (!beginCase(batch, batch.cases[begun], record))
                continue;
            batch.cases[keptCases] = batch.cases[begun];
            batch.cases[keptCases].number = cases.back().now;
            batch.cases[keptCases++].firstRecord = quint32(keptRecords);
        }
    };
    const std::size_t recordCount = batch.records.size();
    for (std::size_t r = 0; r < recordCount; ++r) {
        beginCases(r);
        DataBatch::Record record = batch.records[r];
        if (!takesRecord(batch, record)) {
            ++leftOut[std::size_t(record.file)].leftOutLines;
            continue;
        }
        selectColumns(batch, record);
        record.record = recordNumbers[std::size_t(record.record)];
        record.caseNumber = hasCases ? cases.back().now : record.caseNumber;
        batch.records[keptRecords++] = record;
    }
    beginCases(recordCount);
    batch.records.resize(keptRecords);
    batch.cases.resize(keptCases);
    selectTold(batch);
}

bool SelectedSource::Job::takesRecord(const DataBatch& batch, const DataBatch::Record& record)
{
    const bool isTaken = hasCases ? cases.back().now >= 0 : filter.takesRow(batch, record);
    return isTaken && recordNumbers[std::size_t(record.record)] >= 0;
}

// False when the case is left out; record: index of the next one in the batch.
bool SelectedSource::Job::beginCase(
    const DataBatch& batch, const DataBatch::Case& begun, std::size_t record)
{
    const bool hasRecord =
        record < batch.records.size() && batch.records[record].caseNumber == begun.number;
    cases.push_back({ begun.number, -1 });
    if (filter.takesCase(batch, begun, hasRecord ? &batch.records[record] : nullptr)) {
        cases.back().now = caseCount++;
        return true;
    }
    SourceCounts& counts = leftOut[std::size_t(begun.file)];
    ++counts.leftOutCases;
    counts.partlySavedCases += begun.isPartlySaved ? 1 : 0;
    return false;
}

void SelectedSource::Job::selectColumns(DataBatch& batch, const DataBatch::Record& record) const
{
    const QVector<int>& taken = columns.at(record.record).columns;
    for (int c = 0; c < taken.size(); ++c) {
        const quint32 from = record.firstCell + quint32(taken.at(c));
        batch.states[record.firstCell + quint32(c)] = batch.states[from];
        batch.numbers[record.firstCell + quint32(c)] = batch.numbers[from];
    }
}

// What is told of a record goes with it.
void SelectedSource::Job::selectTold(DataBatch& batch) const
{
    const auto hasRecord = [&batch](const DataBatch::Told& told) {
        const auto place = std::make_pair(told.file, told.line);
        const auto found = std::lower_bound(batch.records.begin(), batch.records.end(), place,
            [](const DataBatch::Record& record, const std::pair<int, qint64>& wanted) {
                return std::make_pair(record.file, record.line) < wanted;
            });
        return found != batch.records.end() && found->file == told.file && found->line == told.line;
    };
    batch.told.erase(std::remove_if(batch.told.begin(), batch.told.end(),
                         [&](const DataBatch::Told& told) {
                             const bool isOfFile = told.line == 0;
                             return !isRejected(told.problem) && !isOfFile && !hasRecord(told);
                         }),
        batch.told.end());
    for (DataBatch::Told& told : batch.told) {
        told.caseNumber = caseNumber(told.caseNumber);
        told.record = told.record < 0 ? -1 : recordNumbers[std::size_t(told.record)];
    }
}

qint64 SelectedSource::Job::caseNumber(qint64 before) const
{
    const auto found = std::lower_bound(cases.begin(), cases.end(), before,
        [](const CaseNumbers& numbers, qint64 wanted) { return numbers.before < wanted; });
    return found != cases.end() && found->before == before ? found->now : -1;
}

void SelectedSource::Job::countFiles()
{
    files = source->files();
    for (std::size_t i = 0; i < files.size(); ++i) {
        SourceCounts& counts = files[i].counts;
        counts.leftOutLines = leftOut[i].leftOutLines;
        counts.leftOutCases = leftOut[i].leftOutCases;
        counts.records -= counts.leftOutLines;
        counts.cases -= counts.leftOutCases;
        counts.partlySavedCases -= leftOut[i].partlySavedCases;
    }
}

SelectedSource::SelectedSource(std::unique_ptr<DataSource> source, const DataSelection& selection)
    : m_job(std::make_unique<Job>(std::move(source), selection))
{
}

SelectedSource::~SelectedSource() = default;

const DataDictionary& SelectedSource::dictionary() const
{
    return m_job->dictionary;
}

void SelectedSource::read(BatchSink& sink)
{
    m_job->sink = &sink;
    m_job->source->read(*m_job);
    m_job->countFiles();
}

qint64 SelectedSource::size() const
{
    return m_job->source->size();
}

bool SelectedSource::countsRows() const
{
    return m_job->source->countsRows();
}

const std::vector<SourceFile>& SelectedSource::files() const
{
    return m_job->files;
}

bool SelectedSource::hasCases() const
{
    return m_job->source->hasCases();
}

bool SelectedSource::knowsPartlySaved() const
{
    return m_job->source->knowsPartlySaved();
}

bool SelectedSource::hasWidths() const
{
    return m_job->source->hasWidths();
}

} // namespace tessel
