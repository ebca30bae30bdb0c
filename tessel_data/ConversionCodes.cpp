#include <tessel_data/ConversionCodes_p.h>

#include <tessel_data/DatabaseTarget.h>
#include <tessel_data/FreeCodes_p.h>

#include <model_Tessel/StatDictionary.h>

#include <QSet>

#include <algorithm>
#include <cmath>

namespace tessel {

namespace {

using Kind = ConversionNote::Kind;
using Reason = ConversionNote::Reason;

constexpr int MostKinds = 26; // of missing values in Stata
constexpr std::size_t MostMissing = 3; // codes of a variable in SPSS
constexpr int LongestMissingText = 8;
constexpr double LowestLabelled = -2147483647; // of Stata, as of its long integers
constexpr double HighestLabelled = 2147483620;

// Behind the largest value of each type of Stata, whose own missing values stand there.
constexpr double FirstOfByte = 102;
constexpr double FirstOfInt = 32742;
constexpr double FirstOfLong = 2147483622;

bool isWhole(double number)
{
    return std::floor(number) == number;
}

double missingBaseOf(readstat_type_t type)
{
    if (type == READSTAT_TYPE_INT8)
        return FirstOfByte;
    return type == READSTAT_TYPE_INT16 ? FirstOfInt : FirstOfLong;
}

QString kindText(char tag)
{
    return QStringLiteral(".%1").arg(QLatin1Char(tag));
}

} // namespace

ConversionCodes::ConversionCodes(
    const DataDictionary& dictionary, const ConversionOptions& options, ConversionPlan& plan)
    : m_dictionary(dictionary)
    , m_options(options)
    , m_plan(plan)
    , m_setNames(limitsOf(options.format).program)
{
}

ConversionNote& ConversionCodes::tell(
    Kind kind, const ConversionColumn& column, const QString& text, Reason reason)
{
    ConversionNote note;
    note.kind = kind;
    note.reason = reason;
    note.file = m_file;
    note.variable = column.name;
    note.text = text;
    m_plan.notes.push_back(note);
    return m_plan.notes.back();
}

void ConversionCodes::addLabelled(Codes& codes, const ConversionColumn& column, int set) const
{
    const DataVariable& variable = m_dictionary.variables[std::size_t(column.variable)];
    const DataValueSet& source = m_dictionary.valueSets[std::size_t(set)];
    const CodeTable table = m_dictionary.codesOf(set, variable);
    const auto codeOf = [&](int entry, Special special) {
        Code code;
        code.entry = entry;
        code.special = special;
        code.label = m_dictionary.labelText(source.codes.at(entry).label);
        return code;
    };
    const auto addNumber = [&](double low, double high, int entry, Special special) {
        Code code = codeOf(entry, special);
        code.low = converted(low, column.unit);
        code.high = converted(high, column.unit);
        code.text = rangeText(code.low, code.high);
        codes.labelled.push_back(code);
    };
    for (const auto& segment : table.numbers()) {
        addNumber(nearestDouble(segment.low, column.decimals),
            nearestDouble(segment.high, column.decimals), segment.entry, segment.special);
    }
    for (const auto& segment : table.reals())
        addNumber(segment.low, segment.high, segment.entry, segment.special);
    for (const auto& [text, match] : table.texts()) {
        codes.labelled.push_back(codeOf(match.entry, match.special));
        codes.labelled.back().text = QString::fromUtf8(text.data(), int(text.size()));
    }
    if (m_dictionary.hasMissingKinds)
        addKinds(codes, source);
    std::stable_sort(codes.labelled.begin(), codes.labelled.end(),
        [](const Code& first, const Code& second) { return first.entry < second.entry; });
    if (!table.blank().isCode)
        return;
    const Code blank = codeOf(table.blank().entry, table.blank().special);
    if (codes.isText && !isStata())
        codes.labelled.push_back(blank); // a text like any other
    else
        codes.blankLabel = blank.label;
}

// The first label of a kind counts.
void ConversionCodes::addKinds(Codes& codes, const DataValueSet& source) const
{
    QSet<char> known;
    for (int entry = 0; entry < source.codes.size(); ++entry) {
        const DataCode& kind = source.codes.at(entry);
        if (kind.special != Special::Missing)
            continue;
        Code code;
        code.entry = entry;
        code.label = m_dictionary.labelText(kind.label);
        code.text = kind.code;
        code.tag = kind.code.at(1).toLatin1();
        if (known.contains(code.tag))
            ++codes.repeatedKinds;
        else
            codes.labelled.push_back(code);
        known.insert(code.tag);
    }
}

// An SPSS file tells them apart from its labels.
void ConversionCodes::addMissing(Codes& codes, const ConversionColumn& column) const
{
    const bool isDescribed = m_dictionary.description != nullptr;
    for (const Code& code : codes.labelled) {
        if (!isDescribed && isMissing(code.special))
            codes.missing.push_back(code);
    }
    if (!isDescribed)
        return;
    for (const TStatMissingRange& range :
        m_dictionary.description->variables.at(column.variable).missingRanges) {
        Code missing;
        missing.low = converted(range.low.number, column.unit);
        missing.high = converted(range.high.number, column.unit);
        missing.text = codes.isText ? range.low.text : rangeText(missing.low, missing.high);
        const bool isSplit = isStata() && missing.low < missing.high;
        for (const Code& code : codes.labelled) {
            if (isSplit && code.tag == '\0' && code.low >= missing.low && code.high <= missing.high)
                codes.missing.push_back(code);
            else if (!isSplit && !codes.isText && code.tag == '\0' && code.low == missing.low)
                missing.label = code.label;
        }
        codes.missing.push_back(missing);
    }
}

ConversionCodes::Codes ConversionCodes::codesOf(const ConversionColumn& column) const
{
    const DataVariable& variable = m_dictionary.variables[std::size_t(column.variable)];
    Codes codes;
    codes.isText = column.isText();
    codes.name = variable.itemName;
    if (!variable.valueSets.isEmpty()) {
        const DataValueSet& set = m_dictionary.valueSets[std::size_t(variable.valueSets.first())];
        const bool isNamed =
            !m_dictionary.description || m_dictionary.description->kind == TStatFileKind::Stata;
        if (isNamed && !set.name.isEmpty())
            codes.name = set.name;
        addLabelled(codes, column, variable.valueSets.first());
    }
    addMissing(codes, column);
    return codes;
}

// The n-th missing code becomes the n-th kind.
void ConversionCodes::setTags(const Codes& codes, ConversionColumn& column)
{
    std::vector<Code> left;
    for (const Code& code : codes.missing) {
        const bool isKnown = std::any_of(
            column.missing.begin(), column.missing.end(), [&](const ConversionMissing& known) {
                return known.low == code.low && known.high == code.high;
            });
        if (isKnown)
            continue;
        if (int(column.missing.size()) == MostKinds) {
            left.push_back(code);
            continue;
        }
        const char tag = char('a' + int(column.missing.size()));
        column.missing.push_back({ code.low, code.high, QString(), tag });
        tell(Kind::MissingRecoded, column, code.text).newText = kindText(tag);
        if (code.low < code.high)
            tell(Kind::MissingMerged, column, code.text).newText = kindText(tag);
    }
    tellUnmarked(left, codes, column, Reason::TooMany);
}

// The one of the most codes, of equal ones that whose first code comes first in the dictionary.
ConversionMissing ConversionCodes::longestRun(
    const Codes& codes, const ConversionColumn& column) const
{
    struct Run {
        double low;
        double high;
        std::size_t first; // place in the dictionary
    };
    std::vector<Run> points;
    points.reserve(codes.missing.size());
    for (const Code& code : codes.missing)
        points.push_back({ code.low, code.high, points.size() });
    std::stable_sort(points.begin(), points.end(),
        [](const Run& first, const Run& second) { return first.low < second.low; });
    const bool mayJoin = !m_dictionary.description && column.decimals == 0;
    std::vector<Run> runs;
    for (const Run& point : points) {
        if (mayJoin && !runs.empty() && point.low == runs.back().high + 1)
            runs.back() = { runs.back().low, point.high, std::min(runs.back().first, point.first) };
        else
            runs.push_back(point);
    }
    const Run longest =
        *std::max_element(runs.begin(), runs.end(), [](const Run& first, const Run& second) {
            const double firstSize = first.high - first.low;
            const double secondSize = second.high - second.low;
            return firstSize < secondSize
                || (firstSize == secondSize && first.first > second.first);
        });
    return { longest.low, longest.high, QString(), '\0' };
}

// At most three codes, or a range and a code; codes that follow each other make a range, too.
void ConversionCodes::setMissing(const Codes& codes, ConversionColumn& column)
{
    const bool areFew = codes.missing.size() <= MostMissing
        && std::all_of(codes.missing.begin(), codes.missing.end(),
            [](const Code& code) { return code.low == code.high; });
    const ConversionMissing run = longestRun(codes, column);
    const bool hasRange = !areFew && run.low < run.high;
    if (hasRange)
        column.missing.push_back(run);
    std::vector<Code> left;
    for (const Code& code : codes.missing) {
        if (hasRange && code.low >= run.low && code.high <= run.high)
            continue;
        if (code.low == code.high && column.missing.size() < (hasRange ? 2 : MostMissing))
            column.missing.push_back({ code.low, code.high, QString(), '\0' });
        else
            left.push_back(code);
    }
    tellUnmarked(left, codes, column, Reason::TooMany);
}

void ConversionCodes::setMissingTexts(const Codes& codes, ConversionColumn& column)
{
    std::vector<Code> left;
    for (const Code& code : codes.missing) {
        const bool isShort = code.text.toUtf8().size() <= LongestMissingText;
        if (!isStata() && isShort && column.missing.size() < MostMissing)
            column.missing.push_back({ 0, 0, code.text, '\0' });
        else
            left.push_back(code);
    }
    tellUnmarked(left, codes, column, Reason::TextCodes);
}

void ConversionCodes::tellUnmarked(const std::vector<Code>& left, const Codes& codes,
    const ConversionColumn& column, Reason reason)
{
    constexpr std::size_t mostNamed = 5;
    if (left.empty())
        return;
    QStringList named;
    for (std::size_t i = 0; i < std::min(left.size(), mostNamed); ++i)
        named.append(
            codes.isText ? QLatin1Char('"') + left[i].text + QLatin1Char('"') : left[i].text);
    if (left.size() > mostNamed)
        named.append(QStringLiteral("..."));
    ConversionNote& note = tell(Kind::MissingNotHeld, column, codes.name, reason);
    note.count = int(left.size());
    note.newText = named.join(QLatin1String(", "));
}

// An SPSS text is as wide as its longest code, so that the code keeps its label.
void ConversionCodes::widen(const Codes& codes, ConversionColumn& column) const
{
    const int most = limitsOf(m_options.format).textBytes;
    const auto take = [&](const QString& text) {
        const int bytes = text.toUtf8().size();
        if (bytes <= most)
            column.width = std::max(column.width, bytes);
    };
    for (const Code& code : codes.labelled)
        take(code.text);
    for (const Code& code : codes.missing)
        take(code.text);
}

// Kinds of missing values get codes that no value of their type is, and no code with a label.
void ConversionCodes::setKinds(const Codes& codes, ConversionColumn& column)
{
    FreeCodes free(missingBaseOf(m_dictionary.description->variables.at(column.variable).type));
    for (const Code& code : codes.labelled) {
        if (code.tag == '\0')
            free.take(code.low);
    }
    column.missingBase = free.first();
    for (const Code& code : codes.labelled) {
        if (code.tag != '\0') {
            tell(Kind::MissingRecoded, column, code.text).newText =
                realText(column.missingBase + (code.tag - 'a'));
        }
    }
    tell(Kind::KindsRecoded, column, QStringLiteral(".a to .z")).newText =
        QStringLiteral("%1 to %2")
            .arg(realText(column.missingBase), realText(column.missingBase + FreeCodes::Count - 1));
}

bool ConversionCodes::isHeld(const Code& code, bool isText, Reason& reason) const
{
    const bool isNumber = code.tag == '\0';
    if (isText && isStata())
        reason = Reason::TextCodes;
    else if (isText)
        reason = code.text.toUtf8().size() > limitsOf(m_options.format).textBytes
            ? Reason::LargeCodes
            : Reason::None;
    else if (isNumber && code.low != code.high)
        reason = Reason::RangeCodes;
    else if (isNumber && isStata() && !isWhole(code.low))
        reason = Reason::DecimalCodes;
    else if (isNumber && isStata() && (code.low < LowestLabelled || code.low > HighestLabelled))
        reason = Reason::LargeCodes;
    else
        reason = Reason::None;
    return reason == Reason::None;
}

void ConversionCodes::tellSets(const Codes& codes, const ConversionColumn& column)
{
    const DataVariable& variable = m_dictionary.variables[std::size_t(column.variable)];
    if (!codes.blankLabel.isEmpty()) {
        tell(Kind::ValuesUnlabelled, column, codes.name, Reason::BlankCode);
    }
    if (codes.repeatedKinds > 0) {
        tell(Kind::ValuesUnlabelled, column, codes.name, Reason::Repeated).count =
            codes.repeatedKinds;
    }
    for (int set = 1; set < variable.valueSets.size(); ++set) {
        const DataValueSet& further =
            m_dictionary.valueSets[std::size_t(variable.valueSets.at(set))];
        if (!further.codes.isEmpty())
            tell(Kind::FurtherValueSet, column, further.name);
    }
}

// Codes that become kinds of missing values have their labels there, or their codes where they have
// none.
std::vector<ConversionLabel> ConversionCodes::labelsOf(
    const Codes& codes, const ConversionColumn& column)
{
    std::vector<ConversionLabel> labels;
    QHash<int, int> left; // by reason
    for (const Code& code : codes.labelled) {
        const bool isKind = std::any_of(
            column.missing.begin(), column.missing.end(), [&](const ConversionMissing& missing) {
                return missing.tag != '\0' && code.tag == '\0' && code.low == missing.low
                    && code.high == missing.high;
            });
        Reason reason = Reason::None;
        if (isKind)
            continue;
        if (!isHeld(code, codes.isText, reason))
            ++left[int(reason)];
        else
            labels.push_back(
                { code.low, codes.isText ? code.text : QString(), code.tag, code.label });
    }
    for (const ConversionMissing& missing : column.missing) {
        if (missing.tag == '\0')
            continue;
        const auto code = std::find_if(codes.missing.begin(), codes.missing.end(),
            [&](const Code& one) { return one.low == missing.low && one.high == missing.high; });
        labels.push_back(
            { 0, QString(), missing.tag, code->label.isEmpty() ? code->text : code->label });
    }
    for (auto reason = left.constBegin(); reason != left.constEnd(); ++reason)
        tell(Kind::ValuesUnlabelled, column, codes.name, Reason(reason.key())).count = *reason;
    return labels;
}

void ConversionCodes::addLabel(
    ConversionLabelSet& set, const ConversionLabel& label, ConversionColumn column)
{
    const FittedText shown =
        fitted(label.label, statValueLabelLimit(limitsOf(m_options.format).program));
    if (shown.reason != Reason::None)
        tell(Kind::ValueLabelCut, column, label.label, shown.reason).newText = shown.text;
    set.labels.push_back(label);
    set.labels.back().label = shown.text;
}

// Variables of one value set share its labels.
int ConversionCodes::labelSet(const Codes& codes, const ConversionColumn& column)
{
    const std::vector<ConversionLabel> labels = labelsOf(codes, column);
    if (labels.empty())
        return -1;
    QString key = codes.name + QLatin1Char('\n') + QString::number(column.missingBase);
    for (const ConversionLabel& label : labels) {
        key += QStringLiteral("\n%1 %2 %3 %4\n")
                   .arg(QString::number(label.number, 'g', 17), QString::number(label.tag),
                       QString::number(label.text.size()), QString::number(label.label.size()))
            + label.text + label.label;
    }
    const auto known = m_sets.constFind(key);
    if (known != m_sets.constEnd())
        return *known;
    ConversionLabelSet set;
    const StatName name = m_setNames.take(codes.name);
    set.name = name.name;
    set.isText = codes.isText;
    if (isStata() && name.isChanged()) {
        ConversionNote& note = tell(Kind::LabelSetRenamed, column, codes.name);
        note.newText = name.name;
        note.nameReasons = name.reasons;
    }
    for (const ConversionLabel& label : labels)
        addLabel(set, label, column);
    m_plan.labelSets.push_back(set);
    m_sets.insert(key, int(m_plan.labelSets.size()) - 1);
    return int(m_plan.labelSets.size()) - 1;
}

void ConversionCodes::fill(ConversionColumn& column, const QString& file)
{
    m_file = file;
    const Codes codes = codesOf(column);
    if (codes.isText)
        setMissingTexts(codes, column);
    else if (isStata() && !m_options.keepsMissingCodes)
        setTags(codes, column);
    else if (!isStata() && !codes.missing.empty())
        setMissing(codes, column);
    if (m_dictionary.hasMissingKinds && !isStata() && !codes.isText)
        setKinds(codes, column);
    if (codes.isText && !isStata())
        widen(codes, column);
    tellSets(codes, column);
    column.labelSet = labelSet(codes, column);
}

} // namespace tessel
