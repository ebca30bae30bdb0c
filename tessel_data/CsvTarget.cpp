#include <tessel_data/CsvTarget.h>

#include <tessel_data/ConvertedFiles_p.h>
#include <tessel_data/CsvColumn_p.h>
#include <tessel_data/DataPackage_p.h>

#include <QHash>

namespace tessel {

class CsvTarget::Job {
public:
    Job(const QString& folder, const DataDictionary& dictionary, bool mayReplace)
        : m_folder(folder)
        , m_dictionary(dictionary)
        , m_mayReplace(mayReplace)
    {
    }

    void begin(const ConversionPlan& plan);
    void append(int file, const ConversionRows& rows);
    bool finish(const std::function<bool()>& goesOn);
    void abandon() noexcept;

    const QString m_folder;
    std::vector<std::vector<ConversionCounts>> counts; // by file and column
    std::vector<qint64> rowCounts; // by file

private:
    using Labels = std::shared_ptr<const CsvLabels>;

    void beginFile(const ConversionFile& file);
    Labels labelsOf(int variable, const CsvBytes& csv);
    void addRow(int file, const ConversionRows& rows, const ConversionRows::Row& row);

    const DataDictionary& m_dictionary;
    const bool m_mayReplace;
    const ConversionPlan* m_plan = nullptr;
    std::unique_ptr<CsvCodeSets> m_codes;
    std::unique_ptr<ConvertedFiles> m_files;
    std::vector<CsvBytes> m_csv; // by file
    std::vector<std::vector<CsvColumn>> m_columns; // by file
    QHash<const CsvCodes*, Labels> m_labels;
};

void CsvTarget::Job::begin(const ConversionPlan& plan)
{
    m_plan = &plan;
    m_codes = std::make_unique<CsvCodeSets>(m_dictionary, plan.csv);
    QStringList names;
    for (const ConversionFile& file : plan.files)
        names.append(file.name);
    names.append(DataPackage::fileName());
    m_files = std::make_unique<ConvertedFiles>(m_folder, names, m_mayReplace);
    for (const ConversionFile& file : plan.files)
        beginFile(file);
}

void CsvTarget::Job::beginFile(const ConversionFile& file)
{
    m_csv.emplace_back(m_files->descriptor(m_csv.size()), ConvertedFiles::path(m_folder, file.name),
        m_plan->csv.forSpreadsheet);
    CsvBytes& csv = m_csv.back();
    std::vector<CsvColumn> columns;
    for (const ConversionColumn& column : file.columns) {
        const DataVariable* const variable =
            column.variable < 0 ? nullptr : &m_dictionary.variables[std::size_t(column.variable)];
        columns.emplace_back(column, variable, labelsOf(column.variable, csv));
        const QByteArray name = column.name.toUtf8();
        csv.addText({ name.constData(), std::size_t(name.size()) });
    }
    csv.endRow();
    m_columns.push_back(std::move(columns));
    counts.emplace_back(std::size_t(file.columns.size()));
    rowCounts.push_back(0);
}

CsvTarget::Job::Labels CsvTarget::Job::labelsOf(int variable, const CsvBytes& csv)
{
    if (!m_plan->csv.hasLabels || variable < 0)
        return nullptr;
    const DataVariable& source = m_dictionary.variables[std::size_t(variable)];
    if (source.valueSets.isEmpty())
        return nullptr;
    const std::shared_ptr<const CsvCodes> codes = m_codes->of(variable);
    Labels& labels = m_labels[codes.get()];
    if (!labels) {
        labels = std::make_shared<CsvLabels>(
            *codes, m_dictionary.codesOf(source.valueSets.constFirst(), source), csv);
    }
    return labels;
}

void CsvTarget::Job::append(int file, const ConversionRows& rows)
{
    for (std::size_t r = 0; r < rows.count(); ++r)
        addRow(file, rows, rows.row(r));
    rowCounts[std::size_t(file)] += qint64(rows.count());
}

void CsvTarget::Job::addRow(int file, const ConversionRows& rows, const ConversionRows::Row& row)
{
    using Role = ConversionColumn::Role;
    const ConversionFile& definition = rows.file();
    const int* const cells = definition.cells[std::size_t(row.occurrence)].constData();
    const quint32* const firstCells = rows.firstCells(row);
    std::vector<CsvColumn>& columns = m_columns[std::size_t(file)];
    std::vector<ConversionCounts>& columnCounts = counts[std::size_t(file)];
    CsvBytes& csv = m_csv[std::size_t(file)];
    for (std::size_t c = 0; c < columns.size(); ++c) {
        const quint32 first = firstCells[columns[c].source()];
        if (columns[c].role() == Role::Row)
            csv.addNumber(row.number);
        else if (columns[c].role() == Role::Occurrence)
            csv.addNumber(row.occurrence + 1);
        else if (cells[c] < 0 || first == ConversionRows::NoCell)
            columns[c].addNothing(csv);
        else
            columns[c].add(csv, rows.batch(), first + quint32(cells[c]), columnCounts[c]);
    }
    csv.endRow();
}

bool CsvTarget::Job::finish(const std::function<bool()>& goesOn)
{
    DataPackage package(m_dictionary, m_plan->csv, *m_codes);
    for (std::size_t f = 0; f < m_csv.size(); ++f) {
        m_csv[f].flush();
        package.addFile(m_plan->files[f], m_columns[f], rowCounts[f], m_csv[f].size());
    }
    if (!goesOn()) {
        abandon();
        return false;
    }
    package.write(
        m_files->descriptor(m_csv.size()), ConvertedFiles::path(m_folder, DataPackage::fileName()));
    m_files->publish();
    return true;
}

void CsvTarget::Job::abandon() noexcept
{
    m_files.reset();
}

CsvTarget::CsvTarget(const QString& folder, const DataDictionary& dictionary, bool mayReplace)
    : m_job(std::make_unique<Job>(folder, dictionary, mayReplace))
{
}

CsvTarget::~CsvTarget() = default;

ConversionFormat CsvTarget::format() const
{
    return ConversionFormat::Csv;
}

QString CsvTarget::name() const
{
    return m_job->m_folder;
}

void CsvTarget::begin(const ConversionPlan& plan)
{
    m_job->begin(plan);
}

void CsvTarget::append(int file, const ConversionRows& rows)
{
    m_job->append(file, rows);
}

const std::vector<std::vector<ConversionCounts>>& CsvTarget::counts() const
{
    return m_job->counts;
}

const std::vector<qint64>& CsvTarget::rows() const
{
    return m_job->rowCounts;
}

bool CsvTarget::finish(const std::function<bool()>& goesOn)
{
    return m_job->finish(goesOn);
}

void CsvTarget::abandon() noexcept
{
    m_job->abandon();
}

} // namespace tessel
