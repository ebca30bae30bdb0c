#include <model_Tessel/StatImport_p.h>

#include <model_Tessel/GenericField.h>
#include <model_Tessel/Numbers_p.h>
#include <model_Tessel/UtilStrings.h>

#include <QByteArray>
#include <QScopeGuard>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <new>

namespace {

// Stands for a value that refers to a long string.
constexpr int StringReference = -88;

// Bytes of a value's text with its null: strings are cut, and no number needs more.
constexpr int ValueTextSize = 512;

// No string variable is wider; a damaged width must not take gigabytes for its bounds.
constexpr int WidestString = 65'535;

QString nines(int count)
{
    return StringOfChar('9', std::min(count, WidestString));
}

bool isFloating(readstat_type_t type)
{
    return type == READSTAT_TYPE_FLOAT || type == READSTAT_TYPE_DOUBLE;
}

bool isNumeric(readstat_type_t type)
{
    return isFloating(type) || type == READSTAT_TYPE_INT8 || type == READSTAT_TYPE_INT16
        || type == READSTAT_TYPE_INT32;
}

TGenericField::FieldType fieldTypeOf(readstat_type_t type, bool isWhole)
{
    if (!isNumeric(type))
        return TGenericField::StringType;
    return isFloating(type) && !isWhole ? TGenericField::RealType : TGenericField::IntegerType;
}

// Turns a floating value into a whole one, for this field and all that share the label.
void makeWhole(TStatValueLabel& label)
{
    if (label.numValue == -1.0)
        return;
    label.intValue = truncatedToInt(label.numValue);
    label.numValue = -1.0;
}

// As printf's "%d" and "%f" write numbers, but with a point in every locale.
template <typename Number, typename... Format>
void appendNumber(QString& text, Number number, Format... format)
{
    char buffer[ValueTextSize];
    const auto end = std::to_chars(std::begin(buffer), std::end(buffer), number, format...).ptr;
    text += QLatin1String(buffer, static_cast<int>(end - buffer));
}

// Appends the value of a label and returns its number, a NaN for a string. Nothing when the label
// has no value that can be told from an unset one.
std::optional<double> appendValue(QString& text, const TStatValueLabel& label)
{
    if (label.intValue != -1) {
        appendNumber(text, label.intValue);
        return label.intValue;
    }
    if (label.numValue != -1.0) {
        appendNumber(text, label.numValue, std::chars_format::fixed, 6);
        return label.numValue;
    }
    if (!label.strValue)
        return std::nullopt;
    const std::size_t size = ::strnlen(label.strValue, ValueTextSize - 1);
    text += QString::fromUtf8(label.strValue, static_cast<int>(size));
    return std::numeric_limits<double>::quiet_NaN();
}

} // namespace

StatImport::StatImport(const StatRules& rules, LabelSets& labelSets)
    : m_rules(rules)
    , m_labelSets(labelSets)
{
}

StatImport::~StatImport() = default;

readstat_error_t StatImport::read(const QString& fileName, void* importer,
    readstat_value_label_handler onValueLabel, readstat_variable_handler onVariable)
{
    m_labelSets.clear();
    m_records.release();
    m_memory.emplace();
    const auto forget = qScopeGuard([this] { m_memory.reset(); });
    const QByteArray path = fileName.toLocal8Bit();
    parse(path, importer, onValueLabel, nullptr);
    return parse(path, importer, nullptr, onVariable);
}

readstat_error_t StatImport::parse(const QByteArray& path, void* importer,
    readstat_value_label_handler onValueLabel, readstat_variable_handler onVariable)
{
    readstat_error_t result = READSTAT_OK;
    {
        StatParser parser(m_input);
        m_parsed = &parser.input();
        const auto forget = qScopeGuard([this] { m_parsed = nullptr; });
        readstat_set_value_label_handler(parser.get(), onValueLabel);
        readstat_set_variable_handler(parser.get(), onVariable);
        result = m_rules.parse(parser.get(), path.constData(), importer);
    }
    m_guard.rethrow();
    return result;
}

void StatImport::addLabel(const char* setName, const readstat_value_t& value, const char* label)
{
    Labels& labels = setToFill(nameOf(setName));
    void* space = m_records.allocate(sizeof(TStatValueLabel), alignof(TStatValueLabel));
    auto* record = new (space) TStatValueLabel;
    storeValue(*record, value);
    if (!label)
        return;
    record->labelLength = std::strlen(label);
    record->label = copied(label, record->labelLength);
    labels.push_back(record);
}

void StatImport::describe(
    TGenericField& field, const readstat_variable_t& variable, const char* setName)
{
    const readstat_type_t type = readstat_variable_get_type(&variable);
    const bool isWhole = m_rules.wholeWithoutDecimals && variable.decimals == 0;
    field.fieldType = fieldTypeOf(type, isWhole);
    if (type == READSTAT_TYPE_STRING)
        field.notApplicableValue = QLatin1String("");
    field.name = QString::fromUtf8(
        variable.name, static_cast<int>(::strnlen(variable.name, sizeof variable.name)));
    m_rules.appendLabel(field.label, variable.label,
        static_cast<int>(::strnlen(variable.label, sizeof variable.label)));
    field.length = m_rules.length(variable);
    if (type != READSTAT_TYPE_STRING || m_rules.boundsForStrings) {
        field.minValue = QStringLiteral("0");
        field.maxValue = nines(field.length);
    }
    Labels* labels = setName ? findSet(nameOf(setName)) : nullptr;
    if (!labels || labels->empty())
        return;
    const StatLabelSummary summary = summaryOf(*labels, isWhole);
    field.valueLabels = summary.text;
    if (!isNumeric(type))
        return;
    if (summary.hasMinimum)
        field.minValue = shortNumberText(summary.minimum);
    if (summary.hasMaximum)
        field.maxValue = shortNumberText(summary.maximum);
}

// libreadstat does not end the names of damaged files with a null.
std::string_view StatImport::nameOf(const char* setName) const
{
    if (!setName)
        return {};
    return { setName,
        m_parsed ? ::strnlen(setName, m_parsed->setNameLimit()) : std::strlen(setName) };
}

StatImport::Labels& StatImport::setToFill(std::string_view setName)
{
    if (!m_memory)
        return m_labelSets[std::string(setName)];
    if (!m_memory->labels || m_memory->setName != setName) {
        m_memory->setName = setName;
        m_memory->labels = &m_labelSets[m_memory->setName];
    }
    return *m_memory->labels;
}

// Null when there is no such set.
StatImport::Labels* StatImport::findSet(std::string_view setName)
{
    if (m_memory && m_memory->labels && m_memory->setName == setName)
        return m_memory->labels;
    const auto found = m_labelSets.find(std::string(setName));
    if (found == m_labelSets.end())
        return nullptr;
    if (m_memory) {
        m_memory->setName = found->first;
        m_memory->labels = &found->second;
    }
    return &found->second;
}

char* StatImport::copied(const char* text, std::size_t size)
{
    auto* copy = static_cast<char*>(m_records.allocate(size + 1, 1));
    std::memcpy(copy, text, size);
    copy[size] = '\0';
    return copy;
}

void StatImport::storeValue(TStatValueLabel& record, const readstat_value_t& value)
{
    switch (readstat_value_type(value)) {
    case READSTAT_TYPE_FLOAT: // kept: its eight bytes are taken as a double
    case READSTAT_TYPE_DOUBLE:
        std::memcpy(&record.numValue, &value.v, sizeof record.numValue);
        return;
    case READSTAT_TYPE_STRING:
        if (!value.v.string_value)
            return;
        record.strLength = std::strlen(value.v.string_value);
        record.strValue = copied(value.v.string_value, record.strLength);
        return;
    case READSTAT_TYPE_INT8:
        record.intValue = value.v.i8_value; // NOLINT(bugprone-signed-char-misuse): with its sign
        return;
    case READSTAT_TYPE_INT16:
        record.intValue = value.v.i16_value;
        return;
    case READSTAT_TYPE_INT32:
        record.intValue = value.v.i32_value;
        return;
    case READSTAT_TYPE_STRING_REF:
        record.intValue = StringReference;
        return;
    }
    // Kept: hosts know this text and the exit status.
    std::fprintf(stderr, "%s:%d unsupported type!\n", m_rules.unit, m_rules.line);
    std::exit(EXIT_FAILURE);
}

StatLabelSummary StatImport::summaryOf(Labels& labels, bool isWhole)
{
    if (!m_memory)
        return newSummary(labels, isWhole);
    // Once its labels are whole, a set has one summary; until then the other one.
    const auto [known, isNew] = m_memory->summaries.try_emplace(&labels);
    if (isNew || (isWhole && !known->second.isWhole))
        known->second = newSummary(labels, isWhole);
    return known->second;
}

StatLabelSummary StatImport::newSummary(Labels& labels, bool isWhole) const
{
    if (isWhole) {
        for (TStatValueLabel* label : labels)
            makeWhole(*label);
    }
    StatLabelSummary summary;
    summary.isWhole = isWhole;
    for (const TStatValueLabel* label : labels) {
        const std::optional<double> number = appendValue(summary.text, *label);
        if (!number)
            continue;
        if (*number < summary.minimum) {
            summary.minimum = *number;
            summary.hasMinimum = true;
        }
        if (*number > summary.maximum) {
            summary.maximum = *number;
            summary.hasMaximum = true;
        }
        summary.text += QLatin1Char(' ');
        m_rules.appendLabel(summary.text, label->label, static_cast<int>(qstrlen(label->label)));
        summary.text += QLatin1Char('\t');
    }
    summary.text.squeeze();
    return summary;
}
