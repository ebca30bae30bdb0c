#include <model_Tessel/StatRows.h>

#include <model_Tessel/StatParser_p.h>
#include <model_Tessel/TrailingBlanks_p.h>

#include <QFile>

#include <algorithm>
#include <cstring>

namespace {

// Read in seconds; a larger file would take too long for what is learnt of it.
constexpr qint64 MostCells = 50'000'000;

bool isString(readstat_value_t value)
{
    return readstat_value_type_class(value) == READSTAT_TYPE_CLASS_STRING;
}

// A blank text is loaded like a missing number.
bool isMissing(readstat_value_t value)
{
    if (readstat_value_is_system_missing(value) || readstat_value_is_tagged_missing(value))
        return true;
    return isString(value) && trailingBlanksCut(QByteArray(readstat_string_value(value))).isEmpty();
}

class RowReader {
public:
    explicit RowReader(QVector<TStatCodedVariable>& variables)
        : m_variables(variables)
        , m_rowLimit(MostCells / std::max(1, variables.size()))
    {
    }

    bool read(TStatInput& input, StatParse parse);

private:
    static int onVariable(
        int index, readstat_variable_t* variable, const char* labelSet, void* context);
    static int onValue(
        int row, readstat_variable_t* variable, readstat_value_t value, void* context);

    bool isWanted(int index, const readstat_variable_t& variable) const;
    void compare(int index, readstat_value_t value);

    QVector<TStatCodedVariable>& m_variables;
    qint64 m_rowLimit;
    int m_lastRow = -1;
    CallbackGuard m_guard;
};

bool RowReader::isWanted(int index, const readstat_variable_t& variable) const
{
    return index < m_variables.size() && m_variables.at(index).codes
        && m_variables.at(index).name
        == QString::fromUtf8(variable.name, int(::strnlen(variable.name, sizeof variable.name)));
}

int RowReader::onVariable(
    int index, readstat_variable_t* variable, const char* /*labelSet*/, void* context)
{
    auto& reader = *static_cast<RowReader*>(context);
    bool isWanted = false;
    const int result = reader.m_guard.run([&] { isWanted = reader.isWanted(index, *variable); });
    return result != READSTAT_HANDLER_OK || isWanted ? result : READSTAT_HANDLER_SKIP_VARIABLE;
}

int RowReader::onValue(
    int row, readstat_variable_t* variable, readstat_value_t value, void* context)
{
    auto& reader = *static_cast<RowReader*>(context);
    reader.m_lastRow = row;
    return reader.m_guard.run(
        [&] { reader.compare(readstat_variable_get_index(variable), value); });
}

void RowReader::compare(int index, readstat_value_t value)
{
    TStatCodedVariable& variable = m_variables[index];
    if (variable.hasOthers || isMissing(value))
        return;
    variable.hasValues = true;
    variable.hasOthers = !variable.codes->contains(value);
}

bool RowReader::read(TStatInput& input, StatParse parse)
{
    readstat_error_t error = READSTAT_OK;
    {
        const StatParser parser(&input);
        readstat_set_variable_handler(parser.get(), onVariable);
        readstat_set_value_handler(parser.get(), onValue);
        readstat_set_row_limit(parser.get(), long(m_rowLimit));
        error = parse(parser.get(), QFile::encodeName(input.path()).constData(), this);
    }
    m_guard.rethrow();
    return error == READSTAT_OK && m_lastRow + 1 < m_rowLimit && input.failure().isEmpty();
}

} // namespace

TStatCodes::TStatCodes(const QStringList& codes)
{
    for (const QString& code : codes) {
        bool isNumber = false;
        const double number = code.toDouble(&isNumber);
        if (isNumber)
            m_numbers.insert(number);
        m_texts.insert(trailingBlanksCut(code.toUtf8()));
    }
}

bool TStatCodes::contains(readstat_value_t value) const
{
    if (readstat_value_type_class(value) == READSTAT_TYPE_CLASS_NUMERIC)
        return m_numbers.contains(readstat_double_value(value));
    return m_texts.contains(trailingBlanksCut(QByteArray(readstat_string_value(value))));
}

bool compareRows(TStatInput& input, TStatFileKind kind, QVector<TStatCodedVariable>& variables)
{
    return RowReader(variables).read(
        input, kind == TStatFileKind::Spss ? readstat_parse_sav : readstat_parse_dta);
}
