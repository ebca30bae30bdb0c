#include "reading/LabelledValues.h"

#include "reading/StatFile.h"

#include <model_Tessel/StatInput.h>

#include <QFile>
#include <QHash>
#include <QSet>

#include <readstat.h>

#include <algorithm>
#include <cstring>
#include <memory>

namespace {

// Read in seconds; a larger file would take too long for what is learnt of it.
constexpr qint64 MostCells = 50'000'000;

QByteArray withoutBlanks(QByteArray text)
{
    int length = text.size();
    while (length > 0 && text.at(length - 1) == ' ')
        --length;
    text.truncate(length);
    return text;
}

// The codes of a value set as rows have them.
struct Codes {
    QSet<double> numbers;
    QSet<QByteArray> texts;

    explicit Codes(const ListedValueSet& valueSet)
    {
        for (const ListedCode& entry : valueSet.codes) {
            bool isNumber = false;
            const double number = entry.code.toDouble(&isNumber);
            if (isNumber)
                numbers.insert(number);
            texts.insert(withoutBlanks(entry.code.toUtf8()));
        }
    }

    bool contains(readstat_value_t value) const
    {
        if (readstat_value_type_class(value) == READSTAT_TYPE_CLASS_NUMERIC)
            return numbers.contains(readstat_double_value(value));
        return texts.contains(withoutBlanks(readstat_string_value(value)));
    }
};

// A blank text is loaded like a missing number.
bool isMissing(readstat_value_t value)
{
    if (readstat_value_is_system_missing(value) || readstat_value_is_tagged_missing(value))
        return true;
    if (readstat_value_type_class(value) != READSTAT_TYPE_CLASS_STRING)
        return false;
    const char* text = readstat_string_value(value);
    return !text || withoutBlanks(text).isEmpty();
}

class RowReader {
public:
    explicit RowReader(const Listing& listing);

    // False when the rows did not end well.
    bool read(TStatInput& input, bool isSpss);

    bool hasOnlyListed(int field) const
    {
        return m_columns.at(field).hasValues && !m_columns.at(field).hasOthers;
    }

private:
    struct Column {
        QString name;
        std::shared_ptr<const Codes> codes; // null: the field has none
        bool hasValues = false;
        bool hasOthers = false;
    };

    static int onVariable(
        int index, readstat_variable_t* variable, const char* labelSet, void* context);
    static int onValue(
        int row, readstat_variable_t* variable, readstat_value_t value, void* context);

    QVector<Column> m_columns; // of the fields
    qint64 m_rowLimit;
    int m_lastRow = -1;
};

// Variables of one label set share its codes.
RowReader::RowReader(const Listing& listing)
    : m_rowLimit(MostCells / std::max(1, listing.fields.size()))
{
    QHash<const ListedCode*, std::shared_ptr<const Codes>> known;
    m_columns.reserve(listing.fields.size());
    for (const ListedField& field : listing.fields) {
        Column column;
        column.name = field.name;
        if (field.valueLabelCount() > 0) {
            const ListedValueSet& valueSet = field.valueSets.constFirst();
            std::shared_ptr<const Codes>& codes = known[valueSet.codes.constData()];
            if (!codes)
                codes = std::make_shared<const Codes>(valueSet);
            column.codes = codes;
        }
        m_columns.append(column);
    }
}

int RowReader::onVariable(
    int index, readstat_variable_t* variable, const char* /*labelSet*/, void* context)
{
    const QVector<Column>& columns = static_cast<const RowReader*>(context)->m_columns;
    const bool isKnown = index < columns.size() && columns.at(index).codes
        && columns.at(index).name
            == QString::fromUtf8(
                variable->name, int(::strnlen(variable->name, sizeof variable->name)));
    return isKnown ? READSTAT_HANDLER_OK : READSTAT_HANDLER_SKIP_VARIABLE;
}

int RowReader::onValue(
    int row, readstat_variable_t* variable, readstat_value_t value, void* context)
{
    auto& reader = *static_cast<RowReader*>(context);
    reader.m_lastRow = row;
    Column& column = reader.m_columns[readstat_variable_get_index(variable)];
    if (column.hasOthers || isMissing(value))
        return READSTAT_HANDLER_OK;
    column.hasValues = true;
    column.hasOthers = !column.codes->contains(value);
    return READSTAT_HANDLER_OK;
}

bool RowReader::read(TStatInput& input, bool isSpss)
{
    const std::unique_ptr<readstat_parser_t, void (*)(readstat_parser_t*)> parser(
        readstat_parser_init(), readstat_parser_free);
    if (!parser)
        return false;
    input.attachTo(parser.get());
    readstat_set_variable_handler(parser.get(), onVariable);
    readstat_set_value_handler(parser.get(), onValue);
    readstat_set_row_limit(parser.get(), long(m_rowLimit));
    const auto parse = isSpss ? readstat_parse_sav : readstat_parse_dta;
    const readstat_error_t error =
        parse(parser.get(), QFile::encodeName(input.path()).constData(), this);
    return error == READSTAT_OK && m_lastRow + 1 < m_rowLimit;
}

} // namespace

bool findListedValues(Listing& listing)
{
    if (listing.hasRecords() || !listing.input)
        return true;
    RowReader reader(listing);
    const bool isRead = reader.read(*listing.input, listing.kind == ListingKind::Spss);
    if (!checkRead(*listing.input))
        listing.isPartial = true;
    if (!isRead || !listing.input->failure().isEmpty())
        return false;
    for (int i = 0; i < listing.fields.size(); ++i)
        listing.fields[i].areValuesListed = reader.hasOnlyListed(i);
    return true;
}
