#include <tessel_data/StatNames.h>

#include <algorithm>

namespace tessel {

namespace {

// What a program demands of names.
struct NameRules {
    StatLimit limit;
    const char* furtherMarks; // besides letters, digits and "_"
    const char* firstMarks; // besides letters
    bool hasAnyLetters; // of all scripts, not of ASCII alone
    Qt::CaseSensitivity differ;
    const char* reservedWords; // in small letters where case does not matter
};

// Stata and SPSS take letters of any script; Stata tells "a" from "A".
constexpr NameRules stata { { 32, false }, "", "_", true, Qt::CaseSensitive,
    "_all _b byte _coef _cons double float if in int long _n _N _pi _pred _rc _skip strL using "
    "with" };
constexpr NameRules spss { { 64, true }, ".@#$", "@", true, Qt::CaseInsensitive,
    "all and by eq ge gt le lt ne not or to with" };
// Reserved are the names of lists and automatic variables, and the words that are operators.
constexpr NameRules sas { { 32, true }, "", "_", false, Qt::CaseInsensitive,
    "_all_ _character_ _char_ _cmd_ _data_ _error_ _freq_ _i_ _infile_ _iorc_ _last_ _msg_ _n_ "
    "_name_ _null_ _numeric_ _temporary_ _type_ and eq ge gt in le lt ne not or" };

const NameRules* rulesOf(StatProgram program)
{
    switch (program) {
    case StatProgram::Stata:
        return &stata;
    case StatProgram::Spss:
        return &spss;
    case StatProgram::Sas:
        return &sas;
    case StatProgram::R: // any text is the name of a column
        break;
    }
    return nullptr;
}

bool isDigit(QChar character)
{
    return character >= QLatin1Char('0') && character <= QLatin1Char('9');
}

bool isAsciiLetter(QChar character)
{
    const ushort code = character.unicode();
    return (code >= 'A' && code <= 'Z') || (code >= 'a' && code <= 'z');
}

bool isOneOf(QChar character, const char* marks)
{
    return QString::fromLatin1(marks).contains(character);
}

// Those outside the first plane stand in two halves and are taken for none.
bool isLetter(QChar character, const NameRules& rules)
{
    return isAsciiLetter(character)
        || (rules.hasAnyLetters && character.unicode() >= 0x80 && character.isLetter());
}

bool isAllowed(QChar character, const NameRules& rules)
{
    return isLetter(character, rules) || isDigit(character) || character == QLatin1Char('_')
        || isOneOf(character, rules.furtherMarks);
}

// SPSS takes a point at the end for that of the command.
QString withoutFinalPoint(QString name)
{
    if (name.endsWith(QLatin1Char('.')))
        name[name.size() - 1] = QLatin1Char('_');
    return name;
}

QString allowedText(const QString& wanted, const NameRules& rules)
{
    QString name;
    for (int i = 0; i < wanted.size(); ++i) {
        const QChar character = wanted.at(i);
        const bool isSecondHalf =
            character.isLowSurrogate() && i > 0 && wanted.at(i - 1).isHighSurrogate();
        if (!isSecondHalf)
            name += isAllowed(character, rules) ? character : QLatin1Char('_');
    }
    return name.isEmpty() ? QStringLiteral("unnamed") : withoutFinalPoint(name);
}

// Stata has types "str1", "str2" and so on.
bool isStringType(const QString& name)
{
    const QString digits = name.mid(3);
    return name.startsWith(QLatin1String("str")) && !digits.isEmpty()
        && std::all_of(digits.begin(), digits.end(), isDigit);
}

QStringList reservedWords(const NameRules* rules)
{
    return rules ? QString::fromLatin1(rules->reservedWords).split(QLatin1Char(' '))
                 : QStringList();
}

int sizeOf(const QString& text, StatLimit limit)
{
    return limit.isInBytes ? text.toUtf8().size() : text.toUcs4().size();
}

bool fits(const QString& text, StatLimit limit)
{
    return limit.most == 0 || sizeOf(text, limit) <= limit.most;
}

// "_12" of "AGE_12"; empty when there is none, or more digits than occurrences have.
QString numberOf(const QString& name)
{
    constexpr int mostDigits = 6;
    int at = name.size();
    while (at > 0 && isDigit(name.at(at - 1)))
        --at;
    const int digits = name.size() - at;
    const bool isNumber =
        digits >= 1 && digits <= mostDigits && at > 1 && name.at(at - 1) == QLatin1Char('_');
    return isNumber ? name.mid(at - 1) : QString();
}

QString cutName(const QString& name, StatLimit limit)
{
    const QString number = numberOf(name);
    const StatLimit stem { limit.most - number.size(), limit.isInBytes };
    return withoutFinalPoint(statText(name.chopped(number.size()), stem) + number);
}

} // namespace

StatNames::StatNames(StatProgram program)
    : m_program(program)
    , m_reservedWords(reservedWords(rulesOf(program)))
    , m_taken(rulesOf(program) ? rulesOf(program)->differ : Qt::CaseSensitive)
{
}

StatName StatNames::take(const QString& wanted)
{
    const NameRules* const rules = rulesOf(m_program);
    StatName result;
    const auto change = [&result](const QString& name, StatNameReason reason) {
        if (name != result.name)
            result.reasons.append(reason);
        result.name = name;
    };
    result.name = wanted;
    if (rules) {
        change(allowedText(wanted, *rules), StatNameReason::NotAllowed);
        const QChar first = result.name.at(0);
        if (!isLetter(first, *rules) && !isOneOf(first, rules->firstMarks))
            change(QLatin1Char('v') + result.name, StatNameReason::Beginning);
        const bool isType = m_program == StatProgram::Stata && isStringType(result.name);
        if (isType || m_reservedWords.contains(result.name, rules->differ))
            change(QLatin1Char('v') + result.name, StatNameReason::ReservedWord);
        if (!fits(result.name, rules->limit))
            change(cutName(result.name, rules->limit), StatNameReason::TooLong);
    } else {
        const QString shown = visibleText(wanted);
        change(shown.isEmpty() ? QStringLiteral("unnamed") : shown, StatNameReason::NotAllowed);
    }
    QString own = m_taken.take(result.name);
    if (rules && !fits(own, rules->limit)) {
        constexpr int roomForNumber = 8;
        own = m_taken.take(
            cutName(result.name, { rules->limit.most - roomForNumber, rules->limit.isInBytes }));
    }
    change(own, StatNameReason::Taken);
    return result;
}

StatLimit statNameLimit(StatProgram program)
{
    const NameRules* const rules = rulesOf(program);
    return rules ? rules->limit : StatLimit();
}

StatLimit statLabelLimit(StatProgram program)
{
    switch (program) {
    case StatProgram::Stata:
        return { 80, false };
    case StatProgram::Spss:
    case StatProgram::Sas:
        return { 256, true };
    case StatProgram::R:
        break;
    }
    return {};
}

StatLimit statValueLabelLimit(StatProgram program)
{
    switch (program) {
    case StatProgram::Stata:
        return { 32'000, true };
    case StatProgram::Spss:
        return { 120, true };
    case StatProgram::Sas:
        return { 32'767, true };
    case StatProgram::R:
        break;
    }
    return {};
}

QString statText(const QString& text, StatLimit limit)
{
    if (fits(text, limit))
        return text;
    int size = 0;
    for (int i = 0; i < text.size();) {
        const bool isPair =
            text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        const int halves = isPair ? 2 : 1;
        size += sizeOf(text.mid(i, halves), limit);
        if (size > limit.most)
            return text.left(i);
        i += halves;
    }
    return text;
}

QString statProgramName(StatProgram program)
{
    switch (program) {
    case StatProgram::Stata:
        return QStringLiteral("Stata");
    case StatProgram::Spss:
        return QStringLiteral("SPSS");
    case StatProgram::Sas:
        return QStringLiteral("SAS");
    case StatProgram::R:
        break;
    }
    return QStringLiteral("R");
}

namespace {

QString reasonText(StatNameReason reason, StatProgram program)
{
    const QString name = statProgramName(program);
    const StatLimit limit = statNameLimit(program);
    switch (reason) {
    case StatNameReason::NotAllowed:
        return QStringLiteral("%1 does not take its name").arg(name);
    case StatNameReason::Beginning:
        return QStringLiteral("names of %1 do not begin so").arg(name);
    case StatNameReason::ReservedWord:
        return QStringLiteral("its name is a reserved word of %1").arg(name);
    case StatNameReason::TooLong:
        return QStringLiteral("names of %1 have at most %2 %3")
            .arg(name, QString::number(limit.most),
                limit.isInBytes ? QStringLiteral("bytes") : QStringLiteral("characters"));
    case StatNameReason::Taken:
        break;
    }
    return QStringLiteral("its name is taken");
}

} // namespace

QString reasonText(const QVector<StatNameReason>& reasons, StatProgram program)
{
    QStringList texts;
    for (const StatNameReason reason : reasons)
        texts.append(reasonText(reason, program));
    return texts.join(QLatin1String(", "));
}

} // namespace tessel
