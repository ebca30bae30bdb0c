#include <tessel_data/StatTarget.h>

#include <tessel_data/ConversionLimits_p.h>
#include <tessel_data/ConvertedFiles_p.h>
#include <tessel_data/DataError.h>
#include <tessel_data/StatFileWriter_p.h>

namespace tessel {

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

private:
    void checkWidth(const ConversionFile& file) const;
    void addRow(int file, const ConversionRows& rows, const ConversionRows::Row& row);
    void countWidened();

    const bool m_mayReplace;
    const ConversionPlan* m_plan = nullptr;
    std::unique_ptr<ConvertedFiles> m_files;
    std::vector<std::unique_ptr<RowSpool>> m_spools; // by file
    std::vector<std::vector<StatColumn>> m_columns; // by file
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
    for (const ConversionFile& file : plan.files) {
        m_spools.push_back(std::make_unique<RowSpool>(m_folder));
        std::vector<StatColumn> columns;
        for (const ConversionColumn& column : file.columns)
            columns.emplace_back(column, m_format);
        m_columns.push_back(std::move(columns));
        counts.emplace_back(std::size_t(file.columns.size()));
        rowCounts.push_back(0);
    }
}

void StatTarget::Job::append(int file, const ConversionRows& rows)
{
    for (std::size_t r = 0; r < rows.count(); ++r)
        addRow(file, rows, rows.row(r));
    rowCounts[std::size_t(file)] += qint64(rows.count());
}

void StatTarget::Job::addRow(int file, const ConversionRows& rows, const ConversionRows::Row& row)
{
    using Role = ConversionColumn::Role;
    const ConversionFile& definition = rows.file();
    const QVector<int>& cells = definition.cells[std::size_t(row.occurrence)];
    const quint32* const firstCells = rows.firstCells(row);
    std::vector<StatColumn>& columns = m_columns[std::size_t(file)];
    std::vector<ConversionCounts>& columnCounts = counts[std::size_t(file)];
    RowSpool& spool = *m_spools[std::size_t(file)];
    for (int c = 0; c < definition.columns.size(); ++c) {
        const ConversionColumn& column = definition.columns.at(c);
        StatColumn& values = columns[std::size_t(c)];
        const quint32 first = firstCells[column.source];
        if (column.role == Role::Row)
            values.addNumber(spool, row.number);
        else if (column.role == Role::Occurrence)
            values.addNumber(spool, row.occurrence + 1);
        else if (cells.at(c) < 0 || first == ConversionRows::NoCell)
            spool.addMissing();
        else
            values.add(
                spool, rows.batch(), first + quint32(cells.at(c)), columnCounts[std::size_t(c)]);
    }
}

void StatTarget::Job::countWidened()
{
    for (std::size_t f = 0; f < m_columns.size(); ++f) {
        for (std::size_t c = 0; c < m_columns[f].size(); ++c) {
            const ConversionColumn& column = m_plan->files[f].columns.at(int(c));
            const StatColumn& values = m_columns[f][c];
            counts[f][c].isWidened = column.isText()
                ? column.width > 0 && values.textBytes() > column.width
                : values.type() != column.type;
        }
    }
}

bool StatTarget::Job::finish(const std::function<bool()>& goesOn)
{
    countWidened();
    for (std::size_t f = 0; f < m_plan->files.size(); ++f) {
        const ConversionFile& file = m_plan->files[f];
        StatFileWriter writer(*m_plan, file, m_columns[f], m_files->descriptor(f),
            ConvertedFiles::path(m_folder, file.name));
        if (!writer.write(*m_spools[f], rowCounts[f], goesOn)) {
            abandon();
            return false;
        }
        m_spools[f].reset();
    }
    m_files->publish();
    return true;
}

void StatTarget::Job::abandon() noexcept
{
    m_files.reset();
    m_spools.clear();
}

StatTarget::StatTarget(const QString& folder, ConversionFormat format, bool mayReplace)
    : m_job(std::make_unique<Job>(folder, format, mayReplace))
{
}

StatTarget::~StatTarget() = default;

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
