#include <tessel_data/PostgresRows_p.h>

#include <tessel_data/DataError.h>
#include <tessel_data/LineText_p.h>

#include <QtEndian>

#include <cstring>

namespace tessel {

namespace {

using Kind = DatabaseValue::Kind;
using Type = DatabaseColumn::Type;

template <typename Number> void put(std::string& bytes, Number number)
{
    const Number swapped = qToBigEndian(number);
    char raw[sizeof(Number)];
    std::memcpy(raw, &swapped, sizeof(Number));
    bytes.append(raw, sizeof(Number));
}

// With its length before it, in one step: most values are such.
void putSized(std::string& bytes, qint64 number)
{
    constexpr std::size_t size = sizeof(qint32) + sizeof(qint64);
    const qint32 length = qToBigEndian(qint32(sizeof(qint64)));
    const qint64 swapped = qToBigEndian(number);
    char raw[size];
    std::memcpy(raw, &length, sizeof(length));
    std::memcpy(raw + sizeof(length), &swapped, sizeof(swapped));
    bytes.append(raw, size);
}

void putReal(std::string& bytes, double number)
{
    qint64 bits = 0;
    std::memcpy(&bits, &number, sizeof(bits));
    putSized(bytes, bits);
}

void putNull(std::string& bytes)
{
    put(bytes, qint32(-1));
}

// What is no UTF-8 is taken for Windows-1252, as in all that is read.
void putText(std::string& bytes, LineText& line, std::string_view original)
{
    static const std::string_view picture = "\xE2\x90\x80";
    line.set(original);
    const std::string_view text = line.text();
    if (!line.hasControlCharacters() || text.find('\0') == std::string_view::npos) {
        put(bytes, qint32(text.size()));
        bytes.append(text);
        return;
    }
    std::string shown;
    for (const char character : text) {
        if (character == '\0')
            shown.append(picture);
        else
            shown.push_back(character);
    }
    put(bytes, qint32(shown.size()));
    bytes.append(shown);
}

// Digits before and behind the point, in groups of four, without the zeros at either end.
void putNumeric(std::string& bytes, bool isNegative, std::string digits, int decimals)
{
    constexpr std::size_t group = 4;
    constexpr quint16 minus = 0x4000;
    const auto behind = std::size_t(decimals);
    if (digits.size() < behind)
        digits.insert(0, behind - digits.size(), '0');
    digits.insert(0, (group - (digits.size() - behind) % group) % group, '0');
    const std::size_t before = digits.size() - behind;
    digits.append((group - behind % group) % group, '0');
    std::vector<qint16> groups;
    for (std::size_t i = 0; i < digits.size(); i += group) {
        constexpr int ten = 10;
        int number = 0;
        for (std::size_t d = i; d < i + group; ++d)
            number = number * ten + (digits[d] - '0');
        groups.push_back(qint16(number));
    }
    auto weight = int(before / group) - 1;
    while (!groups.empty() && groups.back() == 0)
        groups.pop_back();
    const auto zeros = std::find_if(groups.begin(), groups.end(), [](qint16 g) { return g != 0; });
    weight = groups.empty() ? 0 : weight - int(zeros - groups.begin());
    groups.erase(groups.begin(), zeros);
    constexpr std::size_t head = 4; // numbers
    put(bytes, qint32((head + groups.size()) * sizeof(qint16)));
    put(bytes, qint16(groups.size()));
    put(bytes, qint16(weight));
    put(bytes, isNegative && !groups.empty() ? minus : quint16(0));
    put(bytes, qint16(decimals));
    for (const qint16 number : groups)
        put(bytes, number);
}

void putNumeric(std::string& bytes, std::string_view text)
{
    const bool isNegative = !text.empty() && text[0] == '-';
    putNumeric(bytes, isNegative, std::string(text.substr(isNegative ? 1 : 0)), 0);
}

void putNumeric(std::string& bytes, const DatabaseValue& value)
{
    const quint64 size = value.number < 0 ? -quint64(value.number) : quint64(value.number);
    putNumeric(bytes, value.number < 0, std::to_string(size), value.decimals);
}

// False: the column does not take values of this kind.
bool putNumber(std::string& bytes, Type type, const DatabaseValue& value)
{
    const bool isExact = value.kind == Kind::Integer || value.kind == Kind::Decimal;
    if (type == Type::Integer && value.kind == Kind::Integer)
        putSized(bytes, value.number);
    else if (type == Type::Real && value.kind == Kind::Real)
        putReal(bytes, value.real);
    else if (type == Type::Real && isExact)
        putReal(bytes, nearestDouble(value.number, value.decimals));
    else if ((type == Type::Decimal || type == Type::Digits) && isExact)
        putNumeric(bytes, value);
    else if (type == Type::Digits && value.kind == Kind::Text)
        putNumeric(bytes, value.text);
    else
        return false;
    return true;
}

void putValue(
    std::string& bytes, LineText& line, const DatabaseColumn& column, const DatabaseValue& value)
{
    if (value.kind == Kind::Null) {
        putNull(bytes);
    } else if (column.type == Type::Text && value.kind == Kind::Text) {
        putText(bytes, line, value.text);
    } else if (!putNumber(bytes, column.type, value)) {
        throw DataError(DataError::Code::DoesNotAddUp, column.name,
            QStringLiteral("is a column that a value does not fit; this is an error of the "
                           "program"));
    }
}

} // namespace

std::string_view PostgresRows::header()
{
    return { "PGCOPY\n\xFF\r\n\0\0\0\0\0\0\0\0\0", 19 };
}

std::string_view PostgresRows::trailer()
{
    return "\xFF\xFF";
}

void PostgresRows::append(std::string& bytes, const DatabaseTable& table, const DatabaseRows& rows)
{
    LineText line;
    const int columns = table.columns.size();
    for (std::size_t row = 0; row < rows.count(); ++row) {
        put(bytes, qint16(columns));
        for (int c = 0; c < columns; ++c)
            putValue(bytes, line, table.columns.at(c), rows.value(row, c));
    }
}

void PostgresRows::append(std::string& bytes, const std::vector<qint64>& numbers)
{
    put(bytes, qint16(numbers.size()));
    for (const qint64 number : numbers)
        putSized(bytes, number);
}

} // namespace tessel
