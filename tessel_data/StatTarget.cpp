#include <tessel_data/StatTarget.h>

#include <tessel_data/ConversionLimits_p.h>
#include <tessel_data/ConvertedFiles_p.h>
#include <tessel_data/DataError.h>
#include <tessel_data/StatFileWriter_p.h>

#include <algorithm>

namespace tessel {

namespace {

using Role = ConversionColumn::Role;

} // namespace

class StatTarget::Job {
public:
    Job(const QString& folder, ConversionFormat format, bool mayReplace)
        : m_folder(folder)
        , m_format(format)
        , m_mayReplace(mayReplace)
    {
    }

    void begin(const ConversionPlan& plan);
    void append(int file, const ConversionRows& rows);
    bool finish(const std::function<bool()>& goesOn);
    void abandon() noexcept;

    const QString m_folder;
    const ConversionFormat m_format;
    std::vector<std::vector<ConversionCounts>> counts; // by file and column
    std::vector<qint64> rowCounts; // by file
    qint64 longTextBound = qint64(1) << 30; // bytes

private:
    void checkWidth(const ConversionFile& file) const;
    bool isSettled(const ConversionFile& file) const;
    std::unique_ptr<StatFileWriter> writer(std::size_t file);
    struct Place {
        ConversionColumn::Role role;
        int source;
        int cell; // -1: not in a record
    };

    static std::vector<std::vector<Place>> placesOf(const ConversionFile& file);
    template <typename Sink>
    void addRow(
        Sink& sink, std::size_t file, const ConversionRows& rows, const ConversionRows::Row& row);
    void addColumns(std::size_t file, bool settled);
    void countChanged();

    const bool m_mayReplace;
    const ConversionPlan* m_plan = nullptr;
    std::unique_ptr<ConvertedFiles> m_files;
    // By file, one of both: rows are kept, or written at once where the columns are settled.
    std::vector<std::unique_ptr<RowSpool>> m_spools;
    std::vector<std::unique_ptr<StatFileWriter>> m_writers;
    std::vector<std::vector<StatColumn>> m_columns; // by file
    std::vector<std::vector<std::vector<Place>>> m_places; // by file and occurrence
};

void StatTarget::Job::checkWidth(const ConversionFile& file) const
{
    const int most = limitsOf(m_format).variables;
    if (most == 0 || file.columns.size() <= most)
        return;
    throw DataError(DataError::Code::UnfitSelection, ConvertedFiles::path(m_folder, file.name),
        QStringLiteral("would have %1 variables, and Stata takes %2; choose some with --variables, "
                       "or put repeated items into files of their own with --repeats tables")
            .arg(file.columns.size())
            .arg(most));
}

void StatTarget::Job::begin(const ConversionPlan& plan)
{
    m_plan = &plan;
    QStringList names;
    for (const ConversionFile& file : plan.files) {
        checkWidth(file);
        names.append(file.name);
    }
    m_files = std::make_unique<ConvertedFiles>(m_folder, names, m_mayReplace);
    m_columns.resize(plan.files.size());
    m_spools.resize(plan.files.size());
    m_writers.resize(plan.files.size());
    rowCounts.resize(plan.files.size());
    for (std::size_t f = 0; f < plan.files.size(); ++f) {
        const ConversionFile& file = plan.files[f];
        const bool settled = isSettled(file);
        m_places.push_back(placesOf(file));
        addColumns(f, settled);
        counts.emplace_back(std::size_t(file.columns.size()));
        if (settled) {
            m_writers[f] = writer(f);
            m_writers[f]->begin();
        } else {
            m_spools[f] = std::make_unique<RowSpool>(m_folder);
        }
    }
}

void StatTarget::Job::addColumns(std::size_t file, bool settled)
{
    for (const ConversionColumn& column : m_plan->files[file].columns) {
        m_columns[file].emplace_back(column, m_format, settled);
        if (column.labelSet >= 0)
            m_columns[file].back().takeLabels(m_plan->labelSets[std::size_t(column.labelSet)]);
    }
}

bool StatTarget::Job::isSettled(const ConversionFile& file) const
{
    return m_plan->hasByteWidths
        && std::all_of(file.columns.begin(), file.columns.end(), StatColumn::mayBeSettled);
}

std::unique_ptr<StatFileWriter> StatTarget::Job::writer(std::size_t file)
{
    const ConversionFile& definition = m_plan->files[file];
    auto writer = std::make_unique<StatFileWriter>(*m_plan, definition, m_columns[file],
        m_files->descriptor(file), ConvertedFiles::path(m_folder, definition.name));
    writer->setLongTextBound(longTextBound);
    return writer;
}

void StatTarget::Job::append(int file, const ConversionRows& rows)
{
    StatFileWriter* const direct = m_writers[std::size_t(file)].get();
    for (std::size_t r = 0; r < rows.count(); ++r) {
        if (!direct) {
            addRow(*m_spools[std::size_t(file)], std::size_t(file), rows, rows.row(r));
            continue;
        }
        direct->beginRow();
        addRow(*direct, std::size_t(file), rows, rows.row(r));
        direct->endRow();
    }
    rowCounts[std::size_t(file)] += qint64(rows.count());
}

// Where the values of each column stand, without all that a plan knows besides.
std::vector<std::vector<StatTarget::Job::Place>> StatTarget::Job::placesOf(
    const ConversionFile& file)
{
    std::vector<std::vector<Place>> places;
    for (const QVector<int>& cells : file.cells) {
        places.emplace_back();
        for (int c = 0; c < file.columns.size(); ++c)
            places.back().push_back({ file.columns.at(c).role, file.columns.at(c).source,
                file.columns.at(c).role == Role::Value ? cells.at(c) : -1 });
    }
    return places;
}

template <typename Sink>
void StatTarget::Job::addRow(
    Sink& sink, std::size_t file, const ConversionRows& rows, const ConversionRows::Row& row)
{
    const std::vector<Place>& places = m_places[file][std::size_t(row.occurrence)];
    const DataBatch& batch = rows.batch();
    const quint32* const firstCells = rows.firstCells(row);
    StatColumn* column = m_columns[file].data();
    ConversionCounts* count = counts[file].data();
    for (const Place& place : places) {
        const quint32 first = firstCells[place.source];
        if (place.cell >= 0 && first != ConversionRows::NoCell)
            column->add(sink, batch, first + quint32(place.cell), *count);
        else if (place.role == Role::Row)
            column->addNumber(sink, row.number);
        else if (place.role == Role::Occurrence)
            column->addNumber(sink, row.occurrence + 1);
        else
            sink.addMissing();
        ++column;
        ++count;
    }
}

void StatTarget::Job::countChanged()
{
    for (std::size_t f = 0; f < m_columns.size(); ++f) {
        for (std::size_t c = 0; c < m_columns[f].size(); ++c) {
            const ConversionColumn& column = m_plan->files[f].columns.at(int(c));
            const StatColumn& values = m_columns[f][c];
            counts[f][c].isWidened = column.isText()
                ? column.width > 0 && values.textCharacters() > column.width
                : values.type() != column.type;
            if (m_format != ConversionFormat::Spss)
                continue;
            counts[f][c].recodedKinds = values.codedKinds();
            counts[f][c].missingBase = values.missingBase();
        }
    }
}

bool StatTarget::Job::finish(const std::function<bool()>& goesOn)
{
    countChanged();
    for (std::size_t f = 0; f < m_plan->files.size(); ++f) {
        if (m_writers[f]) {
            m_writers[f]->finish(rowCounts[f]);
        } else if (!writer(f)->write(*m_spools[f], rowCounts[f], goesOn)) {
            abandon();
            return false;
        }
        m_spools[f].reset();
        m_writers[f].reset();
    }
    m_files->publish();
    return true;
}

void StatTarget::Job::abandon() noexcept
{
    m_writers.clear();
    m_files.reset();
    m_spools.clear();
}

StatTarget::StatTarget(const QString& folder, ConversionFormat format, bool mayReplace)
    : m_job(std::make_unique<Job>(folder, format, mayReplace))
{
}

StatTarget::~StatTarget() = default;

void StatTarget::setLongTextBound(qint64 bytes)
{
    m_job->longTextBound = bytes;
}

ConversionFormat StatTarget::format() const
{
    return m_job->m_format;
}

QString StatTarget::name() const
{
    return m_job->m_folder;
}

void StatTarget::begin(const ConversionPlan& plan)
{
    m_job->begin(plan);
}

void StatTarget::append(int file, const ConversionRows& rows)
{
    m_job->append(file, rows);
}

const std::vector<std::vector<ConversionCounts>>& StatTarget::counts() const
{
    return m_job->counts;
}

const std::vector<qint64>& StatTarget::rows() const
{
    return m_job->rowCounts;
}

bool StatTarget::finish(const std::function<bool()>& goesOn)
{
    return m_job->finish(goesOn);
}

void StatTarget::abandon() noexcept
{
    m_job->abandon();
}

} // namespace tessel
