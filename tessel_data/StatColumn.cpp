#include <tessel_data/StatColumn_p.h>

#include <tessel_data/ConversionLimits_p.h>
#include <tessel_data/DatabaseTarget.h>
#include <tessel_data/StatFileWriter_p.h>

#include <model_Tessel/TrailingBlanks_p.h>

#include <QByteArray>

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace tessel {

namespace {

using Type = ConversionColumn::Type;

constexpr double LargestOfStata = 8.9884656743115785e307; // larger ones mean missing there
constexpr int LongestPlainText = 2045; // of Stata, in bytes

// Numbers of each type of Stata; those behind them mean missing.
struct TypeRange {
    Type type;
    qint64 low;
    qint64 high;
};
constexpr TypeRange wholeTypes[] = {
    { Type::Byte, -127, 100 },
    { Type::Int, -32767, 32740 },
    { Type::Long, -2147483647, 2147483620 },
};

ConversionUnit inverse(ConversionUnit unit)
{
    switch (unit) {
    case ConversionUnit::SecondsToDays:
        return ConversionUnit::DaysToSeconds;
    case ConversionUnit::SecondsToMilliseconds:
        return ConversionUnit::MillisecondsToSeconds;
    case ConversionUnit::DaysToSeconds:
        return ConversionUnit::SecondsToDays;
    case ConversionUnit::MillisecondsToSeconds:
        return ConversionUnit::SecondsToMilliseconds;
    case ConversionUnit::TimeToMilliseconds:
        return ConversionUnit::TimeToSeconds;
    case ConversionUnit::TimeToSeconds:
        return ConversionUnit::TimeToMilliseconds;
    case ConversionUnit::AsIs:
        break;
    }
    return unit;
}

// In UTF-8, whose further bytes of a character are 10xxxxxx.
std::size_t characterCount(std::string_view text)
{
    return std::size_t(
        std::count_if(text.begin(), text.end(), [](char byte) { return (byte & 0xC0) != 0x80; }));
}

// Where a character of UTF-8 begins at or before the place.
std::size_t characterAt(std::string_view text, std::size_t place)
{
    constexpr unsigned char mask = 0xC0;
    constexpr unsigned char further = 0x80;
    while (place > 0 && (static_cast<unsigned char>(text[place]) & mask) == further)
        --place;
    return place;
}

} // namespace

StatColumn::StatColumn(const ConversionColumn& column, ConversionFormat format, bool isSettled)
    : m_column(column)
    , m_isStata(format == ConversionFormat::Stata)
    , m_isSettled(isSettled)
    , m_mostPlain(column.decimals == 0 ? MostExact : MostDecimal)
    , m_scale(double(powerOfTen(column.decimals)))
    , m_mostBytes(std::size_t(limitsOf(format).textBytes))
    , m_free(column.missingBase)
{
    m_hasTags = std::any_of(column.missing.begin(), column.missing.end(),
        [](const ConversionMissing& missing) { return missing.tag != '\0'; });
}

void StatColumn::takeLabels(const ConversionLabelSet& labels)
{
    for (const ConversionLabel& label : labels.labels) {
        if (label.tag != '\0')
            m_labelledKinds |= quint32(1) << (label.tag - 'a');
        else
            m_free.take(label.number);
    }
}

char StatColumn::tagOf(double number) const
{
    for (const ConversionMissing& missing : m_column.missing) {
        if (missing.tag != '\0' && number >= missing.low && number <= missing.high)
            return missing.tag;
    }
    return '\0';
}

// SPSS has the lowest of all for a missing one.
bool StatColumn::isHeld(double number) const
{
    if (m_isStata)
        return std::abs(number) < LargestOfStata;
    return std::isfinite(number) && number != -DBL_MAX;
}

// True when its double, written with the same decimals, has the same digits.
bool StatColumn::isGivenBack(qint64 number) const
{
    const QByteArray digits = QByteArray::number(numberOf(number), 'f', m_column.decimals);
    return QByteArray(digits).replace(".", "").toLongLong() == number;
}

template <typename Sink> void StatColumn::addMissing(Sink& spool, char tag)
{
    if (tag != '\0')
        m_kinds |= quint32(1) << (tag - 'a');
    spool.addMissing(tag);
}

template <typename Sink>
void StatColumn::addExact(Sink& spool, qint64 number, Special special, ConversionCounts& counts)
{
    if (m_hasTags && special != Special::None) {
        if (const char tag = tagOf(nearestDouble(number, m_column.decimals)))
            return addMissing(spool, tag);
    }
    if (!isPlain(number))
        counts.roundedNumbers += isGivenBack(number) ? 0 : 1;
    addWhole(spool, number);
}

template <typename Sink>
void StatColumn::addReal(Sink& spool, double number, Special special, ConversionCounts& counts)
{
    const double value = converted(number, m_column.unit);
    if (m_hasTags && special != Special::None) {
        if (const char tag = tagOf(value))
            return addMissing(spool, tag);
    }
    if (!isHeld(value)) {
        ++counts.unheldNumbers;
        return addMissing(spool, '\0');
    }
    if (m_column.unit != ConversionUnit::AsIs && converted(value, inverse(m_column.unit)) != number)
        ++counts.roundedNumbers;
    constexpr double day = 86400;
    if (m_column.unit == ConversionUnit::TimeToSeconds && (value < 0 || value >= day))
        ++counts.datesAsTimes;
    m_free.take(value);
    const bool isWhole = m_column.decimals == 0 && std::abs(value) <= double(MostExact)
        && std::floor(value) == value && !(value == 0 && std::signbit(value));
    if (isWhole)
        return addWhole(spool, qint64(value));
    m_hasFractions = true;
    spool.addReal(value);
}

// A number with more digits than an exact one has here.
template <typename Sink>
void StatColumn::addUnfit(Sink& spool, std::string_view text, ConversionCounts& counts)
{
    QByteArray digits(text.data(), int(text.size()));
    digits.replace(' ', "").replace(',', '.');
    bool isNumber = false;
    const double number = digits.toDouble(&isNumber);
    if (!isNumber) {
        ++counts.notNumbers;
        return addMissing(spool, '\0');
    }
    ++counts.roundedNumbers;
    m_hasFractions = true;
    m_free.take(number);
    spool.addReal(number);
}

template <typename Sink>
void StatColumn::addText(Sink& spool, std::string_view text, ConversionCounts& counts)
{
    if (text.find('\0') != std::string_view::npos) {
        ++counts.nullCharacters;
        m_text.clear();
        for (const char character : text)
            m_text += character == '\0' ? std::string("\u2400") : std::string(1, character);
        text = m_text;
    }
    if (m_mostBytes > 0 && text.size() > m_mostBytes) {
        ++counts.cutTexts;
        text = text.substr(0, characterAt(text, m_mostBytes));
    }
    m_bytes = std::max(m_bytes, text.size());
    m_allBytes += qint64(text.size());
    if (text.size() > std::size_t(m_column.width))
        m_characters = std::max(m_characters, characterCount(text));
    spool.addText(text);
}

template <typename Sink>
void StatColumn::addOther(
    Sink& spool, const DataBatch& batch, quint32 cell, ConversionCounts& counts)
{
    const ValueState state = batch.states[cell];
    switch (state.kind()) {
    case ValueKind::Number:
        return addExact(spool, batch.numbers[cell], state.special(), counts);
    case ValueKind::Real:
        return addReal(spool, batch.realOf(cell), state.special(), counts);
    case ValueKind::Text:
        return addText(spool, batch.textOf(cell), counts);
    case ValueKind::Unfit:
        return addUnfit(spool, batch.textOf(cell), counts);
    case ValueKind::NotANumber:
        ++counts.notNumbers;
        return addMissing(spool, '\0');
    case ValueKind::Blank:
        break;
    }
    addMissing(spool, batch.missingKind(cell));
}

// Texts that Stata keeps apart are known before the first row only by themselves.
bool StatColumn::mayBeSettled(const ConversionColumn& column)
{
    return !column.isText() || column.width <= LongestPlainText;
}

Type StatColumn::type() const
{
    const Type planned = m_column.type;
    if (m_isSettled)
        return planned;
    if (m_column.isText()) {
        if (!m_isStata)
            return Type::Text;
        return m_bytes > LongestPlainText ? Type::LongText : Type::Text;
    }
    if (!m_isStata || planned >= Type::Float)
        return planned;
    if (m_hasFractions)
        return Type::Double;
    for (const TypeRange& range : wholeTypes) {
        const bool fits = m_low > m_high || (m_low >= range.low && m_high <= range.high);
        if (range.type >= planned && fits)
            return range.type;
    }
    return Type::Double;
}

// SPSS files of different rounds go together only when their texts have the same width.
int StatColumn::textBytes() const
{
    if (m_isSettled)
        return std::max(1, m_column.width);
    const int needed = std::max(1, int(m_bytes));
    if (m_isStata)
        return needed;
    return std::max(needed, std::min(m_column.width, int(m_mostBytes)));
}

double StatColumn::scaled(qint64 number) const
{
    return nearestDouble(number, m_column.decimals);
}

template void StatColumn::addOther(RowSpool&, const DataBatch&, quint32, ConversionCounts&);
template void StatColumn::addOther(StatFileWriter&, const DataBatch&, quint32, ConversionCounts&);

} // namespace tessel
