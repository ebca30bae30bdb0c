#include <tessel_data/CSProDbCells_p.h>

#include <tessel_data/DataError.h>

#include <model_Tessel/TrailingBlanks_p.h>

#include <sqlite3.h>

#include <algorithm>
#include <cmath>

namespace tessel {

namespace {

// A record of the format has 32,000 columns; rows of more text than this are damage.
constexpr std::size_t MostRowBytes = 16'777'216;

// A special value without a code is kept as a number above this.
constexpr double SpecialBound = 1e50;

constexpr int MostDigits = 18; // of a number

bool isSpecial(const SqliteQuery& row, int column)
{
    return row.type(column) == SQLITE_FLOAT && row.real(column) > SpecialBound;
}

NumberStatus scaledReal(double real, qint64 scale, qint64& number)
{
    constexpr double most = 1e18;
    const double scaled = std::nearbyint(real * double(scale));
    if (!(std::abs(scaled) <= most) || scaled / double(scale) != real)
        return NumberStatus::Unfit;
    number = qint64(scaled);
    return NumberStatus::Number;
}

// As it would stand in a line of text: sign, digits, and the point where the item has one.
bool isTooWide(qint64 number, const DataVariable& variable)
{
    const bool hasMark = variable.hasDecimalMark && variable.decimals > 0;
    const int room = std::max(0, variable.width - (number < 0 ? 1 : 0) - (hasMark ? 1 : 0));
    return room < MostDigits && (number >= powerOfTen(room) || number <= -powerOfTen(room));
}

bool isTooWide(std::string_view text, const DataVariable& variable)
{
    constexpr uchar mask = 0xC0;
    constexpr uchar further = 0x80; // bytes of a character
    const auto width = std::size_t(variable.width);
    return text.size() > width
        && std::size_t(std::count_if(
               text.begin(), text.end(), [](char byte) { return (uchar(byte) & mask) != further; }))
        > width;
}

ValueState blankOf(const DataVariable& variable)
{
    return variable.codes ? variable.codes->stateOfBlank() : ValueState();
}

} // namespace

CSProDbCells::CSProDbCells(const CSProDbRun& run)
    : m_run(run)
{
}

void CSProDbCells::beginRow()
{
    m_rowBytes = 0;
}

std::string_view CSProDbCells::textOf(const SqliteQuery& row, int column)
{
    const std::string_view text = row.text(column);
    m_rowBytes += text.size();
    if (m_rowBytes > MostRowBytes) {
        throw DataError(DataError::Code::Damaged, m_run.file.path(),
            QStringLiteral("holds more text in a row than any record has"));
    }
    m_decoded.set(text);
    return m_decoded.text();
}

std::string CSProDbCells::filledColumns(const SqliteQuery& row, int first)
{
    std::string text;
    for (int column = first; column < row.columnCount(); ++column) {
        if (row.isNull(column))
            continue;
        const bool isText = row.type(column) != SQLITE_INTEGER && row.type(column) != SQLITE_FLOAT;
        const std::string_view value = textOf(row, column);
        const std::string_view quote = isText ? "'" : "";
        text.append(row.columnName(column).toStdString()).append("=").append(quote);
        text.append(value).append(quote).append(" ");
    }
    return text;
}

void CSProDbCells::set(DataBatch& batch, quint32 cell, const DataVariable& variable,
    const SqliteQuery& row, int column)
{
    if (row.isNull(column) || variable.type == DataVariable::Type::Binary)
        batch.set(cell, blankOf(variable));
    else if (variable.type == DataVariable::Type::Text)
        setText(batch, cell, variable, textOf(row, column));
    else
        setNumber(batch, cell, variable, row, column);
}

// The texts of a database are UTF-8, unless another program wrote one.
void CSProDbCells::setText(
    DataBatch& batch, quint32 cell, const DataVariable& variable, std::string_view text)
{
    const std::string_view value = trailingBlanksCut(text);
    if (value.empty())
        return batch.set(cell, blankOf(variable));
    const CodeTable* const codes = variable.codes.get();
    const TextRef kept = batch.keep(value);
    batch.setText(cell, codes ? codes->stateOf(value) : ValueState(ValueKind::Text), kept);
    if (m_decoded.encoding() == LineEncoding::Windows1252)
        tell(batch, LineProblem::OtherEncoding, variable, kept);
    if (isTooWide(value, variable))
        tell(batch, LineProblem::TooWideValue, variable, kept);
}

void CSProDbCells::setNumber(DataBatch& batch, quint32 cell, const DataVariable& variable,
    const SqliteQuery& row, int column)
{
    if (isSpecial(row, column)) {
        tell(batch, LineProblem::SpecialWithoutCode, variable, batch.keep(textOf(row, column)));
        return batch.set(cell, ValueState(ValueKind::Blank, Special::Missing));
    }
    const CodeTable* const codes = variable.codes.get();
    qint64 number = 0;
    const NumberStatus status = readColumn(row, column, variable.decimals, number);
    switch (status) {
    case NumberStatus::Blank:
        return batch.set(cell, blankOf(variable));
    case NumberStatus::Number:
        batch.set(cell, codes ? codes->stateOf(number) : ValueState(ValueKind::Number), number);
        if (isTooWide(number, variable))
            tell(batch, LineProblem::TooWideValue, variable, batch.keep(textOf(row, column)));
        return;
    case NumberStatus::NotANumber:
    case NumberStatus::Unfit:
        break;
    }
    const bool isUnfit = status == NumberStatus::Unfit;
    batch.setText(cell, ValueState(isUnfit ? ValueKind::Unfit : ValueKind::NotANumber),
        batch.keep(textOf(row, column)));
}

// Numbers stand with their decimals in place, whole ones as integers.
NumberStatus CSProDbCells::readColumn(
    const SqliteQuery& row, int column, int decimals, qint64& number) const
{
    const qint64 scale = powerOfTen(decimals);
    switch (row.type(column)) {
    case SQLITE_INTEGER:
        return __builtin_mul_overflow(row.integer(column), scale, &number) ? NumberStatus::Unfit
                                                                           : NumberStatus::Number;
    case SQLITE_FLOAT:
        return scaledReal(row.real(column), scale, number);
    default:
        return readCode(trailingBlanksCut(row.text(column)), decimals, number);
    }
}

void CSProDbCells::tell(
    DataBatch& batch, LineProblem problem, const DataVariable& variable, TextRef text)
{
    const auto index = int(&variable - m_run.dictionary.variables.data());
    batch.told.push_back(m_run.told(problem, index));
    batch.told.back().text = text;
}

} // namespace tessel
