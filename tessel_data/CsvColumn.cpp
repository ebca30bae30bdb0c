#include <tessel_data/CsvColumn_p.h>

#include <algorithm>

namespace tessel {

namespace {

constexpr std::string_view nullPicture = "\xE2\x90\x80";

qint64 charactersOf(std::string_view text)
{
    return std::count_if(
        text.begin(), text.end(), [](char byte) { return (uchar(byte) & 0xC0) != 0x80; });
}

QString textOf(std::string_view text)
{
    return QString::fromUtf8(text.data(), int(text.size()));
}

std::string withPictures(std::string_view text)
{
    std::string result;
    for (const char character : text) {
        if (character == '\0')
            result.append(nullPicture);
        else
            result.push_back(character);
    }
    return result;
}

} // namespace

CsvLabels::CsvLabels(const CsvCodes& codes, CodeTable codeTable, const CsvBytes& csv)
    : table(std::move(codeTable))
{
    for (const CsvCode& code : codes.codes()) {
        const auto entry = std::size_t(code.entry);
        const QString label = codes.labelCell(code);
        cells.resize(std::max(cells.size(), entry + 1));
        if (label.isEmpty())
            continue;
        cells[entry] = csv.cellOf(label.toStdString());
        if (code.kind != '\0')
            missing[code.kind - 'a'] = cells[entry];
        if (codes.isReadable(label)) {
            readable.insert(label);
            readable.insert(codes.labelOf(code)); // without an apostrophe
        }
    }
}

CsvColumn::CsvColumn(const ConversionColumn& column, const DataVariable* variable,
    std::shared_ptr<const CsvLabels> labels)
    : m_role(column.role)
    , m_source(column.source)
    , m_decimals(variable && variable->type == DataVariable::Type::Number ? column.decimals : 0)
    , m_labels(std::move(labels))
{
}

bool CsvColumn::addLabel(CsvBytes& out, const CodeTable::Match& match)
{
    const std::string* const cell = m_labels->cell(match);
    if (cell)
        out.addCell(*cell);
    return cell != nullptr;
}

void CsvColumn::addBlank(CsvBytes& out, char missingKind)
{
    m_hasBlanks = true;
    if (missingKind == '\0') {
        if (!m_labels || !addLabel(out, m_labels->table.blank()))
            out.addNothing();
        return;
    }
    const std::string* const label = m_labels ? &m_labels->missing[missingKind - 'a'] : nullptr;
    const char name[] = { '.', missingKind };
    out.addCell(
        label && !label->empty() ? std::string_view(*label) : std::string_view(name, sizeof name));
}

void CsvColumn::addText(CsvBytes& out, std::string_view text, ConversionCounts& counts)
{
    m_longest =
        qint64(text.size()) > m_longest ? std::max(m_longest, charactersOf(text)) : m_longest;
    if (text.find('\0') == std::string_view::npos)
        return out.addText(text);
    ++counts.nullCharacters;
    out.addText(withPictures(text));
}

// Nobody could tell a value without a label from the labels of others.
void CsvColumn::countLikeLabel(const QString& cell, ConversionCounts& counts)
{
    counts.valuesLikeLabels += m_labels->readable.contains(cell) ? 1 : 0;
}

void CsvColumn::addRare(
    CsvBytes& out, const DataBatch& batch, quint32 cell, ConversionCounts& counts)
{
    const ValueState state = batch.states[cell];
    switch (state.kind()) {
    case ValueKind::Blank:
        return addBlank(out, batch.missingKind(cell));
    case ValueKind::Number:
        if (m_labels && addLabel(out, m_labels->table.find(batch.numbers[cell])))
            return;
        if (m_labels && !m_labels->readable.isEmpty())
            countLikeLabel(numberText(batch.numbers[cell], m_decimals), counts);
        return out.addNumber(batch.numbers[cell], m_decimals);
    case ValueKind::Real:
        if (m_labels && addLabel(out, m_labels->table.find(batch.realOf(cell))))
            return;
        if (m_labels && !m_labels->readable.isEmpty())
            countLikeLabel(realText(batch.realOf(cell)), counts);
        return out.addReal(batch.realOf(cell));
    case ValueKind::Text:
        if (m_labels && addLabel(out, m_labels->table.find(batch.textOf(cell))))
            return;
        if (m_labels && !m_labels->readable.isEmpty())
            countLikeLabel(textOf(batch.textOf(cell)), counts);
        return addText(out, batch.textOf(cell), counts);
    case ValueKind::Unfit:
    case ValueKind::NotANumber:
        break;
    }
    m_hasOthers = true;
    const std::string number = state.kind() == ValueKind::Unfit
        ? decimalText(batch.textOf(cell), m_decimals)
        : std::string();
    if (!number.empty())
        return out.addText(number);
    ++counts.notNumbers;
    addNothing(out);
}

std::string decimalText(std::string_view text, int decimals)
{
    std::string digits;
    bool isNegative = false;
    bool hasPoint = false;
    for (const char character : text) {
        if (character >= '0' && character <= '9') {
            digits += character;
        } else if ((character == '.' || character == ',') && !hasPoint) {
            hasPoint = true;
            digits += '.';
        } else if (character == '-') {
            isNegative = true;
        } else if (character != ' ' && character != '+') {
            return {};
        }
    }
    if (!hasPoint && decimals > 0) {
        const auto places = std::size_t(decimals);
        if (digits.size() <= places)
            digits.insert(0, places + 1 - digits.size(), '0');
        digits.insert(digits.size() - places, 1, '.');
    }
    const std::size_t first = std::min(digits.find_first_not_of('0'), digits.size());
    digits.erase(0, first);
    if (digits.empty() || digits[0] == '.')
        digits.insert(0, 1, '0');
    if (digits.back() == '.')
        digits.pop_back();
    return isNegative ? '-' + digits : digits;
}

} // namespace tessel
