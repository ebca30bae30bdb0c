#include <tessel_data/CSProDbKey_p.h>

#include <tessel_data/DataValue.h>

#include <model_Tessel/TrailingBlanks_p.h>

namespace tessel {

CSProDbKey::CSProDbKey(const DataDictionary& dictionary, const DataDictionary& ofFile)
    : m_parts(partsOf(dictionary))
    , m_isComparable(!m_parts.empty() && m_parts == partsOf(ofFile))
{
}

std::vector<CSProDbKey::Part> CSProDbKey::partsOf(const DataDictionary& dictionary)
{
    std::vector<Part> parts;
    int start = 0;
    for (const int id : dictionary.ids) {
        const DataVariable& variable = dictionary.variables[std::size_t(id)];
        if (variable.level != 1)
            continue;
        const bool isNumber = variable.type == DataVariable::Type::Number;
        parts.push_back(
            { variable.name.toStdString(), start, variable.width, variable.decimals, isNumber });
        start += variable.width;
    }
    return parts;
}

bool CSProDbKey::differs(std::string_view key, const DataBatch& batch, quint32 firstCell)
{
    if (!m_isComparable)
        return false;
    m_key.set(key);
    for (std::size_t i = 0; i < m_parts.size(); ++i) {
        const Part& part = m_parts[i];
        if (!isSame(part, m_key.columns(part.start, part.width), batch, firstCell + quint32(i)))
            return true;
    }
    const int end = m_parts.back().start + m_parts.back().width;
    return !trailingBlanksCut(m_key.columns(end, m_key.columnCount())).empty();
}

// Numbers stand in a key with blanks or zeros before them. An unreadable item is told of itself.
bool CSProDbKey::isSame(
    const Part& part, std::string_view text, const DataBatch& batch, quint32 cell)
{
    const ValueKind kind = batch.states[cell].kind();
    if (kind == ValueKind::Blank)
        return trailingBlanksCut(text).empty();
    if (kind == ValueKind::Text)
        return trailingBlanksCut(text) == batch.textOf(cell);
    qint64 number = 0;
    return kind != ValueKind::Number || !part.isNumber
        || (readNumber(text, part.decimals, number) == NumberStatus::Number
            && number == batch.numbers[cell]);
}

std::string CSProDbKey::idsText(const DataBatch& batch, quint32 firstCell) const
{
    std::string text;
    for (std::size_t i = 0; i < m_parts.size(); ++i) {
        const quint32 cell = firstCell + quint32(i);
        const ValueKind kind = batch.states[cell].kind();
        text += (text.empty() ? "" : " ") + m_parts[i].name + "=";
        if (kind == ValueKind::Number)
            text += numberText(batch.numbers[cell], m_parts[i].decimals).toStdString();
        else if (kind != ValueKind::Blank)
            text += batch.textOf(cell);
    }
    return text;
}

} // namespace tessel
