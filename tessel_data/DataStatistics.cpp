#include <tessel_data/DataStatistics.h>

#include <tessel_data/CrossCounter_p.h>
#include <tessel_data/DataError.h>
#include <tessel_data/VariableCollector_p.h>
#include <tessel_data/WholeCases_p.h>

#include <QHash>

#include <algorithm>

namespace tessel {

namespace {

[[noreturn]] void failCase()
{
    throw DataError(DataError::Code::UnfitDictionary, QString(),
        QStringLiteral("a case has more records than can be seen together; leave out the weight "
                       "and the cross tables of other records"));
}

// Points of quantiles that are not exact: fewer where many variables may need them.
std::size_t pointLimitFor(int variables)
{
    constexpr std::size_t all = 8'000'000;
    constexpr std::size_t portions = 12; // which merge at ten million different numbers
    constexpr std::size_t fewest = 128;
    constexpr std::size_t most = 2048;
    return std::clamp(all / portions / std::size_t(std::max(1, variables)), fewest, most);
}

} // namespace

class DataStatistics::Job {
public:
    Job(const DataSource& source, const StatisticsOptions& statisticsOptions);

    void take(const DataBatch& batch);
    void finish(const DataSource& source);

    StatisticsReport report;

private:
    using Collector = std::unique_ptr<VariableCollector>;

    // Where the values of one column go.
    struct Column {
        VariableCollector* together = nullptr;
        VariableCollector* alone = nullptr; // of one occurrence, where that is wanted
    };

    // A collector of what is weighed as the rows of a record, or as the nodes of a level, are.
    struct Listed {
        Collector collector;
        int record; // -1: of a level
        int level;
    };

    void addIds();
    void addColumns(int record);
    void addOccurrences(int record, const QVector<int>& columns);
    VariableCollector* addCollector(int record, int column, int occurrences);
    Column& column(int record, int column);
    void planWeight();
    void takeRecords(const DataBatch& batch, std::size_t first, std::size_t end);
    void takeRecord(const DataBatch& batch, const DataBatch::Record& row);
    int newLevel(const DataBatch& batch, const DataBatch::Record& row);
    void takeIds(const DataBatch& batch, const DataBatch::Record& row, int newLevel);
    void takeCrosses(
        const DataBatch& batch, const DataBatch::Record& row, int level, double weight);
    double weightOf(const ValuePlace& place, const DataBatch& batch, const DataBatch::Record& row,
        RecordStatistics& faults) const;
    bool isWeighted(int record, int level) const;

    const DataDictionary& m_dictionary;
    StatisticsOptions m_options;
    StatisticsPlan m_plan;
    CollectorShare m_share;
    std::vector<Listed> m_collectors; // in the order of the report
    std::vector<VariableCollector*> m_ids; // by their place in the dictionary
    std::vector<Column> m_columns; // of all records
    std::vector<ValuePlace> m_weights; // by record
    std::vector<ValuePlace> m_levelWeights; // by level, from 1
    std::vector<CrossCounter> m_crosses;
    std::vector<Tally> m_rows; // by record
    std::vector<std::string> m_nodes; // keys of the current nodes, by level
    qint64 m_case = -1;
    qint64 m_cases = 0;
    double m_scale = 1; // of weights that are exact numbers
    WholeCases m_wholeCases;
};

DataStatistics::Job::Job(const DataSource& source, const StatisticsOptions& statisticsOptions)
    : m_dictionary(source.dictionary())
    , m_options(statisticsOptions)
    , m_plan(m_dictionary, source.hasCases())
    , m_share(m_dictionary)
    , m_columns(std::size_t(m_dictionary.columnCount()))
    , m_rows(m_dictionary.records.size())
    , m_wholeCases(
          m_dictionary,
          [this](const DataBatch& batch, std::size_t first, std::size_t end) {
              m_plan.seeCase(batch, first, end);
              takeRecords(batch, first, end);
          },
          failCase)
{
    report.hasCases = source.hasCases();
    report.records.resize(m_dictionary.records.size());
    m_share.room.distinct = std::size_t(std::max(1, m_options.distinctLimit));
    m_share.pointLimit = pointLimitFor(m_dictionary.columnCount());
    addIds();
    for (std::size_t r = 0; r < m_dictionary.records.size(); ++r)
        addColumns(int(r));
    planWeight();
    for (const auto& names : qAsConst(m_options.crosses))
        m_crosses.emplace_back(m_dictionary, m_plan, names);
}

void DataStatistics::Job::addIds()
{
    int deepest = 1;
    for (const int id : m_dictionary.ids) {
        const int level = m_dictionary.variables[std::size_t(id)].level;
        m_collectors.push_back({ std::make_unique<VariableCollector>(m_share, id, 0), -1, level });
        m_ids.push_back(m_collectors.back().collector.get());
        deepest = std::max(deepest, level);
    }
    for (const DataRecord& record : m_dictionary.records)
        deepest = std::max(deepest, record.level);
    m_nodes.resize(std::size_t(deepest) + 1);
    m_levelWeights.resize(std::size_t(deepest) + 1);
}

VariableCollector* DataStatistics::Job::addCollector(int record, int column, int occurrences)
{
    const DataRecord& type = m_dictionary.records[std::size_t(record)];
    m_collectors.push_back(
        { std::make_unique<VariableCollector>(m_share, type.columns.at(column), occurrences),
            record, type.level });
    return m_collectors.back().collector.get();
}

DataStatistics::Job::Column& DataStatistics::Job::column(int record, int column)
{
    return m_columns[std::size_t(m_dictionary.records[std::size_t(record)].firstColumn + column)];
}

void DataStatistics::Job::addColumns(int record)
{
    const DataRecord& type = m_dictionary.records[std::size_t(record)];
    QHash<QString, QVector<int>> repeated;
    for (int c = type.idCount; c < type.columns.size(); ++c) {
        const DataVariable& variable = m_dictionary.variable(record, c);
        if (variable.occurrence > 0)
            repeated[variable.itemName].append(c);
    }
    for (int c = type.idCount; c < type.columns.size(); ++c) {
        const DataVariable& variable = m_dictionary.variable(record, c);
        if (variable.occurrence == 0)
            column(record, c).together = addCollector(record, c, 0);
        else if (!column(record, c).together)
            addOccurrences(record, repeated.value(variable.itemName));
    }
}

void DataStatistics::Job::addOccurrences(int record, const QVector<int>& columns)
{
    VariableCollector* const together = addCollector(record, columns.first(), columns.size());
    for (const int c : columns) {
        Column& one = column(record, c);
        one.together = together;
        if (m_options.hasEachOccurrence)
            one.alone = addCollector(record, c, 0);
    }
}

void DataStatistics::Job::planWeight()
{
    m_weights.resize(m_dictionary.records.size());
    if (m_options.weight.isEmpty())
        return;
    const NamedVariable named = m_plan.find(m_options.weight, QStringLiteral("weight"));
    const DataVariable& variable = m_dictionary.variables[std::size_t(named.variable)];
    if (variable.type != DataVariable::Type::Number && variable.type != DataVariable::Type::Real) {
        throw DataError(DataError::Code::UnfitSelection, QString(),
            QStringLiteral("weight: '%1' is no number").arg(m_options.weight));
    }
    report.weight = named.variable;
    m_scale = double(powerOfTen(variable.decimals));
    for (std::size_t r = 0; r < m_weights.size(); ++r)
        m_weights[r] = m_plan.placeFor(named, int(r));
    for (std::size_t level = 1; level < m_levelWeights.size(); ++level)
        m_levelWeights[level] = m_plan.placeForLevel(named, int(level));
}

bool DataStatistics::Job::isWeighted(int record, int level) const
{
    const ValuePlace& place =
        record >= 0 ? m_weights[std::size_t(record)] : m_levelWeights[std::size_t(level)];
    return place.where != ValuePlace::Where::Nowhere;
}

void DataStatistics::Job::take(const DataBatch& batch)
{
    if (m_plan.hasLinks())
        m_wholeCases.add(batch);
    else
        takeRecords(batch, 0, batch.records.size());
}

void DataStatistics::Job::takeRecords(const DataBatch& batch, std::size_t first, std::size_t end)
{
    for (std::size_t r = first; r < end; ++r)
        takeRecord(batch, batch.records[r]);
}

void DataStatistics::Job::takeRecord(const DataBatch& batch, const DataBatch::Record& row)
{
    const auto record = std::size_t(row.record);
    const DataRecord& type = m_dictionary.records[record];
    const double weight = weightOf(m_weights[record], batch, row, report.records[record]);
    m_rows[record].add(weight);
    const Column* const columns = m_columns.data() + type.firstColumn;
    for (int c = type.idCount; c < type.columns.size(); ++c) {
        const quint32 cell = row.firstCell + quint32(c);
        columns[c].together->add(batch, cell, weight);
        if (columns[c].alone)
            columns[c].alone->add(batch, cell, weight);
    }
    const int level = newLevel(batch, row);
    if (level > 0)
        takeIds(batch, row, level);
    takeCrosses(batch, row, level, weight);
}

// The highest level of which this row begins another node: 1 for a case; 0 where it begins none.
int DataStatistics::Job::newLevel(const DataBatch& batch, const DataBatch::Record& row)
{
    const int deepest = m_dictionary.records[std::size_t(row.record)].level;
    if (report.hasCases && row.caseNumber != m_case) {
        m_case = row.caseNumber;
        ++m_cases;
        std::fill(m_nodes.begin(), m_nodes.end(), std::string());
        for (int level = 2; level <= deepest; ++level)
            m_nodes[std::size_t(level)] = m_plan.keyOf(batch, row, level, level);
        return 1;
    }
    int highest = 0;
    for (int level = deepest; level >= 2; --level) {
        std::string key = m_plan.keyOf(batch, row, level, level);
        std::string& node = m_nodes[std::size_t(level)];
        highest = key != node ? level : highest;
        node = std::move(key);
    }
    if (highest > 0)
        std::fill(m_nodes.begin() + deepest + 1, m_nodes.end(), std::string());
    return highest;
}

void DataStatistics::Job::takeIds(
    const DataBatch& batch, const DataBatch::Record& row, int newLevel)
{
    const DataRecord& type = m_dictionary.records[std::size_t(row.record)];
    RecordStatistics untold; // rows tell of weights
    for (int c = 0; c < type.idCount; ++c) {
        const int level = m_dictionary.variable(row.record, c).level;
        if (level < newLevel)
            continue;
        const double weight = weightOf(m_levelWeights[std::size_t(level)], batch, row, untold);
        m_ids[std::size_t(c)]->add(batch, row.firstCell + quint32(c), weight);
    }
}

void DataStatistics::Job::takeCrosses(
    const DataBatch& batch, const DataBatch::Record& row, int level, double weight)
{
    const int deepest = m_dictionary.records[std::size_t(row.record)].level;
    for (CrossCounter& cross : m_crosses) {
        if (cross.record() == row.record) {
            cross.add(batch, row, weight);
        } else if (cross.record() < 0 && level > 0 && level <= cross.level()
            && cross.level() <= deepest) {
            RecordStatistics untold;
            cross.add(batch, row,
                weightOf(m_levelWeights[std::size_t(cross.level())], batch, row, untold));
        }
    }
}

// 0 where there is none that can be used; faults counts why.
double DataStatistics::Job::weightOf(const ValuePlace& place, const DataBatch& batch,
    const DataBatch::Record& row, RecordStatistics& faults) const
{
    if (place.where == ValuePlace::Where::Nowhere)
        return 0;
    const quint32 cell = m_plan.cellOf(place, batch, row);
    if (cell == StatisticsPlan::NoCell) {
        ++faults.absentWeights;
        return 0;
    }
    const ValueState state = batch.states[cell];
    const bool isReal = state.kind() == ValueKind::Real;
    if (state.kind() == ValueKind::Blank || state.special() != Special::None) {
        ++faults.missingWeights;
        return 0;
    }
    if (!isReal && state.kind() != ValueKind::Number) {
        ++faults.unreadableWeights;
        return 0;
    }
    const double weight = isReal ? batch.realOf(cell) : double(batch.numbers[cell]) / m_scale;
    if (!std::isfinite(weight)) {
        ++faults.unreadableWeights;
        return 0;
    }
    faults.negativeWeights += weight < 0 ? 1 : 0;
    return std::max(0.0, weight);
}

void DataStatistics::Job::finish(const DataSource& source)
{
    m_wholeCases.finish();
    report.counts = source.counts();
    report.files = source.files();
    report.cases = { m_cases, double(m_cases) };
    qint64 rows = 0;
    for (std::size_t r = 0; r < m_rows.size(); ++r) {
        report.records[r].isWeighted = isWeighted(int(r), 1);
        report.records[r].rows = m_rows[r].cell(report.records[r].isWeighted);
        rows += m_rows[r].count;
    }
    report.addsUp = report.counts.addUp() && rows == report.counts.records;
    for (const Listed& listed : m_collectors) {
        report.variables.push_back(listed.collector->finish(
            isWeighted(listed.record, listed.level), m_options.shownOutsideCodes));
    }
    for (const CrossCounter& cross : m_crosses)
        report.crosses.push_back(cross.table(isWeighted(cross.record(), cross.level())));
}

DataStatistics::DataStatistics(const DataSource& source, const StatisticsOptions& options)
    : m_job(std::make_unique<Job>(source, options))
{
}

DataStatistics::~DataStatistics() = default;

void DataStatistics::take(const DataBatch& batch)
{
    m_job->take(batch);
}

void DataStatistics::finish(const DataSource& source)
{
    m_job->finish(source);
}

const StatisticsReport& DataStatistics::report() const
{
    return m_job->report;
}

} // namespace tessel
