#include <tessel_data/RecordParser_p.h>

#include <model_Tessel/TrailingBlanks_p.h>

#include <algorithm>

namespace tessel {

namespace {

// CSPro writes a line break inside a text as this character, U+2424.
constexpr std::string_view lineBreak = "\xE2\x90\xA4";

bool isBlank(std::string_view text)
{
    return std::all_of(text.begin(), text.end(),
        [](char character) { return character == ' ' || character == '\t'; });
}

// A number of plain digits behind blanks, nearly every one; false for the others.
inline bool readPlain(std::string_view text, qint64& number)
{
    constexpr std::size_t mostDigits = 18;
    const std::size_t size = text.size();
    if (size > mostDigits)
        return false;
    std::size_t at = 0;
    while (at < size && text[at] == ' ')
        ++at;
    if (at == size)
        return false;
    qint64 value = 0;
    for (; at < size; ++at) {
        const unsigned digit = unsigned(uchar(text[at])) - '0';
        if (digit > 9)
            return false;
        value = value * 10 + digit;
    }
    number = value;
    return true;
}

ValueState stateOf(const CodeTable* codes, qint64 number)
{
    return codes ? codes->stateOf(number) : ValueState(ValueKind::Number);
}

} // namespace

int unreadableId(const DataBatch& batch, quint32 firstCell, int idCount)
{
    for (int c = 0; c < idCount; ++c) {
        if (isUnreadable(batch.states[firstCell + quint32(c)]))
            return c;
    }
    return -1;
}

RecordParser::RecordParser(const DataDictionary& dictionary)
    : m_dictionary(dictionary)
    , m_types(256, -1)
{
    for (std::size_t r = 0; r < dictionary.records.size(); ++r) {
        const DataRecord& record = dictionary.records[r];
        Plan plan;
        plan.idCount = record.idCount;
        plan.width = record.width;
        plan.firstIdsEnd = dictionary.recordTypeWidth > 0
            ? dictionary.recordTypeStart + record.typeCode.size()
            : 0;
        for (int c = 0; c < record.columns.size(); ++c) {
            const DataVariable& variable = dictionary.variable(int(r), c);
            const CodeTable* codes = variable.codes.get();
            plan.columns.push_back(
                { variable.start, variable.width, variable.type, variable.decimals,
                    record.columns.at(c), codes, codes ? codes->stateOfBlank() : ValueState() });
            if (c < record.idCount && variable.type == DataVariable::Type::Number)
                plan.firstIdsEnd = std::max(plan.firstIdsEnd, variable.start + variable.width);
        }
        m_plans.push_back(std::move(plan));
        const std::string code = record.typeCode.toStdString();
        if (code.size() <= 1)
            m_types[code.empty() ? ' ' : uchar(code[0])] = int(r);
        m_longTypes[code] = int(r);
    }
    for (const int id : dictionary.ids)
        m_firstLevelIds += dictionary.variables[std::size_t(id)].level == 1 ? 1 : 0;
}

void RecordParser::beginFile()
{
    m_encoding = LineEncoding::Unknown;
    m_isInCase = false;
}

void RecordParser::setCasesGiven(bool areGiven)
{
    m_areCasesGiven = areGiven;
}

void RecordParser::beginCase(qint64 number)
{
    m_caseNumber = number;
    m_isInCase = true;
}

RecordParser::Outcome RecordParser::parse(
    std::string_view line, qint64 number, int file, DataBatch& batch)
{
    if (!line.empty() && line[0] == '~')
        return Outcome::Deleted;
    if (isBlank(line))
        return Outcome::Blank;
    m_line.set(line);
    const qint64 givenCase = m_areCasesGiven ? m_caseNumber : -1;
    DataBatch::Told told { LineProblem::UnknownRecordType, file, -1, number, givenCase, {} };
    const int record = recordOf();
    if (record < 0) {
        told.text = batch.keep(m_line.text());
        batch.told.push_back(told);
        return Outcome::Rejected;
    }
    const Plan& plan = m_plans[std::size_t(record)];
    const auto firstCell = quint32(batch.states.size());
    if (!isAcceptable(plan, record, batch, told))
        return Outcome::Rejected;
    const TextRef text = told.text;
    if (!m_areCasesGiven && !continuesCase(plan, batch, firstCell)) {
        ++m_caseNumber;
        batch.cases.push_back({ m_caseNumber, quint32(batch.records.size()), file, number,
            batch.keep(m_key), {}, false });
    }
    batch.records.push_back({ number, m_caseNumber, file, record, firstCell, text });
    if (!m_line.isAscii() || m_line.hasControlCharacters() || m_line.columnCount() > plan.width)
        tellOddities(plan, batch, told);
    return Outcome::Record;
}

int RecordParser::recordOf() const
{
    if (m_dictionary.recordTypeWidth == 0)
        return m_plans.empty() ? -1 : 0;
    const std::string_view code = trailingBlanksCut(
        m_line.columns(m_dictionary.recordTypeStart, m_dictionary.recordTypeWidth));
    if (code.size() <= 1)
        return m_types[code.empty() ? ' ' : uchar(code[0])];
    const auto found = m_longTypes.find(std::string(code));
    return found == m_longTypes.end() ? -1 : found->second;
}

// Reads the record's values; false, with its values taken back, when the line has no place.
bool RecordParser::isAcceptable(
    const Plan& plan, int record, DataBatch& batch, DataBatch::Told& told)
{
    const auto cells = quint32(batch.states.size());
    told.text = batch.keep(m_line.text());
    const auto reject = [&](LineProblem problem) {
        batch.states.resize(cells);
        batch.numbers.resize(cells);
        batch.bytes.resize(told.text.start + told.text.size);
        told.problem = problem;
        batch.told.push_back(told);
        return false;
    };
    if (m_line.columnCount() < plan.firstIdsEnd)
        return reject(LineProblem::EndsInIdentification);
    readColumns(plan, batch, told.text.start);
    const int id = unreadableId(batch, cells, plan.idCount);
    if (id < 0)
        return true;
    told.variable = m_dictionary.records[std::size_t(record)].columns.at(id);
    return reject(LineProblem::IdNotANumber);
}

// line: where the line stands among the texts of the batch.
void RecordParser::readColumns(const Plan& plan, DataBatch& batch, quint32 line)
{
    quint32 cell = batch.addCells(plan.columns.size());
    if (!m_line.isAscii()) {
        for (const Column& column : plan.columns)
            readColumn(column, batch, cell++, line);
        return;
    }
    const char* const text = m_line.text().data();
    const int size = int(m_line.text().size());
    for (const Column& column : plan.columns) {
        qint64 number = 0;
        if (column.type == DataVariable::Type::Number && column.width <= size - column.start
            && readPlain({ text + column.start, std::size_t(column.width) }, number)) {
            batch.set(cell, stateOf(column.codes, number), number);
        } else {
            readColumn(column, batch, cell, line);
        }
        ++cell;
    }
}

void RecordParser::readColumn(const Column& column, DataBatch& batch, quint32 cell, quint32 line)
{
    const std::string_view text = m_line.columns(column.start, column.width);
    if (column.type == DataVariable::Type::Binary)
        return batch.set(cell, column.blank);
    if (column.type == DataVariable::Type::Text)
        return readText(column, trailingBlanksCut(text), batch, cell, line);
    // A short line is filled up with blanks, which no number may end in.
    const bool isCut = column.start + column.width > m_line.columnCount();
    qint64 number = 0;
    NumberStatus status = readNumber(text, column.decimals, number);
    if (isCut && status != NumberStatus::Blank)
        status = NumberStatus::NotANumber;
    if (status == NumberStatus::Blank)
        return batch.set(cell, column.blank);
    if (status == NumberStatus::Number)
        return batch.set(cell, stateOf(column.codes, number), number);
    const ValueKind kind = status == NumberStatus::Unfit ? ValueKind::Unfit : ValueKind::NotANumber;
    const auto start = quint32(text.data() - m_line.text().data());
    batch.setText(cell, ValueState(kind), { line + start, quint32(text.size()) });
}

void RecordParser::readText(
    const Column& column, std::string_view text, DataBatch& batch, quint32 cell, quint32 line)
{
    if (text.empty())
        return batch.set(cell, column.blank);
    const ValueState state =
        column.codes ? column.codes->stateOf(text) : ValueState(ValueKind::Text);
    std::size_t found = m_line.isAscii() ? std::string_view::npos : text.find(lineBreak);
    if (found == std::string_view::npos) {
        const auto start = quint32(text.data() - m_line.text().data());
        return batch.setText(cell, state, { line + start, quint32(text.size()) });
    }
    std::string broken;
    std::size_t at = 0;
    for (; found != std::string_view::npos; found = text.find(lineBreak, at)) {
        broken.append(text.substr(at, found - at)) += '\n';
        at = found + lineBreak.size();
    }
    broken.append(text.substr(at));
    batch.setText(cell, state, batch.keep(broken));
}

// Equal columns need no look at their numbers; others may be the same number.
bool RecordParser::continuesCase(const Plan& plan, const DataBatch& batch, quint32 firstCell)
{
    m_nextRawKey.clear();
    for (int c = 0; c < m_firstLevelIds; ++c) {
        const Column& column = plan.columns[std::size_t(c)];
        m_nextRawKey.append(m_line.columns(column.start, column.width));
        m_nextRawKey += '\n';
    }
    const bool isSame = m_isInCase && m_nextRawKey == m_rawKey;
    if (isSame)
        return true;
    m_rawKey.swap(m_nextRawKey);
    makeKey(plan, batch, firstCell);
    const bool continues = m_isInCase && m_nextKey == m_key;
    m_key.swap(m_nextKey);
    m_isInCase = true;
    return continues;
}

void RecordParser::makeKey(const Plan& plan, const DataBatch& batch, quint32 firstCell)
{
    m_nextKey.clear();
    for (int c = 0; c < m_firstLevelIds; ++c) {
        const Column& column = plan.columns[std::size_t(c)];
        const quint32 cell = firstCell + quint32(c);
        const std::size_t end = m_nextKey.size() + std::size_t(column.width);
        if (batch.states[cell].kind() == ValueKind::Number) {
            const std::string digits = std::to_string(batch.numbers[cell]);
            if (digits.size() < std::size_t(column.width))
                m_nextKey.append(std::size_t(column.width) - digits.size(), '0');
            m_nextKey += digits;
        } else if (batch.states[cell].kind() == ValueKind::Text) {
            const std::string_view text = batch.textOf(cell);
            m_nextKey += text;
            const auto isFirstByte = [](char byte) { return (uchar(byte) & 0xC0) != 0x80; };
            const auto characters = std::count_if(text.begin(), text.end(), isFirstByte);
            m_nextKey.append(std::size_t(std::max<qint64>(0, column.width - characters)), ' ');
        } else {
            m_nextKey.resize(end, ' ');
        }
    }
}

void RecordParser::tellOddities(const Plan& plan, DataBatch& batch, DataBatch::Told told)
{
    told.caseNumber = m_caseNumber;
    const auto tell = [&](LineProblem problem) {
        told.problem = problem;
        batch.told.push_back(told);
    };
    if (m_line.hasControlCharacters())
        tell(LineProblem::ControlCharacters);
    if (m_line.columnCount() > plan.width
        && !isBlank(m_line.columns(plan.width, m_line.columnCount())))
        tell(LineProblem::TextBeyondRecord);
    if (m_line.encoding() == LineEncoding::Unknown)
        return;
    if (m_encoding == LineEncoding::Unknown)
        m_encoding = m_line.encoding();
    else if (m_encoding != m_line.encoding())
        tell(LineProblem::OtherEncoding);
}

} // namespace tessel
