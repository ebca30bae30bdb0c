#include <tessel_data/CaseChecker_p.h>

#include <algorithm>
#include <iterator>

namespace tessel {

namespace {

// Questionnaires of lower levels that are open in a case at a time; bounds the memory.
constexpr std::size_t MostNodes = 65'536;

std::size_t keySizeOf(const DataDictionary& dictionary)
{
    qint64 size = 0;
    for (const int id : dictionary.ids) {
        const DataVariable& variable = dictionary.variables[std::size_t(id)];
        const int bytes = variable.type == DataVariable::Type::Number ? 1 : 4;
        if (variable.level == 1)
            size += qint64(variable.width) * bytes;
    }
    return std::size_t(size);
}

QString shown(const std::string& key)
{
    return QString::fromUtf8(key.data(), int(key.size()));
}

} // namespace

CaseChecker::CaseChecker(const DataDictionary& dictionary, Tell tell)
    : m_dictionary(dictionary)
    , m_tell(std::move(tell))
    , m_index(keySizeOf(dictionary))
{
    m_identifiesCases = std::any_of(dictionary.ids.begin(), dictionary.ids.end(),
        [&](int id) { return dictionary.variables[std::size_t(id)].level == 1; });
}

DataProblem CaseChecker::problem(ProblemKind kind, qint64 line, int record) const
{
    DataProblem problem;
    problem.kind = kind;
    problem.file = m_file;
    problem.line = line;
    problem.caseNumber = m_caseCount;
    problem.caseKey = shown(m_key);
    problem.record = record;
    return problem;
}

void CaseChecker::beginCase(const DataBatch& batch, const DataBatch::Case& begun)
{
    endCase();
    m_isInCase = true;
    ++m_caseCount;
    m_key = batch.text(begun.key);
    m_file = begun.file;
    m_line = begun.line;
    m_hasRows = begun.uuid.size > 0;
    m_isPartlySaved = begun.isPartlySaved;
    if (m_isPartlySaved)
        m_tell(problem(ProblemKind::PartlySavedCase, m_line, -1));
}

void CaseChecker::addRecord(const DataBatch& batch, const DataBatch::Record& record)
{
    if (m_dictionary.records[std::size_t(record.record)].level > 1)
        addDeeperRecord(batch, record);
    else
        countRecord(m_counts, record);
}

void CaseChecker::addDeeperRecord(const DataBatch& batch, const DataBatch::Record& record)
{
    const int level = m_dictionary.records[std::size_t(record.record)].level;
    if (m_nodes.size() >= MostNodes)
        closeOldNodes();
    countRecord(nodeOf(batch, record, level).counts, record);
    touchParents(batch, record, level);
}

CaseChecker::Node& CaseChecker::nodeOf(
    const DataBatch& batch, const DataBatch::Record& record, int level)
{
    Node& node = m_nodes[nodeKey(batch, record, level)];
    if (node.touched == 0) {
        node.level = level;
        node.line = record.line;
        node.record = record.record;
        node.parent = nodeKey(batch, record, level - 1);
        node.hasRow = record.text.size == 0; // only lines have a text
    }
    node.touched = ++m_touches;
    return node;
}

// The row that a row of a database belongs to is there, whatever records it has. Nodes stay open
// as long as those below them.
void CaseChecker::touchParents(const DataBatch& batch, const DataBatch::Record& record, int level)
{
    const bool isRow = record.text.size == 0;
    for (int above = level - 1; above > 1; --above) {
        if (isRow) {
            nodeOf(batch, record, above);
            continue;
        }
        const auto found = m_nodes.find(nodeKey(batch, record, above));
        if (found != m_nodes.end())
            found->second.touched = ++m_touches;
    }
}

void CaseChecker::closeNode(const Node& node)
{
    if (!m_isPartlySaved)
        tellMissing(node.counts, node.level, node.line);
    const bool hasParent =
        node.hasRow || (node.level == 2 ? !m_counts.empty() : m_nodes.count(node.parent) != 0);
    if (!hasParent && isRequired(node.level - 1))
        m_tell(problem(ProblemKind::LevelWithoutParent, node.line, node.record));
}

// Records of a questionnaire follow each other in nearly every file, so that those which were not
// seen for long are complete.
void CaseChecker::closeOldNodes()
{
    const qint64 oldest = m_touches - qint64(MostNodes / 2);
    for (const auto& [key, node] : m_nodes) {
        if (node.touched < oldest)
            closeNode(node);
    }
    for (auto node = m_nodes.begin(); node != m_nodes.end();)
        node = node->second.touched < oldest ? m_nodes.erase(node) : std::next(node);
}

void CaseChecker::countRecord(std::map<int, qint64>& counts, const DataBatch::Record& record)
{
    const qint64 count = ++counts[record.record];
    const qint64 maximum = m_dictionary.records[std::size_t(record.record)].maximum;
    if (maximum > 0 && count > maximum)
        m_tell(problem(ProblemKind::TooManyRecords, record.line, record.record));
}

// Numbers and texts of the identification items from level 2 on; the case has those of level 1.
std::string CaseChecker::nodeKey(
    const DataBatch& batch, const DataBatch::Record& record, int level) const
{
    std::string key = std::to_string(level);
    const DataRecord& type = m_dictionary.records[std::size_t(record.record)];
    for (int c = 0; c < type.idCount; ++c) {
        const int idLevel = m_dictionary.variable(record.record, c).level;
        if (idLevel < 2 || idLevel > level)
            continue;
        const quint32 cell = record.firstCell + quint32(c);
        key += '\n';
        if (batch.states[cell].kind() == ValueKind::Text)
            key += batch.textOf(cell);
        else if (batch.states[cell].kind() == ValueKind::Number)
            key += std::to_string(batch.numbers[cell]);
    }
    return key;
}

bool CaseChecker::isRequired(int level) const
{
    return std::any_of(m_dictionary.records.begin(), m_dictionary.records.end(),
        [level](const DataRecord& record) { return record.level == level && record.isRequired; });
}

void CaseChecker::tellMissing(const std::map<int, qint64>& counts, int level, qint64 line)
{
    for (std::size_t r = 0; r < m_dictionary.records.size(); ++r) {
        const DataRecord& record = m_dictionary.records[r];
        if (record.level == level && record.isRequired && counts.count(int(r)) == 0)
            m_tell(problem(ProblemKind::MissingRecord, line, int(r)));
    }
}

// Which records of the case are there that a case may have once.
quint64 CaseChecker::singles() const
{
    constexpr int mostBits = 64;
    quint64 bits = 0;
    int bit = 0;
    for (std::size_t r = 0; r < m_dictionary.records.size() && bit < mostBits; ++r) {
        const DataRecord& record = m_dictionary.records[r];
        if (record.level != 1 || record.maximum != 1)
            continue;
        bits |= quint64(m_counts.count(int(r)) != 0 ? 1 : 0) << bit;
        ++bit;
    }
    return bits;
}

void CaseChecker::endCase()
{
    if (!m_isInCase)
        return;
    m_isInCase = false;
    if (!m_isPartlySaved && (m_identifiesCases || m_hasRows))
        tellMissing(m_counts, 1, m_line);
    for (const auto& [key, node] : m_nodes)
        closeNode(node);
    if (m_identifiesCases)
        m_index.add(m_key, { m_line, m_caseCount, m_hasRows ? ~quint64(0) : singles(), m_file });
    m_counts.clear();
    m_nodes.clear();
    m_touches = 0;
}

bool CaseChecker::finish(const CaseIndex::GoesOn& goesOn)
{
    endCase();
    const auto tellRepeated = [this](const CaseIndex::Group& group) {
        DataProblem repeated;
        repeated.kind = (group.first.singles & group.second.singles) != 0
            ? ProblemKind::DuplicateCase
            : ProblemKind::ScatteredCase;
        repeated.file = group.second.file;
        repeated.line = group.second.line;
        repeated.caseKey = QString::fromUtf8(group.key.data(), int(group.key.size()));
        repeated.caseNumber = group.second.number;
        repeated.otherCase = group.first.number;
        repeated.otherFile = group.first.file;
        repeated.otherLine = group.first.line;
        m_tell(repeated);
    };
    return m_index.finish(tellRepeated, goesOn);
}

} // namespace tessel
