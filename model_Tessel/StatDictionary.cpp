#include <model_Tessel/StatDictionary.h>

#include <model_Tessel/Constants.h>
#include <model_Tessel/StatParser_p.h>

#include <QByteArray>
#include <QHash>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <map>

namespace {

template <typename Number> QString exactText(Number number)
{
    // From here to there a number is written without an exponent.
    constexpr Number shortest { 1e-5 };
    constexpr Number longest { 1e17 };
    char buffer[64];
    const Number size = std::abs(number);
    const bool isPlain = size == 0 || (size >= shortest && size < longest);
    const auto end = std::to_chars(std::begin(buffer), std::end(buffer), number,
        isPlain ? std::chars_format::fixed : std::chars_format::general);
    return QString::fromLatin1(buffer, static_cast<int>(end.ptr - buffer));
}

template <typename Number> void setReal(TStatValue& value, Number number)
{
    value.number = number;
    value.text = exactText(number);
}

void setInteger(TStatValue& value, int number)
{
    value.number = number;
    value.text = QString::number(number);
}

bool isNotANumber(const readstat_value_t& value)
{
    switch (readstat_value_type(value)) {
    case READSTAT_TYPE_FLOAT:
        return std::isnan(value.v.float_value);
    case READSTAT_TYPE_DOUBLE:
        return std::isnan(value.v.double_value);
    default:
        return false;
    }
}

TStatValue described(const readstat_value_t& value)
{
    TStatValue result;
    result.type = readstat_value_type(value);
    if (readstat_value_is_tagged_missing(value)) {
        result.tag = readstat_value_tag(value);
        result.text = QLatin1Char('.') + QString(QLatin1Char(result.tag));
        return result;
    }
    if (readstat_value_is_system_missing(value) || isNotANumber(value)) {
        result.isSystemMissing = true;
        result.text = QStringLiteral(".");
        return result;
    }
    switch (result.type) {
    case READSTAT_TYPE_STRING:
    case READSTAT_TYPE_STRING_REF:
        result.text = QString::fromUtf8(value.v.string_value);
        break;
    case READSTAT_TYPE_INT8:
        setInteger(result, value.v.i8_value);
        break;
    case READSTAT_TYPE_INT16:
        setInteger(result, value.v.i16_value);
        break;
    case READSTAT_TYPE_INT32:
        setInteger(result, value.v.i32_value);
        break;
    case READSTAT_TYPE_FLOAT:
        setReal(result, value.v.float_value);
        break;
    case READSTAT_TYPE_DOUBLE:
        setReal(result, value.v.double_value);
        break;
    }
    return result;
}

QVector<TStatMissingRange> missingRangesOf(const readstat_variable_t& variable)
{
    QVector<TStatMissingRange> ranges;
    const int count = readstat_variable_get_missing_ranges_count(&variable);
    for (int index = 0; index < count; ++index) {
        ranges.append({ described(readstat_variable_get_missing_range_lo(&variable, index)),
            described(readstat_variable_get_missing_range_hi(&variable, index)) });
    }
    return ranges;
}

QString messageOf(readstat_error_t error)
{
    return error == READSTAT_OK ? QString() : QString::fromUtf8(readstat_error_message(error));
}

// Collects what one parse reports. Its callbacks come in another order for each kind of file.
class DescriptionReader {
public:
    enum class Scope { WithoutValueLabels, All };

    TStatFileDescription read(const QString& path, TStatFileKind kind, Scope scope);

private:
    static int onMetadata(readstat_metadata_t* metadata, void* context);
    static int onNote(int index, const char* note, void* context);
    static int onVariable(
        int index, readstat_variable_t* variable, const char* setName, void* context);
    static int onValueLabel(
        const char* setName, readstat_value_t value, const char* label, void* context);
    static void onError(const char* text, void* context);

    void addMetadata(readstat_metadata_t* metadata);
    void addVariable(const readstat_variable_t& variable, const char* setName);
    void addLabel(const char* setName, const readstat_value_t& value, const char* label);
    void join(TStatFileKind kind);
    int setOf(const QByteArray& name) const;

    TStatFileDescription m_result;
    std::multimap<int, QString> m_notes; // by number
    QVector<QByteArray> m_setNames; // by variable, as libreadstat gives them
    QByteArray m_setName; // of the label before
    int m_set = -1; // index of that set
    QHash<QByteArray, int> m_sets; // indexes by name
    CallbackGuard m_guard;
};

TStatFileDescription DescriptionReader::read(const QString& path, TStatFileKind kind, Scope scope)
{
    {
        StatParser parser;
        readstat_set_metadata_handler(parser.get(), onMetadata);
        readstat_set_note_handler(parser.get(), onNote);
        readstat_set_variable_handler(parser.get(), onVariable);
        if (scope == Scope::All)
            readstat_set_value_label_handler(parser.get(), onValueLabel);
        readstat_set_error_handler(parser.get(), onError);
        const StatParse parse =
            kind == TStatFileKind::Spss ? readstat_parse_sav : readstat_parse_dta;
        m_result.outcome.error = parse(parser.get(), path.toLocal8Bit().constData(), this);
        m_result.outcome.endsEarly = parser.fileEndedEarly();
    }
    m_guard.rethrow();
    m_result.path = path;
    m_result.kind = kind;
    m_result.outcome.errorText = messageOf(m_result.outcome.error);
    join(kind);
    return m_result;
}

int DescriptionReader::onMetadata(readstat_metadata_t* metadata, void* context)
{
    auto* reader = static_cast<DescriptionReader*>(context);
    return reader->m_guard.run([&] { reader->addMetadata(metadata); });
}

int DescriptionReader::onNote(int index, const char* note, void* context)
{
    auto* reader = static_cast<DescriptionReader*>(context);
    return reader->m_guard.run([&] { reader->m_notes.emplace(index, QString::fromUtf8(note)); });
}

int DescriptionReader::onVariable(
    int index, readstat_variable_t* variable, const char* setName, void* context)
{
    Q_UNUSED(index)
    auto* reader = static_cast<DescriptionReader*>(context);
    return reader->m_guard.run([&] { reader->addVariable(*variable, setName); });
}

int DescriptionReader::onValueLabel(
    const char* setName, readstat_value_t value, const char* label, void* context)
{
    auto* reader = static_cast<DescriptionReader*>(context);
    return reader->m_guard.run([&] { reader->addLabel(setName, value, label); });
}

void DescriptionReader::onError(const char* text, void* context)
{
    auto* reader = static_cast<DescriptionReader*>(context);
    reader->m_guard.run(
        [&] { reader->m_result.outcome.errorDetails.append(QString::fromUtf8(text).trimmed()); });
}

void DescriptionReader::addMetadata(readstat_metadata_t* metadata)
{
    m_result.fileLabel = QString::fromUtf8(readstat_get_file_label(metadata));
    m_result.encoding = QString::fromUtf8(readstat_get_file_encoding(metadata));
    m_result.formatVersion = readstat_get_file_format_version(metadata);
    m_result.rowCount = metadata->row_count; // its getter cuts it to an int
}

void DescriptionReader::addVariable(const readstat_variable_t& variable, const char* setName)
{
    TStatVariableDescription result;
    result.name = QString::fromUtf8(readstat_variable_get_name(&variable));
    result.label = QString::fromUtf8(readstat_variable_get_label(&variable));
    result.type = readstat_variable_get_type(&variable);
    result.storageWidth = readstat_variable_get_storage_width(&variable);
    result.userWidth = variable.user_width;
    result.displayWidth = readstat_variable_get_display_width(&variable);
    result.format = QString::fromUtf8(readstat_variable_get_format(&variable));
    result.measure = readstat_variable_get_measure(&variable);
    result.alignment = readstat_variable_get_alignment(&variable);
    result.missingRanges = missingRangesOf(variable);
    result.labelSetName = QString::fromUtf8(setName);
    m_result.variables.append(result);
    m_setNames.append(setName);
}

void DescriptionReader::addLabel(
    const char* setName, const readstat_value_t& value, const char* label)
{
    if (m_set < 0 || m_setName != setName) {
        m_setName = setName;
        const auto found = m_sets.constFind(m_setName);
        if (found == m_sets.constEnd()) {
            m_set = m_result.labelSets.size();
            m_sets.insert(m_setName, m_set);
            m_result.labelSets.append({ QString::fromUtf8(m_setName), {} });
        } else {
            m_set = *found;
        }
    }
    m_result.labelSets[m_set].labels.append({ described(value), QString::fromUtf8(label) });
}

void DescriptionReader::join(TStatFileKind kind)
{
    // Stata keeps the number of its notes in a note 0.
    if (kind == TStatFileKind::Stata)
        m_notes.erase(0);
    for (const auto& [number, text] : m_notes)
        m_result.notes.append(text);
    for (int index = 0; index < m_setNames.size(); ++index)
        m_result.variables[index].labelSet = setOf(m_setNames.at(index));
}

// A variable without a set has no name here; a set may have an empty one.
int DescriptionReader::setOf(const QByteArray& name) const
{
    return name.isNull() ? -1 : m_sets.value(name, -1);
}

// The width and the decimals in a format, for example 8 and 2 in "F8.2" and "%8.2f".
struct FormatNumbers {
    int width = 0;
    int decimals = 0;

    explicit FormatNumbers(const QString& format)
    {
        const auto isDigit = [](QChar character) { return character.isDigit(); };
        const auto start = std::find_if(format.begin(), format.end(), isDigit);
        const auto point = std::find_if_not(start, format.end(), isDigit);
        width = QString(start, int(point - start)).toInt();
        if (point != format.end() && (*point == QLatin1Char('.') || *point == QLatin1Char(','))) {
            const auto end = std::find_if_not(point + 1, format.end(), isDigit);
            decimals = QString(point + 1, int(end - point - 1)).toInt();
        }
    }
};

bool isWhole(const TStatVariableDescription& variable, TStatFileKind kind)
{
    switch (variable.type) {
    case READSTAT_TYPE_INT8:
    case READSTAT_TYPE_INT16:
    case READSTAT_TYPE_INT32:
        return true;
    default:
        break;
    }
    const bool isPlain = variable.format.startsWith(QLatin1Char('F'))
        || variable.format.startsWith(QLatin1Char('N'));
    return kind == TStatFileKind::Spss && isPlain && FormatNumbers(variable.format).decimals == 0;
}

int skipValueLabel(const char*, readstat_value_t, const char*, void*)
{
    return READSTAT_HANDLER_OK;
}

int skipVariable(int, readstat_variable_t*, const char*, void*)
{
    return READSTAT_HANDLER_OK;
}

} // namespace

bool TStatVariableDescription::isString() const
{
    return type == READSTAT_TYPE_STRING || type == READSTAT_TYPE_STRING_REF;
}

QString TStatVariableDescription::typeName(TStatFileKind kind) const
{
    if (isString())
        return TypeNameString;
    return isWhole(*this, kind) ? TypeNameInteger : TypeNameReal;
}

// Storage is padded, and the format of a string ends at 255 where the string is longer.
int TStatVariableDescription::width(TStatFileKind kind) const
{
    constexpr quint64 LongestFormat = 255;
    const int formatWidth = FormatNumbers(format).width;
    if (isString() && kind == TStatFileKind::Stata) // libreadstat counts a null at the end
        return int(std::max<quint64>(storageWidth, 1) - 1);
    if (isString() && userWidth > LongestFormat)
        return int(userWidth);
    return formatWidth > 0 ? formatWidth : displayWidth;
}

int TStatVariableDescription::decimals() const
{
    return isString() ? 0 : FormatNumbers(format).decimals;
}

bool TStatVariableDescription::isMissing(const TStatValue& value) const
{
    if (value.tag != '\0' || value.isSystemMissing)
        return true;
    const bool isText = value.type == READSTAT_TYPE_STRING;
    return std::any_of(
        missingRanges.cbegin(), missingRanges.cend(), [&](const TStatMissingRange& range) {
            if (isText)
                return range.low.text.trimmed() == value.text.trimmed();
            return value.number >= range.low.number && value.number <= range.high.number;
        });
}

TStatOutcome readStatOutcome(const QString& path, TStatFileKind kind)
{
    const StatParse parse = kind == TStatFileKind::Spss ? readstat_parse_sav : readstat_parse_dta;
    TStatOutcome outcome;
    for (const bool isLabelPass : { true, false }) {
        StatParser parser;
        if (isLabelPass)
            readstat_set_value_label_handler(parser.get(), skipValueLabel);
        else
            readstat_set_variable_handler(parser.get(), skipVariable);
        outcome.error = parse(parser.get(), path.toLocal8Bit().constData(), nullptr);
        outcome.errorText = messageOf(outcome.error);
        outcome.endsEarly = parser.fileEndedEarly();
        if (!outcome.isWhole())
            break;
    }
    return outcome;
}

TStatFileDescription readStatDescription(const QString& path, TStatFileKind kind)
{
    using Scope = DescriptionReader::Scope;
    TStatFileDescription all = DescriptionReader().read(path, kind, Scope::All);
    if (all.outcome.error == READSTAT_OK)
        return all;
    TStatFileDescription rest = DescriptionReader().read(path, kind, Scope::WithoutValueLabels);
    all.variablesOutcome = rest.outcome;
    rest.variablesOutcome = rest.outcome;
    rest.outcome = all.outcome;
    return all.variables.isEmpty() ? rest : all;
}
