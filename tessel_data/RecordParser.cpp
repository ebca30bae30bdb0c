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

// A number of plain digits behind blanks; false for the others.
bool readPlain(std::string_view text, qint64& number)
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

bool isControl(char character)
{
    return uchar(character) < 0x20;
}

bool isHigh(char character)
{
    return uchar(character) >= 0x80;
}

ValueState stateOf(const CodeTable* codes, qint64 number)
{
    return codes ? codes->stateOf(number) : ValueState(ValueKind::Number);
}

} // namespace

// As nearly all numbers of an ASCII line are; false for the others and for texts.
inline bool RecordParser::readWord(
    const Column& column, std::string_view line, ValueState& state, qint64& number)
{
    switch (column.word.read(line.data(), int(line.size()), number)) {
    case NumberWord::Content::Number:
        state = stateOf(column.codes, number);
        return true;
    case NumberWord::Content::Blank:
        state = column.blank;
        return true;
    case NumberWord::Content::Other:
        break;
    }
    return false;
}

// A column of one, blank or not.
inline bool RecordParser::readDigit(
    const Column& column, std::string_view line, ValueState& state, qint64& number)
{
    if (std::size_t(column.start) >= line.size())
        return false;
    constexpr uchar valueBits = 0x0F; // none is set in a blank
    const auto character = uchar(line[std::size_t(column.start)]);
    const ValueState read = column.digits[character];
    state = read;
    number = character & valueBits;
    return read.kind() != ValueKind::NotANumber;
}

// From the first character of a kind to behind the last one; the text has one.
RecordParser::Part RecordParser::partOf(std::string_view text, bool (*isKind)(char))
{
    const auto first = std::find_if(text.begin(), text.end(), isKind);
    const auto last = std::find_if(text.rbegin(), text.rend(), isKind);
    return { std::size_t(first - text.begin()), std::size_t(last.base() - text.begin()) };
}

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
            plan.columns.push_back({ variable.start, variable.width, variable.type,
                variable.decimals, record.columns.at(c), codes,
                codes ? codes->stateOfBlank() : ValueState(), {}, {} });
            makeQuick(plan.columns.back());
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
    m_ids.resize(std::size_t(m_firstLevelIds));
}

void RecordParser::makeQuick(Column& column)
{
    if (column.type != DataVariable::Type::Number)
        return;
    column.word = NumberWord(column.start, column.width);
    if (column.width != 1)
        return;
    column.digits.assign(256, ValueState(ValueKind::NotANumber));
    column.digits[' '] = column.blank;
    for (qint64 digit = 0; digit < 10; ++digit)
        column.digits[std::size_t('0' + digit)] = stateOf(column.codes, digit);
}

void RecordParser::beginFile(LineEncoding encoding)
{
    m_encoding = encoding;
    m_isEncodingStated = encoding != LineEncoding::Unknown;
    m_linesWithCr = 0;
    m_isInCase = false;
}

void RecordParser::setCasesGiven(bool areGiven)
{
    m_areCasesGiven = areGiven;
    if (areGiven)
        m_encoding = LineEncoding::Utf8; // as the texts of a database are, mostly
}

void RecordParser::beginCase(qint64 number)
{
    m_caseNumber = number;
    m_isInCase = true;
}

void countLine(RecordParser::Outcome outcome, SourceCounts& counts)
{
    switch (outcome) {
    case RecordParser::Outcome::Record:
        ++counts.records;
        break;
    case RecordParser::Outcome::Deleted:
        ++counts.deletedLines;
        break;
    case RecordParser::Outcome::Blank:
        ++counts.blankLines;
        break;
    case RecordParser::Outcome::Rejected:
        ++counts.rejectedLines;
        break;
    }
}

RecordParser::Outcome RecordParser::parse(
    std::string_view line, qint64 number, int file, DataBatch& batch)
{
    if (isBlank(line))
        return Outcome::Blank;
    decode(line);
    if (line[0] == '~')
        return Outcome::Deleted;
    DataBatch::Told told;
    told.file = file;
    told.line = number;
    told.caseNumber = m_areCasesGiven ? m_caseNumber : -1;
    told.record = recordOf();
    const TextRef text = told.text = batch.keep(m_line.text());
    if (told.record < 0)
        return reject(LineProblem::UnknownRecordType, batch, told);
    const int record = told.record;
    const Plan& plan = m_plans[std::size_t(record)];
    const auto firstCell = quint32(batch.states.size());
    if (!isAcceptable(plan, batch, told))
        return Outcome::Rejected;
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

void RecordParser::decode(std::string_view line)
{
    m_line.setLine(line, m_encoding, m_isEncodingStated);
    if (m_encoding == LineEncoding::Unknown)
        m_encoding = m_line.encoding();
    if (m_line.hasControlCharacters() && line.find('\r') != std::string_view::npos)
        ++m_linesWithCr;
}

int RecordParser::recordOf() const
{
    if (m_dictionary.recordTypeWidth == 0)
        return m_plans.empty() ? -1 : 0;
    const std::string_view columns =
        m_line.columns(m_dictionary.recordTypeStart, m_dictionary.recordTypeWidth);
    if (columns.size() == 1)
        return m_types[uchar(columns[0])];
    const std::string_view code = trailingBlanksCut(columns);
    if (code.size() <= 1)
        return m_types[code.empty() ? ' ' : uchar(code[0])];
    const auto found = m_longTypes.find(std::string(code));
    return found == m_longTypes.end() ? -1 : found->second;
}

// Reads the record's values; false, with its values taken back, when the line has no place.
bool RecordParser::isAcceptable(const Plan& plan, DataBatch& batch, const DataBatch::Told& told)
{
    if (m_line.columnCount() < plan.firstIdsEnd) {
        reject(LineProblem::EndsInIdentification, batch, told);
        return false;
    }
    const auto cells = quint32(batch.states.size());
    readColumns(plan, batch, told.text.start);
    const int id = unreadableId(batch, cells, plan.idCount);
    if (id < 0)
        return true;
    batch.states.resize(cells);
    batch.numbers.resize(cells);
    batch.bytes.resize(told.text.start + told.text.size);
    DataBatch::Told rejected = told;
    rejected.variable = plan.columns[std::size_t(id)].variable;
    reject(LineProblem::IdNotANumber, batch, rejected);
    return false;
}

// What its bytes are is told first, as that may be why it is rejected.
RecordParser::Outcome RecordParser::reject(
    LineProblem problem, DataBatch& batch, DataBatch::Told told)
{
    if (!m_areCasesGiven)
        told.key = readableKey(batch, told.text.start);
    tellEncoding(nullptr, batch, told);
    told.problem = problem;
    batch.told.push_back(told);
    return Outcome::Rejected;
}

// Identification of the line, which is no record; empty when any of it is blank or no number.
TextRef RecordParser::readableKey(DataBatch& batch, quint32 line)
{
    if (m_plans.empty() || m_firstLevelIds == 0)
        return {};
    const Plan& plan = m_plans.front(); // all have the identification items of the first level
    const quint32 firstCell = batch.addCells(std::size_t(m_firstLevelIds));
    bool isReadable = true;
    for (int c = 0; c < m_firstLevelIds; ++c) {
        const quint32 cell = firstCell + quint32(c);
        readColumn(plan.columns[std::size_t(c)], batch, cell, line);
        const ValueKind kind = batch.states[cell].kind();
        isReadable = isReadable && (kind == ValueKind::Number || kind == ValueKind::Text);
    }
    if (isReadable)
        makeKey(plan, batch, firstCell);
    batch.states.resize(firstCell);
    batch.numbers.resize(firstCell);
    return isReadable ? batch.keep(m_nextKey) : TextRef();
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
    const std::string_view text = m_line.text();
    ValueState* state = batch.states.data() + cell;
    qint64* number = batch.numbers.data() + cell;
    for (const Column& column : plan.columns) {
        const bool isRead = column.digits.empty() ? readWord(column, text, *state, *number)
                                                  : readDigit(column, text, *state, *number);
        if (!isRead)
            readColumn(column, batch, cell, line);
        ++state;
        ++number;
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
    if (!isCut && readPlain(text, number))
        return batch.set(cell, stateOf(column.codes, number), number);
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

// Equal numbers are the same identification; texts and others are compared as it is written.
bool RecordParser::continuesCase(const Plan& plan, const DataBatch& batch, quint32 firstCell)
{
    if (m_firstLevelIds == 0)
        return false; // nothing says which records belong together
    if (m_isInCase && hasSameIds(batch, firstCell))
        return true;
    for (std::size_t c = 0; c < m_ids.size(); ++c)
        m_ids[c] = { batch.states[firstCell + c], batch.numbers[firstCell + c] };
    makeKey(plan, batch, firstCell);
    const bool continues = m_isInCase && m_nextKey == m_key;
    m_key.swap(m_nextKey);
    m_isInCase = true;
    return continues;
}

bool RecordParser::hasSameIds(const DataBatch& batch, quint32 firstCell) const
{
    for (std::size_t c = 0; c < m_ids.size(); ++c) {
        const ValueState state = batch.states[firstCell + c];
        if (state.kind() == ValueKind::Text || state != m_ids[c].state
            || batch.numbers[firstCell + c] != m_ids[c].number)
            return false;
    }
    return true;
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
    const std::string_view text = m_line.text();
    if (m_line.hasControlCharacters())
        tellPart(LineProblem::ControlCharacters, partOf(text, isControl), &plan, batch, told);
    const std::string_view beyond = m_line.columns(plan.width, m_line.columnCount());
    if (!isBlank(beyond)) {
        DataBatch::Told rest = told;
        rest.problem = LineProblem::TextBeyondRecord;
        const std::size_t start = beyond.find_first_not_of(' ');
        rest.text.start += quint32(beyond.data() - text.data()) + quint32(start);
        rest.text.size = quint32(sizeWithoutTrailingBlanks(beyond.substr(start)));
        batch.told.push_back(rest);
    }
    tellEncoding(&plan, batch, told);
}

void RecordParser::tellEncoding(const Plan* plan, DataBatch& batch, const DataBatch::Told& told)
{
    const std::string_view text = m_line.text();
    if (m_line.hasBadBytes()) {
        tellPart(LineProblem::NotUtf8,
            { text.find(LineText::BadByte),
                text.rfind(LineText::BadByte) + LineText::BadByte.size() },
            plan, batch, told);
    } else if (m_line.isOther()) {
        tellPart(LineProblem::OtherEncoding, partOf(text, isHigh), plan, batch, told);
    }
}

// Tells the item that the part begins in, up to the end of the part, or the words of the part.
void RecordParser::tellPart(
    LineProblem problem, Part part, const Plan* plan, DataBatch& batch, DataBatch::Told told)
{
    const std::string_view text = m_line.text();
    const Column* const item = plan ? itemAt(*plan, m_line.columnAt(part.begin)) : nullptr;
    told.variable = item ? item->variable : -1;
    if (item) {
        const std::string_view columns = m_line.columns(item->start, item->width);
        part.begin = std::size_t(columns.data() - text.data());
        part.end = std::max(part.end, part.begin + columns.size());
    } else {
        while (part.begin > 0 && text[part.begin - 1] != ' ')
            --part.begin;
        part.end = std::min(text.find(' ', part.end), text.size());
    }
    const auto size = sizeWithoutTrailingBlanks(text.substr(part.begin, part.end - part.begin));
    told.problem = problem;
    told.text = { told.text.start + quint32(part.begin), quint32(size) };
    batch.told.push_back(told);
}

// Null where there is none. Subitems come behind the item that they are part of.
const RecordParser::Column* RecordParser::itemAt(const Plan& plan, int place)
{
    const auto found =
        std::find_if(plan.columns.begin(), plan.columns.end(), [place](const Column& column) {
            return place >= column.start && place < column.start + column.width;
        });
    return found == plan.columns.end() ? nullptr : &*found;
}

} // namespace tessel
