#include <tessel_data/PostgresRows_p.h>

#include <tessel_data/DataError.h>
#include <tessel_data/SqlTypes.h>

#include <QtEndian>

#include <algorithm>
#include <string>

namespace tessel {

namespace {

using Kind = DatabaseValue::Kind;
using Role = DatabaseColumn::Role;
using Type = DatabaseColumn::Type;

constexpr std::size_t MostOfValue = 32; // bytes of a number of up to 18 digits
constexpr int DigitsOfGroup = 4; // of NUMERIC
constexpr int GroupBase = 10'000;

template <typename Number> char* put(char* out, Number number)
{
    qToBigEndian(number, out);
    return out + sizeof(Number);
}

// With its length before it.
char* putSized(char* out, qint64 number)
{
    return put(put(out, qint32(sizeof(qint64))), number);
}

char* putReal(char* out, double number)
{
    qint64 bits = 0;
    std::memcpy(&bits, &number, sizeof(bits));
    return putSized(out, bits);
}

char* putNull(char* out)
{
    return put(out, qint32(-1));
}

char* putBytes(char* out, std::string_view bytes)
{
    out = put(out, qint32(bytes.size()));
    std::memcpy(out, bytes.data(), bytes.size());
    return out + bytes.size();
}

// ASCII without null characters, as nearly every text is.
bool isPlain(std::string_view text)
{
    return std::all_of(
        text.begin(), text.end(), [](char character) { return qint8(character) > 0; });
}

// Groups of four digits before and behind the point, the first one's power of the base.
struct Numeric {
    const qint16* groups;
    int count;
    int weight;
    bool isNegative;
    int decimals;
};

// Zeros at either end are not written.
char* putNumeric(char* out, Numeric number)
{
    constexpr quint16 minus = 0x4000;
    constexpr int head = 4; // numbers
    for (; number.count > 0 && number.groups[number.count - 1] == 0; --number.count) { }
    for (; number.count > 0 && number.groups[0] == 0; --number.count) {
        ++number.groups;
        --number.weight;
    }
    const bool isZero = number.count == 0;
    out = put(out, qint32(std::size_t(head + number.count) * sizeof(qint16)));
    out = put(out, qint16(number.count));
    out = put(out, qint16(isZero ? 0 : number.weight));
    out = put(out, number.isNegative && !isZero ? minus : quint16(0));
    out = put(out, qint16(number.decimals));
    for (int i = 0; i < number.count; ++i)
        out = put(out, number.groups[i]);
    return out;
}

char* putNumeric(char* out, qint64 scaled, int decimals)
{
    constexpr int most = 2 * 5; // groups of 18 digits on either side
    constexpr int middle = most / 2;
    const quint64 size = scaled < 0 ? -quint64(scaled) : quint64(scaled);
    const auto power = quint64(powerOfTen(decimals));
    const int behind = (decimals + DigitsOfGroup - 1) / DigitsOfGroup;
    qint16 groups[most] = {};
    quint64 whole = size / power;
    int first = middle;
    for (; whole > 0; whole /= GroupBase)
        groups[--first] = qint16(whole % GroupBase);
    // The last group is filled up with zeros, apart from the others: together they might not fit.
    quint64 part = size % power;
    const int inLast = decimals - (behind - 1) * DigitsOfGroup;
    if (behind > 0) {
        const auto cut = quint64(powerOfTen(inLast));
        groups[middle + behind - 1] =
            qint16(part % cut * quint64(powerOfTen(DigitsOfGroup - inLast)));
        part /= cut;
    }
    for (int g = middle + behind - 2; g >= middle; --g, part /= GroupBase)
        groups[g] = qint16(part % GroupBase);
    return putNumeric(
        out, { groups + first, middle + behind - first, middle - first - 1, scaled < 0, decimals });
}

// Of a whole number of any number of digits.
std::vector<qint16> groupsOf(std::string digits)
{
    const std::size_t group = DigitsOfGroup;
    digits.insert(0, (group - digits.size() % group) % group, '0');
    std::vector<qint16> groups;
    for (std::size_t i = 0; i < digits.size(); i += group)
        groups.push_back(qint16(std::stoi(digits.substr(i, group))));
    return groups;
}

std::string withPictures(std::string_view text)
{
    static const std::string_view picture = "\xE2\x90\x80";
    std::string shown;
    for (const char character : text) {
        if (character == '\0')
            shown.append(picture);
        else
            shown.push_back(character);
    }
    return shown;
}

} // namespace

PostgresRows::PostgresRows(const DatabaseTable& table)
    : m_table(table)
    , m_room(std::size_t(table.columns.size() + 1) * MostOfValue)
{
    for (const DatabaseColumn& column : table.columns)
        m_fields.push_back(
            { column.role, column.type, column.decimals, sqlIntegerBytes(column.digits) });
}

std::string_view PostgresRows::header()
{
    return { "PGCOPY\n\xFF\r\n\0\0\0\0\0\0\0\0\0", 19 };
}

std::string_view PostgresRows::trailer()
{
    return "\xFF\xFF";
}

std::size_t PostgresRows::append(
    PostgresBytes& bytes, const DatabaseRows& rows, std::size_t first, std::size_t full)
{
    std::size_t row = first;
    for (; row < rows.count() && bytes.size() < full; ++row)
        appendRow(bytes, rows, row);
    return row;
}

void PostgresRows::append(PostgresBytes& bytes, const std::vector<qint64>& numbers)
{
    char* out = put(bytes.room((1 + numbers.size()) * MostOfValue), qint16(numbers.size()));
    for (const qint64 number : numbers)
        out = putSized(out, number);
    bytes.endAt(out);
}

// Most values are small.
inline char* PostgresRows::putWhole(char* out, std::size_t column, qint64 number) const
{
    const int bytes = m_fields[column].bytes;
    if (bytes == int(sizeof(qint16)) && number == qint16(number))
        return put(put(out, qint32(bytes)), qint16(number));
    if (bytes == int(sizeof(qint32)) && number == qint32(number))
        return put(put(out, qint32(bytes)), qint32(number));
    if (bytes == int(sizeof(qint64)))
        return putSized(out, number);
    fail(column);
}

void PostgresRows::appendRow(PostgresBytes& bytes, const DatabaseRows& rows, std::size_t row)
{
    const DatabaseRows::Row& place = rows.row(row);
    const int* const cells = m_table.cells[std::size_t(place.occurrence)].constData();
    char* out = put(bytes.room(m_room), qint16(m_fields.size()));
    for (std::size_t c = 0; c < m_fields.size(); ++c) {
        switch (m_fields[c].role) {
        case Role::CaseId:
            out = putSized(out, place.caseId);
            break;
        case Role::Row:
            out = putSized(out, place.number);
            break;
        case Role::Occurrence:
            out = putSized(out, place.occurrence + 1);
            break;
        case Role::Value:
            out = putCell(bytes, out, rows, row, c, place.firstCell + quint32(cells[c]));
            break;
        }
    }
    bytes.endAt(out);
}

// What nearly all cells hold; putOther() knows the rest.
char* PostgresRows::putCell(PostgresBytes& bytes, char* out, const DatabaseRows& rows,
    std::size_t row, std::size_t column, quint32 cell)
{
    const DataBatch& batch = rows.batch();
    const Field& field = m_fields[column];
    const ValueKind kind = batch.states[cell].kind();
    if (kind == ValueKind::Number && field.type == Type::Integer && field.decimals == 0)
        return putWhole(out, column, batch.numbers[cell]);
    if (kind == ValueKind::Blank)
        return putNull(out);
    if (kind == ValueKind::Number && field.type == Type::Decimal)
        return putNumeric(out, batch.numbers[cell], std::max(0, field.decimals));
    if (kind == ValueKind::Text && field.type == Type::Text)
        return putText(bytes, out, batch.textOf(cell));
    return putOther(bytes, out, rows, row, column);
}

void PostgresRows::fail(std::size_t column) const
{
    throw DataError(DataError::Code::DoesNotAddUp, m_table.columns.at(int(column)).name,
        QStringLiteral("is a column that a value does not fit; this is an error of the program"));
}

// What is no UTF-8 is taken for Windows-1252, as in all that is read.
char* PostgresRows::putText(PostgresBytes& bytes, char* out, std::string_view original)
{
    std::string shown;
    std::string_view text = original;
    if (!isPlain(original)) {
        m_line.set(original);
        text = m_line.text();
        if (text.find('\0') != std::string_view::npos)
            text = shown = withPictures(text);
    }
    bytes.endAt(out);
    return putBytes(bytes.room(text.size() + m_room), text);
}

char* PostgresRows::putDigits(PostgresBytes& bytes, char* out, std::string_view text)
{
    const bool isNegative = !text.empty() && text[0] == '-';
    const std::vector<qint16> groups = groupsOf(std::string(text.substr(isNegative ? 1 : 0)));
    const int count = int(groups.size());
    bytes.endAt(out);
    out = bytes.room(groups.size() * sizeof(qint16) + m_room);
    return putNumeric(out, { groups.data(), count, count - 1, isNegative, 0 });
}

char* PostgresRows::putOther(
    PostgresBytes& bytes, char* out, const DatabaseRows& rows, std::size_t row, std::size_t column)
{
    const DatabaseValue value = rows.value(row, int(column));
    const Type type = m_fields[column].type;
    const bool isExact = value.kind == Kind::Integer || value.kind == Kind::Decimal;
    if (value.kind == Kind::Null)
        return putNull(out);
    if (type == Type::Real && value.kind == Kind::Real)
        return putReal(out, value.real);
    if (type == Type::Real && isExact)
        return putReal(out, nearestDouble(value.number, value.decimals));
    if ((type == Type::Decimal || type == Type::Digits) && isExact)
        return putNumeric(out, value.number, value.decimals);
    if (type == Type::Digits && value.kind == Kind::Text)
        return putDigits(bytes, out, value.text);
    fail(column);
}

} // namespace tessel
