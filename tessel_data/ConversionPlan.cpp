#include <tessel_data/ConversionPlan.h>

#include <tessel_data/ConversionCodes_p.h>
#include <tessel_data/ConversionExtras_p.h>
#include <tessel_data/ConversionLimits_p.h>
#include <tessel_data/CsvCodes_p.h>
#include <tessel_data/RecordGroups_p.h>
#include <tessel_data/StatFormats_p.h>

#include <algorithm>
#include <limits>

namespace tessel {

namespace {

using Kind = ConversionNote::Kind;
using Reason = ConversionNote::Reason;
using Role = ConversionColumn::Role;
using Type = ConversionColumn::Type;
using Measure = ConversionColumn::Measure;
using Alignment = ConversionColumn::Alignment;

constexpr int ExactDigits = 15; // that every number of which a double holds

// Every number of so many digits, and its negative one digit shorter, is one.
Type typeOfDigits(int digits)
{
    constexpr int byteDigits = 2;
    constexpr int intDigits = 4;
    constexpr int longDigits = 9;
    if (digits <= byteDigits)
        return Type::Byte;
    if (digits <= intDigits)
        return Type::Int;
    return digits <= longDigits ? Type::Long : Type::Double;
}

bool isText(const DataVariable& variable)
{
    return variable.type == DataVariable::Type::Text || variable.type == DataVariable::Type::Binary;
}

Measure measureOf(readstat_measure_t measure)
{
    switch (measure) {
    case READSTAT_MEASURE_NOMINAL:
        return Measure::Nominal;
    case READSTAT_MEASURE_ORDINAL:
        return Measure::Ordinal;
    case READSTAT_MEASURE_SCALE:
        return Measure::Scale;
    case READSTAT_MEASURE_UNKNOWN:
        break;
    }
    return Measure::Unknown;
}

Alignment alignmentOf(readstat_alignment_t alignment)
{
    switch (alignment) {
    case READSTAT_ALIGNMENT_LEFT:
        return Alignment::Left;
    case READSTAT_ALIGNMENT_CENTER:
        return Alignment::Center;
    case READSTAT_ALIGNMENT_RIGHT:
        return Alignment::Right;
    case READSTAT_ALIGNMENT_UNKNOWN:
        break;
    }
    return Alignment::Unknown;
}

// Makes a plan; names are given out in the order of the dictionary.
class ConversionPlanner {
public:
    ConversionPlanner(
        const DataDictionary& dictionary, const ConversionOptions& options, ConversionPlan& plan)
        : m_dictionary(dictionary)
        , m_options(options)
        , m_plan(plan)
        , m_codes(dictionary, options, plan)
        , m_extras(dictionary, options, plan)
        , m_csvCodes(dictionary, options.csv)
    {
    }

    void make();

private:
    void addRecord(int record);
    void addFile(int record, const RecordGroup& group, bool hasRow);
    void addIds(ConversionFile& file, int record);
    void addOwn(ConversionFile& file, Role role, const char* name, const char* label);
    void addGroup(ConversionFile& file, const RecordGroup& group);
    void addMerged(ConversionFile& file);
    bool isOnce(int record) const;
    bool isDescribed() const
    {
        return m_dictionary.description != nullptr;
    }
    void addValue(ConversionFile& file, int source, int place, const QString& name);
    void setShape(ConversionColumn& column, const DataVariable& variable);
    void setShown(ConversionColumn& column, const DataVariable& variable);
    void setDescribed(ConversionColumn& column, const TStatVariableDescription& source);
    bool hasOrdinaryCodes(const DataVariable& variable) const;
    void tellCsv(ConversionColumn& column);
    void tellRisks(const ConversionColumn& column, const DataVariable& variable);
    QString fileName(const QString& wanted);
    FittedText fileLabel(const RecordGroup& group, int record) const;
    ConversionNote& tell(Kind kind, const QString& text, Reason reason = Reason::None);

    const DataDictionary& m_dictionary;
    const ConversionOptions& m_options;
    ConversionPlan& m_plan;
    ConversionCodes m_codes;
    ConversionExtras m_extras;
    CsvCodeSets m_csvCodes;
    UniqueNames m_fileNames;
    StatNames m_names { StatProgram::Spss }; // of the current file
    QString m_file;
    QString m_variable;
};

} // namespace

ConversionNote& ConversionPlanner::tell(Kind kind, const QString& text, Reason reason)
{
    ConversionNote note;
    note.kind = kind;
    note.reason = reason;
    note.file = m_file;
    note.variable = m_variable;
    note.text = text;
    m_plan.notes.push_back(note);
    return m_plan.notes.back();
}

void ConversionPlanner::make()
{
    m_plan.format = m_options.format;
    m_plan.hasByteWidths = m_options.hasByteWidths;
    m_plan.csv = m_options.csv;
    m_extras.addFileNotes();
    for (int record = 0; record < int(m_dictionary.records.size()); ++record) {
        if (!m_dictionary.records[std::size_t(record)].columns.isEmpty()) {
            addRecord(record);
            continue;
        }
        m_file.clear();
        m_variable.clear();
        tell(Kind::NoVariables, m_dictionary.records[std::size_t(record)].name);
    }
}

void ConversionPlanner::addRecord(int record)
{
    const QVector<RecordGroup> groups =
        recordGroups(m_dictionary, record, m_options.hasRepeatTables, m_dictionary.language);
    for (const RecordGroup& group : groups)
        addFile(record, group, groups.size() > 1);
}

// A path may not hold everything that a name holds.
QString ConversionPlanner::fileName(const QString& wanted)
{
    QString name = withoutNulls(wanted);
    name.replace(QLatin1Char('/'), QLatin1Char('_'));
    constexpr int longest = 200; // of 255, with the endings of its temporary file
    name = statText(name, { longest, true });
    if (name.isEmpty() || name.startsWith(QLatin1Char('.')))
        name.prepend(QLatin1Char('_'));
    const QString taken = m_fileNames.take(name);
    const QString ending = QLatin1String(limitsOf(m_options.format).ending);
    m_file = taken + ending;
    m_variable.clear();
    if (taken != wanted)
        tell(Kind::FileRenamed, wanted, Reason::NotAllowed).newText = m_file;
    return m_file;
}

FittedText ConversionPlanner::fileLabel(const RecordGroup& group, int record) const
{
    const ConversionLimits& limits = limitsOf(m_options.format);
    const QString& own = m_dictionary.records[std::size_t(record)].label;
    const QString label =
        group.isRepeat || !own.isEmpty() ? group.label : m_dictionary.labelText(m_dictionary.label);
    return fitted(label, limits.fileLabel);
}

void ConversionPlanner::addFile(int record, const RecordGroup& group, bool hasRow)
{
    const DataRecord& source = m_dictionary.records[std::size_t(record)];
    ConversionFile file;
    file.name = fileName(group.name);
    const FittedText label = fileLabel(group, record);
    file.label = label.text;
    if (label.reason != Reason::None)
        tell(Kind::FileLabelCut, group.label, label.reason).newText = label.text;
    file.recordName = source.name;
    file.isRepeat = group.isRepeat;
    file.records.append(record);
    file.cells.resize(std::size_t(group.places.size()));
    m_names = StatNames(limitsOf(m_options.format).program);
    addIds(file, record);
    if (hasRow) {
        addOwn(file, Role::Row, "ROW",
            m_options.hasCases ? "Number of the record within its case"
                               : "Number of the row in its file");
    }
    if (group.isRepeat)
        addOwn(file, Role::Occurrence, "OCCURRENCE", "Number of the occurrence, from 1");
    addGroup(file, group);
    addMerged(file);
    m_extras.fill(file);
    m_plan.files.push_back(std::move(file));
}

void ConversionPlanner::addIds(ConversionFile& file, int record)
{
    for (int place = 0; place < m_dictionary.records[std::size_t(record)].idCount; ++place)
        addValue(file, 0, place, m_dictionary.variable(record, place).name);
}

void ConversionPlanner::addOwn(ConversionFile& file, Role role, const char* name, const char* label)
{
    ConversionColumn column;
    const StatName taken = m_names.take(QLatin1String(name));
    column.name = m_variable = taken.name;
    if (taken.isChanged()) {
        ConversionNote& note = tell(Kind::VariableRenamed, QLatin1String(name));
        note.newText = taken.name;
        note.nameReasons = taken.reasons;
    }
    m_variable.clear();
    column.label = QLatin1String(label);
    column.role = role;
    column.type = Type::Long;
    constexpr int width = 8;
    if (m_options.format != ConversionFormat::Csv)
        column.format = m_options.format == ConversionFormat::Spss ? QStringLiteral("F8.0")
                                                                   : QStringLiteral("%8.0f");
    column.displayWidth = width;
    column.measure = Measure::Scale;
    column.alignment = Alignment::Right;
    file.columns.append(column);
    for (QVector<int>& cells : file.cells)
        cells.append(-1);
}

// What is no identification; the first occurrence tells of all.
void ConversionPlanner::addGroup(ConversionFile& file, const RecordGroup& group)
{
    const DataRecord& source = m_dictionary.records[std::size_t(file.records.first())];
    for (int i = 0; i < group.places.first().size(); ++i) {
        if (group.places.first().at(i) < source.idCount)
            continue;
        addValue(file, 0, group.places.first().at(i), group.columnNames.at(i));
        for (int occurrence = 1; occurrence < group.places.size(); ++occurrence) {
            file.cells[std::size_t(occurrence)].last() = group.places.at(occurrence).value(i, -1);
        }
    }
}

bool ConversionPlanner::isOnce(int record) const
{
    const DataRecord& source = m_dictionary.records[std::size_t(record)];
    return source.level == 1 && source.maximum <= 1 && !source.columns.isEmpty();
}

void ConversionPlanner::addMerged(ConversionFile& file)
{
    if (!m_options.isMerged || isOnce(file.records.first()))
        return;
    for (int record = 0; record < int(m_dictionary.records.size()); ++record) {
        if (!isOnce(record))
            continue;
        const DataRecord& source = m_dictionary.records[std::size_t(record)];
        file.records.append(record);
        for (int place = source.idCount; place < source.columns.size(); ++place)
            addValue(
                file, file.records.size() - 1, place, m_dictionary.variable(record, place).name);
    }
}

void ConversionPlanner::addValue(ConversionFile& file, int source, int place, const QString& name)
{
    const int record = file.records.at(source);
    const DataRecord& owner = m_dictionary.records[std::size_t(record)];
    const DataVariable& variable = m_dictionary.variable(record, place);
    const ConversionLimits& limits = limitsOf(m_options.format);
    ConversionColumn column;
    const StatName taken = m_names.take(name);
    column.name = m_variable = taken.name;
    if (taken.isChanged()) {
        ConversionNote& note = tell(Kind::VariableRenamed, name);
        note.newText = taken.name;
        note.nameReasons = taken.reasons;
    }
    const QString text =
        file.isRepeat ? m_dictionary.labelText(variable.label) : m_dictionary.fullLabel(variable);
    const FittedText label = fitted(text, statLabelLimit(limits.program));
    column.label = label.text;
    if (label.reason != Reason::None)
        tell(Kind::VariableLabelCut, text, label.reason).newText = label.text;
    column.variable = owner.columns.at(place);
    column.source = source;
    column.isId = place < owner.idCount;
    setShape(column, variable);
    setShown(column, variable);
    tellRisks(column, variable);
    if (m_options.format == ConversionFormat::Csv)
        tellCsv(column);
    else
        m_codes.fill(column, m_file);
    file.columns.append(column);
    for (QVector<int>& cells : file.cells)
        cells.append(place);
    m_variable.clear();
}

void ConversionPlanner::setShape(ConversionColumn& column, const DataVariable& variable)
{
    column.decimals = variable.type == DataVariable::Type::Number ? variable.decimals : 0;
    if (isText(variable)) {
        column.width = variable.width;
        column.type = Type::Text;
    } else if (m_options.format == ConversionFormat::Spss || variable.decimals > 0) {
        column.type = Type::Double;
    } else {
        column.type = typeOfDigits(variable.width);
    }
}

// Codes with labels are names of things.
bool ConversionPlanner::hasOrdinaryCodes(const DataVariable& variable) const
{
    if (variable.valueSets.isEmpty())
        return false;
    const QVector<DataCode>& codes =
        m_dictionary.valueSets[std::size_t(variable.valueSets.first())].codes;
    return std::any_of(codes.begin(), codes.end(), [](const DataCode& code) {
        return code.special == Special::None && code.highCode.isNull() && !code.code.isEmpty();
    });
}

void ConversionPlanner::setShown(ConversionColumn& column, const DataVariable& variable)
{
    constexpr int narrowest = 4;
    constexpr int widest = 40;
    const bool isDescribed = m_dictionary.description != nullptr;
    const StatFormat format = isDescribed
        ? formatOf(m_dictionary.description->variables.at(column.variable),
            m_dictionary.description->kind, m_options.format)
        : formatOf(variable, m_options.format);
    column.format = format.format;
    column.unit = format.unit;
    column.displayWidth = std::clamp(format.width, narrowest, widest);
    column.alignment = isText(variable) ? Alignment::Left : Alignment::Right;
    if (isText(variable) || column.isId || hasOrdinaryCodes(variable))
        column.measure = Measure::Nominal;
    else
        column.measure = Measure::Scale;
    if (column.unit != ConversionUnit::AsIs) {
        column.type = Type::Double;
        tell(Kind::UnitChanged, m_dictionary.description->variables.at(column.variable).format)
            .newText = column.format;
    }
    if (!format.isHeld)
        tell(Kind::FormatNotHeld, m_dictionary.description->variables.at(column.variable).format)
            .newText = column.format;
    if (isDescribed)
        setDescribed(column, m_dictionary.description->variables.at(column.variable));
}

void ConversionPlanner::setDescribed(
    ConversionColumn& column, const TStatVariableDescription& source)
{
    if (source.measure != READSTAT_MEASURE_UNKNOWN)
        column.measure = measureOf(source.measure);
    if (source.alignment != READSTAT_ALIGNMENT_UNKNOWN)
        column.alignment = alignmentOf(source.alignment);
    const bool isSpss = m_options.format == ConversionFormat::Spss;
    if (source.displayWidth > 0 && isSpss)
        column.displayWidth = source.displayWidth;
    if (isSpss || column.isText() || column.unit != ConversionUnit::AsIs)
        return;
    if (source.type == READSTAT_TYPE_FLOAT)
        column.type = Type::Float;
    if (m_dictionary.description->kind == TStatFileKind::Stata) {
        if (source.type == READSTAT_TYPE_INT8)
            column.type = Type::Byte;
        else if (source.type == READSTAT_TYPE_INT16)
            column.type = Type::Int;
        else if (source.type == READSTAT_TYPE_INT32)
            column.type = Type::Long;
        else if (source.type == READSTAT_TYPE_DOUBLE)
            column.type = Type::Double;
    }
}

void ConversionPlanner::tellCsv(ConversionColumn& column)
{
    if (!isDescribed())
        column.format.clear();
    else if (isDateFormat(column.format, m_dictionary.description->kind))
        tell(Kind::DatesStay, column.format);
    if (!m_options.csv.hasLabels)
        return;
    const std::shared_ptr<const CsvCodes> codes = m_csvCodes.of(column.variable);
    for (const ConversionNote& told : codes->notes()) {
        ConversionNote note = told;
        note.file = m_file;
        note.variable = m_variable;
        m_plan.notes.push_back(note);
    }
}

void ConversionPlanner::tellRisks(const ConversionColumn& column, const DataVariable& variable)
{
    const int most = limitsOf(m_options.format).textBytes;
    if (column.isText() && most > 0 && variable.width > most)
        tell(Kind::TextAtRisk, variable.name, Reason::TooLong);
    const int digits = variable.width - (variable.hasDecimalMark && variable.decimals > 0 ? 1 : 0);
    if (variable.type == DataVariable::Type::Number && digits > ExactDigits
        && m_options.format != ConversionFormat::Csv)
        tell(Kind::PrecisionAtRisk, variable.name, Reason::TooLong).count = digits;
}

QString rangeText(double low, double high)
{
    const double endless = std::numeric_limits<double>::infinity();
    if (low == high)
        return realText(low);
    if (low == -endless && high == endless)
        return QStringLiteral("all numbers");
    if (low == -endless)
        return realText(high) + QLatin1String(" and lower");
    if (high == endless)
        return realText(low) + QLatin1String(" and higher");
    return realText(low) + QLatin1Char(':') + realText(high);
}

ConversionPlan::ConversionPlan(const DataDictionary& dictionary, const ConversionOptions& options)
{
    ConversionPlanner(dictionary, options, *this).make();
}

bool ConversionPlan::hasLosses() const
{
    return std::any_of(
        notes.begin(), notes.end(), [](const ConversionNote& note) { return note.isLoss(); });
}

} // namespace tessel
