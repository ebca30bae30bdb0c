#include <tessel_data/DatabaseTarget.h>

#include <tessel_data/DataError.h>

#include <cstdlib>

namespace tessel {

namespace {

using Kind = DatabaseValue::Kind;
using Role = DatabaseColumn::Role;
using Type = DatabaseColumn::Type;

DatabaseValue integer(qint64 number)
{
    DatabaseValue value;
    value.kind = Kind::Integer;
    value.number = number;
    return value;
}

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string_view::npos
        ? std::string_view()
        : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

bool areDigits(std::string_view text)
{
    const bool hasSign = !text.empty() && text[0] == '-';
    const std::string_view digits = text.substr(hasSign ? 1 : 0);
    return !digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos;
}

} // namespace

// Both are exact as doubles up to 2 to the 53, so the quotient is rounded once only.
double nearestDouble(qint64 number, int decimals)
{
    constexpr qint64 mostExact = qint64(1) << 53;
    if (number >= -mostExact && number <= mostExact)
        return double(number) / double(powerOfTen(decimals));
    return numberText(number, decimals).toDouble();
}

DatabaseTarget::~DatabaseTarget() = default;

bool DatabaseTarget::holdsNullCharacters() const
{
    return true;
}

ExistingDatabase DatabaseTarget::openExisting()
{
    throw DataError(DataError::Code::CannotWrite, name(),
        QStringLiteral("is of a kind that nothing is added to; make it anew"));
}

DatabaseChanges DatabaseTarget::changes() const
{
    return {};
}

DatabaseValue DatabaseRows::value(std::size_t row, int column) const
{
    const Row& place = m_rows[row];
    const DatabaseColumn& definition = m_table.columns.at(column);
    switch (definition.role) {
    case Role::CaseId:
        return integer(place.caseId);
    case Role::Row:
        return integer(place.number);
    case Role::Occurrence:
        return integer(place.occurrence + 1);
    case Role::Value:
        break;
    }
    const int cell = m_table.cells[std::size_t(place.occurrence)].at(column);
    return ofCell(definition, place.firstCell + quint32(cell));
}

DatabaseValue DatabaseRows::ofCell(const DatabaseColumn& column, quint32 cell) const
{
    DatabaseValue value;
    switch (m_batch.states[cell].kind()) {
    case ValueKind::Number:
        value.kind = column.decimals > 0 ? Kind::Decimal : Kind::Integer;
        value.decimals = column.decimals;
        value.number = m_batch.numbers[cell];
        break;
    case ValueKind::Real:
        value.kind = Kind::Real;
        value.real = m_batch.realOf(cell);
        break;
    case ValueKind::Text:
        value.kind = Kind::Text;
        value.text = m_batch.textOf(cell);
        break;
    case ValueKind::Unfit: // of digits that no integer holds
        value.text = trimmed(m_batch.textOf(cell));
        if (column.type == Type::Digits && areDigits(value.text))
            value.kind = Kind::Text;
        break;
    case ValueKind::Blank:
    case ValueKind::NotANumber:
        break;
    }
    return value;
}

} // namespace tessel
