#include <tessel_data/Converter.h>

#include <tessel_data/DataError.h>
#include <tessel_data/WholeCases_p.h>

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <future>
#include <limits>
#include <numeric>

namespace tessel {

class Converter::Job {
public:
    Job(const DataSource& source, ConversionTarget& conversionTarget,
        const ConversionPlan& conversionPlan);

    void take(const DataBatch& batch);
    void finish(const DataSource& source);

    ConversionReport report;

private:
    void takeRecord(const DataBatch& batch, const DataBatch::Record& record);
    void addOccurrences(int file, const DataBatch& batch, quint32 firstCell, qint64 number);
    qint64 numberInCase(const DataBatch::Record& record);
    void append(const DataBatch& batch);

    void begin(const DataBatch& batch);
    [[noreturn]] void failCase() const;
    void takeCase(const DataBatch& batch, std::size_t first, std::size_t end);

    static void checkUnchanged(const DataSource& source);
    void checkCounts(const SourceCounts& read) const;

    const DataDictionary& m_dictionary;
    ConversionTarget& m_target;
    const ConversionPlan& m_plan;
    bool m_hasCases;
    bool m_isMerged = false;
    std::vector<QVector<int>> m_filesOf; // by record
    std::vector<ConversionRows> m_rows; // by file
    std::vector<qint64> m_recordRows; // by record
    std::vector<qint64> m_numbers; // of records of the current case, by record
    qint64 m_case = -1;
    std::vector<quint32> m_once; // merged: first cells of the case's records, by record
    WholeCases m_cases; // merged: records of a case may follow in any order
};

bool ConversionReport::hasLosses() const
{
    return rejects > 0 || surplusRecords > 0
        || std::any_of(counts.begin(), counts.end(), [](const auto& columns) {
               return std::any_of(columns.begin(), columns.end(),
                   [](const ConversionCounts& count) { return count.hasLosses(); });
           });
}

Converter::Job::Job(const DataSource& source, ConversionTarget& conversionTarget,
    const ConversionPlan& conversionPlan)
    : m_dictionary(source.dictionary())
    , m_target(conversionTarget)
    , m_plan(conversionPlan)
    , m_hasCases(source.hasCases())
    , m_filesOf(m_dictionary.records.size())
    , m_recordRows(m_dictionary.records.size())
    , m_numbers(m_dictionary.records.size())
    , m_once(m_dictionary.records.size(), ConversionRows::NoCell)
    , m_cases(
          m_dictionary,
          [this](const DataBatch& batch, std::size_t first, std::size_t end) {
              takeCase(batch, first, end);
          },
          [this] { failCase(); }, [this](const DataBatch& batch) { begin(batch); },
          [this](const DataBatch& batch) { append(batch); })
{
    for (std::size_t f = 0; f < m_plan.files.size(); ++f) {
        const ConversionFile& file = m_plan.files[f];
        m_filesOf[std::size_t(file.records.first())].append(int(f));
        m_rows.emplace_back(file);
        m_isMerged = m_isMerged || file.records.size() > 1;
    }
    m_target.begin(m_plan);
}

void Converter::Job::take(const DataBatch& batch)
{
    for (const DataBatch::Told& told : batch.told)
        report.rejects += isRejected(told.problem) ? 1 : 0;
    if (m_isMerged)
        return m_cases.add(batch);
    begin(batch);
    for (const DataBatch::Record& record : batch.records)
        takeRecord(batch, record);
    append(batch);
}

void Converter::Job::begin(const DataBatch& batch)
{
    for (ConversionRows& rows : m_rows)
        rows.begin(batch);
}

qint64 Converter::Job::numberInCase(const DataBatch::Record& record)
{
    if (!m_hasCases)
        return record.line;
    if (m_case != record.caseNumber) {
        std::fill(m_numbers.begin(), m_numbers.end(), 0);
        m_case = record.caseNumber;
    }
    return ++m_numbers[std::size_t(record.record)];
}

void Converter::Job::takeRecord(const DataBatch& batch, const DataBatch::Record& record)
{
    ++m_recordRows[std::size_t(record.record)];
    const qint64 number = numberInCase(record);
    for (const int file : qAsConst(m_filesOf[std::size_t(record.record)])) {
        const ConversionFile& definition = m_plan.files[std::size_t(file)];
        ConversionRows& rows = m_rows[std::size_t(file)];
        rows.addRecord(record.firstCell);
        for (int source = 1; source < definition.records.size(); ++source)
            rows.addRecord(m_once[std::size_t(definition.records.at(source))]);
        if (definition.isRepeat)
            addOccurrences(file, batch, record.firstCell, number);
        else
            rows.addRow(number);
    }
}

// An occurrence that is blank has no row.
void Converter::Job::addOccurrences(
    int file, const DataBatch& batch, quint32 firstCell, qint64 number)
{
    const ConversionFile& definition = m_plan.files[std::size_t(file)];
    for (std::size_t occurrence = 0; occurrence < definition.cells.size(); ++occurrence) {
        const QVector<int>& cells = definition.cells[occurrence];
        for (int c = 0; c < cells.size(); ++c) {
            const ConversionColumn& column = definition.columns.at(c);
            if (column.isId || column.source != 0 || cells.at(c) < 0
                || batch.states[firstCell + quint32(cells.at(c))].kind() == ValueKind::Blank)
                continue;
            m_rows[std::size_t(file)].addRow(number, int(occurrence));
            break;
        }
    }
}

void Converter::Job::append(const DataBatch&)
{
    for (std::size_t file = 0; file < m_rows.size(); ++file) {
        if (m_rows[file].count() > 0)
            m_target.append(int(file), m_rows[file]);
    }
}

void Converter::Job::failCase() const
{
    throw DataError(DataError::Code::UnfitDictionary, m_target.name(),
        QStringLiteral("nothing is made: a case has more records than can be merged; convert "
                       "without merging"));
}

// Of records that should be there once, the first one counts.
void Converter::Job::takeCase(const DataBatch& batch, std::size_t first, std::size_t end)
{
    std::fill(m_once.begin(), m_once.end(), ConversionRows::NoCell);
    for (std::size_t r = first; r < end; ++r) {
        const DataBatch::Record& record = batch.records[r];
        quint32& once = m_once[std::size_t(record.record)];
        if (once == ConversionRows::NoCell)
            once = record.firstCell;
        else if (m_dictionary.records[std::size_t(record.record)].maximum <= 1
            && m_dictionary.records[std::size_t(record.record)].level == 1)
            ++report.surplusRecords;
    }
    for (std::size_t r = first; r < end; ++r)
        takeRecord(batch, batch.records[r]);
}

void Converter::Job::finish(const DataSource& source)
{
    m_cases.finish();
    checkUnchanged(source);
    report.read = source.counts();
    report.files = source.files();
    report.rows = m_target.rows();
    report.counts = m_target.counts();
    checkCounts(report.read);
}

// A file that another program wrote to may have been read half.
void Converter::Job::checkUnchanged(const DataSource& source)
{
    for (const SourceFile& file : source.files()) {
        if (file.changedWhileRead) {
            throw DataError(DataError::Code::Busy, file.path,
                QStringLiteral("changed while it was read, so nothing is made of it; wait until "
                               "no other program writes to it and convert it again"));
        }
    }
}

void Converter::Job::checkCounts(const SourceCounts& read) const
{
    const qint64 taken = std::accumulate(m_recordRows.begin(), m_recordRows.end(), qint64(0));
    bool addsUp = read.addUp() && taken == read.records && report.rejects == read.rejectedLines;
    for (std::size_t file = 0; file < m_plan.files.size(); ++file) {
        const int record = m_plan.files[file].records.first();
        addsUp = addsUp
            && (m_plan.files[file].isRepeat
                || report.rows[file] == m_recordRows[std::size_t(record)]);
    }
    if (!addsUp) {
        throw DataError(DataError::Code::DoesNotAddUp, m_target.name(),
            QStringLiteral("nothing is made: %1 lines were read, but %2 rows, %3 rejected, %4 "
                           "deleted and %5 blank lines arrived and %6 were left out; this is an "
                           "error of the program")
                .arg(read.lines)
                .arg(taken)
                .arg(report.rejects)
                .arg(read.deletedLines)
                .arg(read.blankLines)
                .arg(read.leftOutLines));
    }
}

Converter::Converter(const DataSource& source, ConversionTarget& target, const ConversionPlan& plan)
    : m_job(std::make_unique<Job>(source, target, plan))
{
}

Converter::~Converter() = default;

void Converter::take(const DataBatch& batch)
{
    m_job->take(batch);
}

void Converter::finish(const DataSource& source)
{
    m_job->finish(source);
}

const ConversionReport& Converter::report() const
{
    return m_job->report;
}

namespace {

// Two consumers, one behind the other.
class Both : public DataConsumer {
public:
    Both(DataConsumer& first, DataConsumer* second)
        : m_first(first)
        , m_second(second)
    {
    }

    void take(const DataBatch& batch) override
    {
        m_first.take(batch);
        if (m_second)
            m_second->take(batch);
    }
    void finish(const DataSource& source) override
    {
        m_first.finish(source);
        if (m_second)
            m_second->finish(source);
    }

private:
    DataConsumer& m_first;
    DataConsumer* m_second;
};

} // namespace

namespace {

// Without a NUL, too.
bool isPlainAscii(const char* bytes, std::size_t size)
{
    constexpr uchar highest = 0x7F;
    uchar others = 0; // all are looked at, many at a time
    for (std::size_t i = 0; i < size; ++i)
        others |= uchar(uchar(bytes[i]) - 1) >= highest ? 1 : 0;
    return others == 0;
}

// Of a file from one place to another, or to its end.
bool isPlainAscii(const QString& path, qint64 from, qint64 to)
{
    constexpr qint64 piece = 1 << 16;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) || !file.seek(from))
        return false;
    QByteArray bytes(int(piece), '\0');
    while (from < to) {
        const qint64 count = file.read(bytes.data(), std::min(piece, to - from));
        if (count <= 0)
            return count == 0;
        if (!isPlainAscii(bytes.constData(), std::size_t(count)))
            return false;
        from += count;
    }
    return true;
}

// Both halves at once, since nothing else can begin before that is known.
bool isPlainAscii(const QString& path)
{
    const QFileInfo file(path);
    if (!file.isFile())
        return false;
    const qint64 middle = file.size() / 2;
    constexpr qint64 end = std::numeric_limits<qint64>::max();
    auto second =
        std::async(std::launch::async, [&path, middle] { return isPlainAscii(path, middle, end); });
    const bool isFirst = isPlainAscii(path, 0, middle);
    return second.get() && isFirst;
}

} // namespace

bool hasByteWidths(const DataSource& source)
{
    const std::vector<SourceFile>& files = source.files();
    return source.hasWidths()
        && std::all_of(files.begin(), files.end(),
            [](const SourceFile& file) { return isPlainAscii(file.path); });
}

bool convertData(DataSource& source, ConversionTarget& target, const ConversionPlan& plan,
    ConversionReport& report, const ConversionRun& run)
{
    try {
        Converter converter(source, target, plan);
        Both both(converter, run.beside);
        if (!runPipeline(source, both, run.progress)) {
            target.abandon();
            return false;
        }
        report = converter.report();
        if (run.isStrict && report.hasLosses()) {
            throw DataError(DataError::Code::DoesNotAddUp, target.name(),
                QStringLiteral("nothing is made, as the data have what the files cannot hold"));
        }
        const qint64 size = source.size();
        const bool isDone =
            target.finish([&] { return !run.progress || run.progress(size, size); });
        report.rows = target.rows();
        report.counts = target.counts();
        return isDone;
    } catch (...) {
        target.abandon();
        throw;
    }
}

} // namespace tessel
