#include "writers/SetupPlan.h"

#include "writers/SetupMissing.h"

#include <QFileInfo>
#include <QHash>
#include <QSet>

#include <algorithm>
#include <map>

using tessel::CodeTable;
using tessel::DataDictionary;
using tessel::DataRecord;
using tessel::DataVariable;
using tessel::Special;
using tessel::StatName;
using tessel::StatNames;
using tessel::StatProgram;

namespace {

using Kind = SetupNote::Kind;

constexpr int MostDigits = 15; // that the double of every program holds
constexpr int FormatStem = 22; // of names of formats in SAS, which have more behind it

// Told with a number, and not at all when that is 0.
bool isCounted(Kind kind)
{
    return kind >= Kind::LabelsOfTexts && kind <= Kind::MissingTooMany;
}

SetupAbilities abilitiesOf(StatProgram program)
{
    SetupAbilities can;
    switch (program) {
    case StatProgram::Stata:
        can.labelsTexts = can.labelsDecimals = can.labelsRanges = can.labelsBlankNumbers = false;
        can.hasMissingTexts = false;
        can.largestLabelled = 2'147'483'620;
        break;
    case StatProgram::Spss:
        can.labelsRanges = can.labelsBlankNumbers = can.hasFurtherSets = can.countsBytes = false;
        can.widestText = 32'767;
        break;
    case StatProgram::Sas:
        can.hasMissingTexts = false;
        can.widestText = 32'767;
        break;
    case StatProgram::R:
        can.labelsRanges = can.labelsBlankNumbers = can.hasFurtherSets = can.countsBytes = false;
        break;
    }
    return can;
}

// What a label of one line, or none, can hold: other control characters are shown by their
// pictures.
QString cleanLabel(const QString& label, StatProgram program)
{
    QString text = tessel::visibleText(label);
    if (program == StatProgram::Sas) {
        for (QChar& character : text) {
            if (character.unicode() < 0x20)
                character = QLatin1Char(' ');
        }
    }
    return text;
}

// A name that no shell or program has to be asked about.
QString dataFileOf(const QString& file)
{
    const QString name = QFileInfo(file).completeBaseName();
    const bool isPlain =
        !name.isEmpty() && std::all_of(name.begin(), name.end(), [](QChar character) {
            const ushort code = character.unicode();
            return (code >= '0' && code <= '9') || (code >= 'A' && code <= 'Z')
                || (code >= 'a' && code <= 'z') || code == '_' || code == '-';
        });
    return (isPlain ? name : QStringLiteral("data")) + QLatin1String(".dat");
}

SetupType typeOf(const DataVariable& variable)
{
    const int digits = variable.width - (variable.hasDecimalMark ? 1 : 0);
    if (variable.type != DataVariable::Type::Number || digits > MostDigits)
        return SetupType::Text;
    return variable.decimals > 0 ? SetupType::Decimals : SetupType::Whole;
}

struct Found {
    int entry;
    SetupLabel label;
};

// What each code of the set stands for, where an earlier one does not stand for it already.
QVector<Found> codesIn(const CodeTable& table)
{
    QVector<Found> found;
    const auto add = [&found](const CodeTable::Match& match, SetupLabel label) {
        label.isMissing = match.special != Special::None && match.special != Special::Default;
        found.append({ match.entry, label });
    };
    if (table.blank().isCode) {
        SetupLabel label;
        label.isBlank = true;
        add(table.blank(), label);
    }
    for (const auto& segment : table.numbers()) {
        SetupLabel label;
        label.low = segment.low;
        label.high = segment.high;
        add({ true, segment.special, segment.entry }, label);
    }
    for (const auto& text : table.texts()) {
        SetupLabel label;
        label.text = QString::fromUtf8(text.first.data(), int(text.first.size()));
        add(text.second, label);
    }
    std::stable_sort(found.begin(), found.end(),
        [](const Found& a, const Found& b) { return a.entry < b.entry; });
    return found;
}

// False: the code is no number of the variable.
bool isReadable(const tessel::DataCode& code, const DataVariable& variable)
{
    qint64 number = 0;
    const QByteArray text = code.code.trimmed().toLatin1();
    return variable.type == DataVariable::Type::Text || text.isEmpty() || !code.highCode.isNull()
        || tessel::readCode(
               { text.constData(), std::size_t(text.size()) }, variable.decimals, number)
        == tessel::NumberStatus::Number;
}

// Makes the plan.
class SetupPlanner {
public:
    SetupPlanner(const DataDictionary& dictionary, SetupPlan& plan)
        : m_dictionary(dictionary)
        , m_plan(plan)
        , m_recordNames(plan.program)
        , m_labelNames(plan.program)
    {
    }

    void addRecord(int index);

private:
    void addVariable(SetupRecord& record, StatNames& names, const DataVariable& variable);
    int labelsOf(const DataVariable& variable, SetupRecord& record);
    int labelsOf(int set, const DataVariable& variable);
    void addLabels(int labels, SetupRecord& record) const;
    void addCodes(SetupLabels& labels, int set, const DataVariable& variable);
    void addMissing(SetupLabels& labels);
    bool isTooWide(const SetupLabel& label, int width) const
    {
        return m_plan.program == StatProgram::Spss && label.text.toUtf8().size() > spssWidth(width);
    }
    bool isLeftOut(const SetupLabels& labels, const SetupLabel& label, Kind& reason) const;
    QString labelsName(const QString& setName, bool isText);
    QString fitted(const QString& label, tessel::StatLimit limit, Kind cut, const QString& thing,
        const QString& record);
    QString stataDataLabel(const QString& label, const QString& record);
    QString renamed(const StatName& name, const QString& wanted, const QString& record);
    void tell(Kind kind, const QString& thing, const QString& record, int count = 0)
    {
        if (!isCounted(kind) || count > 0)
            m_plan.notes.append({ kind, thing, record, QString(), {}, count });
    }

    const DataDictionary& m_dictionary;
    SetupPlan& m_plan;
    StatNames m_recordNames;
    StatNames m_labelNames;
    QHash<QPair<int, int>, int> m_labels; // by value set, and decimals or -1 for texts
};

} // namespace

QString SetupPlanner::renamed(const StatName& name, const QString& wanted, const QString& record)
{
    if (name.isChanged())
        m_plan.notes.append({ Kind::Renamed, wanted, record, name.name, name.reasons, 0 });
    return name.name;
}

QString SetupPlanner::fitted(const QString& label, tessel::StatLimit limit, Kind cut,
    const QString& thing, const QString& record)
{
    const QString clean = cleanLabel(label, m_plan.program);
    if (clean != label)
        tell(Kind::CharactersReplaced, thing, record);
    const QString result = tessel::statText(clean, limit);
    if (result != clean)
        tell(cut, thing, record, 1);
    return result;
}

// Of the labels in Stata that of the data alone has to stand in quotes.
QString SetupPlanner::stataDataLabel(const QString& label, const QString& record)
{
    QString result = label;
    for (int i = 0; i < label.size(); ++i) {
        if (isStataSpecial(label, i))
            result[i] = QLatin1Char('?');
    }
    if (result != label)
        tell(Kind::CharactersReplaced, record, QString());
    return result;
}

void SetupPlanner::addRecord(int index)
{
    const DataRecord& source = m_dictionary.records[std::size_t(index)];
    SetupRecord record;
    const QString wanted = source.name.isEmpty() ? m_dictionary.name : source.name;
    record.name = renamed(m_recordNames.take(wanted), wanted, QString());
    record.label = fitted(m_dictionary.labelText(source.label), statLabelLimit(m_plan.program),
        Kind::LabelCut, wanted, QString());
    if (m_plan.program == StatProgram::Stata)
        record.label = stataDataLabel(record.label, wanted);
    record.typeCode = source.typeCode;
    record.width = source.width;
    StatNames names(m_plan.program);
    for (int column = 0; column < source.columns.size(); ++column)
        addVariable(record, names, m_dictionary.variable(index, column));
    record.typeName = names.take(QStringLiteral("record_type")).name;
    record.firstName = names.take(QStringLiteral("first_column")).name;
    record.lineName = names.take(QStringLiteral("whole_line")).name;
    if (record.variables.empty())
        return tell(Kind::NoColumns, wanted, QString());
    if (record.hasText && m_plan.can.countsBytes)
        tell(Kind::Bytes, wanted, QString());
    m_plan.width = std::max(m_plan.width, record.width);
    m_plan.records.push_back(std::move(record));
}

void SetupPlanner::addVariable(SetupRecord& record, StatNames& names, const DataVariable& source)
{
    if (source.type == DataVariable::Type::Binary)
        return tell(Kind::Binary, source.name, record.name);
    if (source.width <= 0)
        return tell(Kind::NoColumns, source.name, record.name);
    SetupVariable variable;
    variable.name = renamed(names.take(source.name), source.name, record.name);
    variable.label = fitted(m_dictionary.fullLabel(source), statLabelLimit(m_plan.program),
        Kind::LabelCut, source.name, record.name);
    variable.type = typeOf(source);
    variable.start = source.start + 1;
    variable.width = source.width;
    variable.decimals = variable.type == SetupType::Decimals ? source.decimals : 0;
    if (source.type == DataVariable::Type::Number && variable.type == SetupType::Text)
        tell(Kind::WideNumber, source.name, record.name);
    else
        variable.labels = labelsOf(source, record);
    if (m_plan.can.widestText > 0 && variable.type == SetupType::Text
        && variable.width > m_plan.can.widestText) {
        tell(Kind::WideText, source.name, record.name, m_plan.can.widestText);
        variable.width = m_plan.can.widestText;
    }
    record.hasText = record.hasText || source.type == DataVariable::Type::Text;
    record.variables.push_back(std::move(variable));
}

// The first value set is the variable's; the others are its as well where the program keeps them.
int SetupPlanner::labelsOf(const DataVariable& variable, SetupRecord& record)
{
    if (variable.valueSets.isEmpty())
        return -1;
    const int labels = labelsOf(variable.valueSets.constFirst(), variable);
    addLabels(labels, record);
    if (m_plan.can.hasFurtherSets) {
        for (const int set : variable.valueSets)
            addLabels(labelsOf(set, variable), record);
    } else if (variable.occurrence <= 1) {
        tell(Kind::FurtherSets, variable.name, record.name, variable.valueSets.size() - 1);
    }
    return m_plan.labels[std::size_t(labels)].labels.isEmpty() ? -1 : labels;
}

void SetupPlanner::addLabels(int labels, SetupRecord& record) const
{
    if (!m_plan.labels[std::size_t(labels)].labels.isEmpty() && !record.labels.contains(labels))
        record.labels.append(labels);
}

// Names of formats in SAS begin with "$" for texts and end in no digit.
QString SetupPlanner::labelsName(const QString& setName, bool isText)
{
    if (m_plan.program != StatProgram::Sas)
        return m_labelNames.take(setName).name;
    const QString name = m_labelNames.take(tessel::statText(setName, { FormatStem, true })).name;
    return (isText ? QStringLiteral("$") : QString()) + name + QLatin1Char('F');
}

int SetupPlanner::labelsOf(int set, const DataVariable& variable)
{
    const bool isText = variable.type == DataVariable::Type::Text;
    // SPSS takes no labels of texts that are wider than the variable.
    const int textKey = m_plan.program == StatProgram::Spss ? -variable.width : -1;
    const QPair<int, int> key(set, isText ? textKey : variable.decimals);
    const auto known = m_labels.constFind(key);
    if (known != m_labels.constEnd())
        return known.value();
    const tessel::DataValueSet& source = m_dictionary.valueSets[std::size_t(set)];
    SetupLabels labels;
    labels.setName = source.name.isEmpty() ? variable.itemName : source.name;
    labels.isText = isText;
    labels.decimals = isText ? 0 : variable.decimals;
    labels.width = variable.width;
    labels.name = labelsName(labels.setName, isText);
    addCodes(labels, set, variable);
    const int index = int(m_plan.labels.size());
    m_labels.insert(key, index);
    m_plan.labels.push_back(std::move(labels));
    return index;
}

bool SetupPlanner::isLeftOut(const SetupLabels& labels, const SetupLabel& label, Kind& reason) const
{
    const SetupAbilities& can = m_plan.can;
    const qint64 unit = tessel::powerOfTen(labels.decimals);
    // A missing value in Stata may have any label.
    const bool isKind = label.isMissing && m_plan.program == StatProgram::Stata;
    const bool isNumber = !label.isBlank && !isKind;
    if (labels.isText && !can.labelsTexts)
        reason = Kind::LabelsOfTexts;
    else if (!labels.isText && label.isBlank && !can.labelsBlankNumbers)
        reason = Kind::LabelOfBlank;
    else if (labels.isText && !label.isBlank && isTooWide(label, labels.width))
        reason = Kind::UnreadableCodes;
    else if (isNumber && label.isRange() && !can.labelsRanges)
        reason = Kind::LabelsOfRanges;
    else if (isNumber && label.low % unit != 0 && !can.labelsDecimals)
        reason = Kind::LabelsOfDecimals;
    else if (isNumber && can.largestLabelled > 0
        && std::abs(label.low / unit) > can.largestLabelled)
        reason = Kind::LabelsTooLarge;
    else
        return false;
    return true;
}

void SetupPlanner::addCodes(SetupLabels& labels, int set, const DataVariable& variable)
{
    const tessel::DataValueSet& source = m_dictionary.valueSets[std::size_t(set)];
    const tessel::StatLimit limit = statValueLabelLimit(m_plan.program);
    std::map<Kind, int> leftOut;
    QSet<int> entries;
    const QVector<Found> found = codesIn(m_dictionary.codesOf(set, variable));
    for (const Found& code : found) {
        entries.insert(code.entry);
        SetupLabel label = code.label;
        const QString text = m_dictionary.labelText(source.codes.at(code.entry).label);
        const QString clean = cleanLabel(text, m_plan.program);
        label.label = tessel::statText(clean, limit);
        if (clean != text)
            ++leftOut[Kind::CharactersReplaced];
        if (label.label != clean)
            ++leftOut[Kind::ValueLabelsCut];
        if (labels.isText && !m_plan.can.hasMissingTexts && label.isMissing && !label.isBlank)
            ++leftOut[Kind::MissingOfTexts];
        Kind reason = Kind::Renamed;
        if (isLeftOut(labels, label, reason)) {
            leftOut[reason] += label.label.isEmpty() && !label.isMissing ? 0 : 1;
            if (!label.isMissing || labels.isText)
                continue;
            label.label.clear();
        }
        labels.labels.append(label);
    }
    for (int i = 0; i < source.codes.size(); ++i) {
        if (!entries.contains(i)) {
            ++leftOut[isReadable(source.codes.at(i), variable) ? Kind::RepeatedCodes
                                                               : Kind::UnreadableCodes];
        }
    }
    for (const auto& [kind, count] : leftOut)
        tell(kind, labels.setName, QString(), count);
    addMissing(labels);
}

// As many as the program takes; the others stay values, which is told.
void SetupPlanner::addMissing(SetupLabels& labels)
{
    QVector<SetupLabel> all;
    for (const SetupLabel& label : qAsConst(labels.labels)) {
        if (label.isMissing && !label.isBlank)
            all.append(label);
    }
    if (labels.isText && !m_plan.can.hasMissingTexts)
        return;
    labels.missing = missingFor(m_plan.program, all, labels);
    int lost = 0;
    for (SetupLabel& label : labels.labels) {
        const bool isLost = label.isMissing && !label.isBlank && !isAmong(label, labels.missing);
        label.isMissing = label.isMissing && !isLost;
        lost += isLost ? 1 : 0;
    }
    tell(Kind::MissingTooMany, labels.setName, QString(), lost);
}

SetupPlan::SetupPlan(const DataDictionary& dictionary, const QString& file, StatProgram program)
    : program(program)
    , can(abilitiesOf(program))
    , title(dictionary.labelText(dictionary.label))
    , dictionaryFile(QFileInfo(file).fileName())
    , dataFile(dataFileOf(file))
    , typeStart(dictionary.recordTypeStart + 1)
    , typeWidth(dictionary.recordTypeWidth)
{
    if (title.trimmed().isEmpty())
        title = dictionary.name;
    SetupPlanner planner(dictionary, *this);
    for (int i = 0; i < int(dictionary.records.size()); ++i)
        planner.addRecord(i);
    if (records.empty())
        notes.append({ Kind::NoRecords, QString(), QString(), QString(), {}, 0 });
}

QStringList SetupRecord::namesWith(int index) const
{
    QStringList names;
    for (const SetupVariable& variable : variables) {
        if (variable.labels == index)
            names.append(variable.name);
    }
    return names;
}

QStringList SetupPlan::heading(const QStringList& usage) const
{
    QStringList lines;
    lines.append(QStringLiteral("Reads text data as the dictionary %1 describes them: %2")
                     .arg(dictionaryFile, title));
    lines += usage;
    if (!notes.isEmpty())
        lines.append(QStringLiteral("What is not as in the dictionary:"));
    for (const SetupNote& note : notes)
        lines.append(QStringLiteral("- ") + noteText(note, program));
    return lines;
}

bool SetupLabels::hasLabels() const
{
    return std::any_of(labels.begin(), labels.end(),
        [](const SetupLabel& label) { return !label.label.isEmpty(); });
}
