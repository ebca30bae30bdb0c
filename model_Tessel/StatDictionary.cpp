#include <model_Tessel/StatDictionary.h>

#include <model_Tessel/Constants.h>
#include <model_Tessel/SpssStructure_p.h>
#include <model_Tessel/StatParser_p.h>
#include <model_Tessel/StataStructure_p.h>
#include <model_Tessel/TextEncoding.h>

#include <QByteArray>
#include <QFile>
#include <QHash>
#include <QTextCodec>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
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

// A member of libreadstat's, which fills it to its end in damaged files.
template <std::size_t Size> QString boundedText(const char (&text)[Size])
{
    return QString::fromUtf8(text, static_cast<int>(::strnlen(text, Size)));
}

// Stata files name no encoding before this one, which has UTF-8.
constexpr int FirstUnicodeFormat = 118;

// What a Stata file keeps for itself or for a variable: notes "note1" and so on, and the rest.
class Characteristics {
public:
    void add(const QString& name, const QString& text)
    {
        bool isNumber = false;
        const int number =
            name.startsWith(QLatin1String("note")) ? name.midRef(4).toInt(&isNumber) : 0;
        if (!isNumber)
            m_others.append({ name, text });
        else if (number > 0) // note0 is the number of the notes
            m_notes.emplace(number, text);
    }

    template <typename Description> void copyTo(Description& description) const
    {
        for (const auto& [number, text] : m_notes)
            description.notes.append(text);
        description.characteristics = m_others;
    }

private:
    std::multimap<int, QString> m_notes; // by number
    QVector<TStatCharacteristic> m_others;
};

// Collects what one parse reports. Its callbacks come in another order for each kind of file.
class DescriptionReader {
public:
    enum class Scope { WithoutValueLabels, All };

    explicit DescriptionReader(TStatInput& input)
        : m_input(input)
    {
    }

    TStatFileDescription read(TStatFileKind kind, Scope scope);

private:
    static int onMetadata(readstat_metadata_t* metadata, void* context);
    static int onNote(int index, const char* note, void* context);
    static int onVariable(
        int index, readstat_variable_t* variable, const char* setName, void* context);
    static int onValueLabel(
        const char* setName, readstat_value_t value, const char* label, void* context);
    static int onWeight(readstat_variable_t* variable, void* context);
    static void onError(const char* text, void* context);

    void addMetadata(readstat_metadata_t* metadata);
    void addVariable(const readstat_variable_t& variable, const char* setName);
    void addLabel(const char* setName, const readstat_value_t& value, const char* label);
    void join(TStatFileKind kind);
    int setOf(const QByteArray& name) const;
    QByteArray setNameOf(const char* setName) const;
    void addCharacteristics();
    void addExtensions();
    void addAttribute(const SpssAttribute& attribute, const QTextCodec& codec);

    TStatInput& m_input;
    TStatFileDescription m_result;
    std::multimap<int, QString> m_notes; // by number
    QVector<QByteArray> m_setNames; // by variable, as libreadstat gives them
    QByteArray m_setName; // of the label before
    int m_set = -1; // index of that set
    QHash<QByteArray, int> m_sets; // indexes by name
    QHash<QString, int> m_places; // of variables by name, whose case does not count
    CallbackGuard m_guard;
};

TStatFileDescription DescriptionReader::read(TStatFileKind kind, Scope scope)
{
    {
        StatParser parser(&m_input);
        readstat_set_metadata_handler(parser.get(), onMetadata);
        if (kind == TStatFileKind::Spss)
            readstat_set_note_handler(parser.get(), onNote);
        readstat_set_variable_handler(parser.get(), onVariable);
        if (scope == Scope::All)
            readstat_set_value_label_handler(parser.get(), onValueLabel);
        readstat_set_fweight_handler(parser.get(), onWeight);
        readstat_set_error_handler(parser.get(), onError);
        const StatParse parse =
            kind == TStatFileKind::Spss ? readstat_parse_sav : readstat_parse_dta;
        m_result.outcome.error =
            parse(parser.get(), QFile::encodeName(m_input.path()).constData(), this);
        m_result.outcome.endsEarly = parser.fileEndedEarly();
    }
    m_guard.rethrow();
    m_result.path = m_input.path();
    m_result.kind = kind;
    m_result.outcome.errorText = messageOf(m_result.outcome.error);
    join(kind);
    m_result.outcome.inputFailure = m_input.failure();
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

int DescriptionReader::onWeight(readstat_variable_t* variable, void* context)
{
    auto* reader = static_cast<DescriptionReader*>(context);
    reader->m_result.weight = readstat_variable_get_index(variable);
    return READSTAT_HANDLER_OK;
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
    result.name = boundedText(variable.name);
    result.label = boundedText(variable.label);
    result.type = readstat_variable_get_type(&variable);
    result.storageWidth = readstat_variable_get_storage_width(&variable);
    result.userWidth = variable.user_width;
    result.displayWidth = readstat_variable_get_display_width(&variable);
    result.format = boundedText(variable.format);
    result.measure = readstat_variable_get_measure(&variable);
    result.alignment = readstat_variable_get_alignment(&variable);
    result.missingRanges = missingRangesOf(variable);
    m_setNames.append(setNameOf(setName));
    result.labelSetName = QString::fromUtf8(m_setNames.constLast());
    m_result.variables.append(result);
}

void DescriptionReader::addLabel(
    const char* setName, const readstat_value_t& value, const char* label)
{
    const QByteArray name = setNameOf(setName);
    if (m_set < 0 || m_setName != name) {
        m_setName = name;
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
    for (const auto& [number, text] : m_notes)
        m_result.notes.append(text);
    if (kind == TStatFileKind::Stata)
        addCharacteristics();
    else if (m_result.outcome.error == READSTAT_OK)
        addExtensions();
    if (m_result.weight >= m_result.variables.size())
        m_result.weight = -1;
    for (int index = 0; index < m_setNames.size(); ++index)
        m_result.variables[index].labelSet = setOf(m_setNames.at(index));
}

// Of variables as well, which libreadstat passes over.
void DescriptionReader::addCharacteristics()
{
    const QTextCodec* codec = m_result.formatVersion < FirstUnicodeFormat
        ? codecBeforeUtf8()
        : QTextCodec::codecForName("UTF-8");
    QHash<QString, Characteristics> found; // by what they belong to
    const QVector<StataCharacteristic> all = stataCharacteristics(m_input);
    for (const StataCharacteristic& entry : all) {
        found[codec->toUnicode(entry.owner)].add(
            codec->toUnicode(entry.name), codec->toUnicode(entry.text));
    }
    found.value(QStringLiteral("_dta")).copyTo(m_result);
    for (TStatVariableDescription& variable : m_result.variables)
        found.value(variable.name).copyTo(variable);
}

// What libreadstat passes over.
void DescriptionReader::addExtensions()
{
    const QTextCodec* named = QTextCodec::codecForName(m_result.encoding.toUtf8());
    const QTextCodec& codec = named ? *named : *QTextCodec::codecForName("UTF-8");
    for (int index = 0; index < m_result.variables.size(); ++index)
        m_places.insert(m_result.variables.at(index).name.toCaseFolded(), index);
    const QVector<SpssExtension> all = spssExtensions(m_input);
    for (const SpssExtension& extension : all) {
        const QVector<SpssAttribute> attributes = spssAttributes(extension);
        for (const SpssAttribute& attribute : attributes)
            addAttribute(attribute, codec);
        const QVector<QByteArray> sets = spssResponseSets(extension);
        for (const QByteArray& name : sets)
            m_result.responseSets.append(codec.toUnicode(name));
        const QVector<QByteArray> variables = spssVariableSets(extension);
        for (const QByteArray& name : variables)
            m_result.variableSets.append(codec.toUnicode(name));
    }
    m_result.responseSets.removeDuplicates();
}

void DescriptionReader::addAttribute(const SpssAttribute& attribute, const QTextCodec& codec)
{
    const QString name = codec.toUnicode(attribute.name);
    if (attribute.owner.isEmpty()) {
        m_result.attributes.append(name);
        return;
    }
    const auto variable = m_places.constFind(codec.toUnicode(attribute.owner).toCaseFolded());
    if (variable == m_places.constEnd())
        return;
    TStatVariableDescription& owner = m_result.variables[*variable];
    if (name.compare(QLatin1String("$@Role"), Qt::CaseInsensitive) != 0)
        owner.attributes.append(name);
    else if (attribute.value != "0")
        owner.role = codec.toUnicode(attribute.value);
}

// Null where there is none. libreadstat does not end the names of damaged files with a null.
QByteArray DescriptionReader::setNameOf(const char* setName) const
{
    if (!setName)
        return {};
    return { setName, static_cast<int>(::strnlen(setName, m_input.setNameLimit())) };
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

// A text that its encoding does not have is damage, wherever it stands.
bool isOfText(readstat_error_t error)
{
    return error == READSTAT_ERROR_CONVERT || error == READSTAT_ERROR_CONVERT_BAD_STRING
        || error == READSTAT_ERROR_CONVERT_SHORT_STRING
        || error == READSTAT_ERROR_CONVERT_LONG_STRING;
}

// False as well when the file could not be read.
bool isSound(TStatInput& input, TStatFileKind kind)
{
    return kind == TStatFileKind::Spss ? isSoundSpssFile(input) : isSoundStataFile(input);
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
    if (type == READSTAT_TYPE_STRING_REF)
        return 0;
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

TStatOutcome readStatOutcome(TStatInput& input, TStatFileKind kind)
{
    const StatParse parse = kind == TStatFileKind::Spss ? readstat_parse_sav : readstat_parse_dta;
    TStatOutcome outcome;
    for (const bool isLabelPass : { true, false }) {
        StatParser parser(&input);
        if (isLabelPass)
            readstat_set_value_label_handler(parser.get(), skipValueLabel);
        else
            readstat_set_variable_handler(parser.get(), skipVariable);
        outcome.error = parse(parser.get(), QFile::encodeName(input.path()).constData(), nullptr);
        outcome.errorText = messageOf(outcome.error);
        outcome.endsEarly = parser.fileEndedEarly();
        outcome.inputFailure = input.failure();
        if (!outcome.isWhole())
            break;
    }
    return outcome;
}

TStatOutcome readStatOutcome(const QString& path, TStatFileKind kind)
{
    TStatInput input;
    input.open(path);
    return readStatOutcome(input, kind);
}

TStatFileDescription readStatDescription(TStatInput& input, TStatFileKind kind)
{
    using Scope = DescriptionReader::Scope;
    TStatFileDescription all = DescriptionReader(input).read(kind, Scope::All);
    if (all.outcome.error == READSTAT_OK)
        return all;
    TStatFileDescription rest = DescriptionReader(input).read(kind, Scope::WithoutValueLabels);
    all.outcome.isUnsupported = !isOfText(all.outcome.error) && isSound(input, kind);
    rest.outcome.isUnsupported = rest.outcome.error != READSTAT_OK && all.outcome.isUnsupported;
    all.variablesOutcome = rest.outcome;
    rest.variablesOutcome = rest.outcome;
    rest.outcome = all.outcome;
    return all.variables.isEmpty() ? rest : all;
}

TStatFileDescription readStatDescription(const QString& path, TStatFileKind kind)
{
    TStatInput input;
    input.open(path);
    return readStatDescription(input, kind);
}
