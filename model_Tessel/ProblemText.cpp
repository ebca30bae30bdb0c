#include <model_Tessel/ProblemText.h>

#include <algorithm>
#include <iterator>

namespace {

using Kind = CSProProblem::Kind;

struct ProblemText {
    Kind kind;
    const char* text; // %1: name of the item or record, %2: value set, %3: the problem's text
};

constexpr ProblemText problemTexts[] = {
    { Kind::ItemWithoutLength,
        "item %1 has no length (Len is %3), so it has no value in the data" },
    { Kind::ItemWithoutStart, "item %1 has no Start; it is taken to begin at column 1" },
    { Kind::ItemDropped, "item %1 was left out: its number of occurrences is %3" },
    { Kind::RecordTypeRepeated,
        "record %1 has the record type '%3' of an earlier record, so lines of that type cannot be "
        "told apart" },
    { Kind::ValueSetIgnored,
        "value set %2 of item %1 was ignored: an item's first value set is kept" },
    { Kind::ValueSetWithoutItem, "value set %2 was ignored: no item stands before it" },
    { Kind::ValueSetOnLastOccurrence,
        "value set %2 of item %1 was given to the item's last occurrence alone" },
    { Kind::DecimalCodesDropped,
        "value set %2 of item %1 was dropped: it has decimal codes, the first is %3" },
    { Kind::DecimalCodesConverted,
        "value set %2 of item %1 was converted: its decimal codes, the first is %3, became 0" },
    { Kind::CodesNotInteger,
        "value set %2 of item %1 was dropped: the code '%3' of a numeric item is not an integer" },
    { Kind::TooManyItems, "item %1 makes more than %3 fields; check its number of occurrences" },
    { Kind::UnknownSection, "the section %3 is unknown and was passed over" },
    { Kind::UnknownKey, "the key '%3' is unknown and was passed over" },
    { Kind::LineWithoutKey, "the line '%3' has no key and was passed over" },
    { Kind::LineOutsideSection,
        "the line '%3' stands before the first section and was passed over" },
    { Kind::RepeatedKey, "the key '%3' stands twice; its first line was taken" },
    { Kind::NotANumber, "'%3' has no number where one is needed, and was passed over" },
    { Kind::UnknownWord, "'%3' is no word that the key can have; it was passed over" },
    { Kind::UnknownSpecial,
        "value set %2 of item %1: '%3' names no special value; the value stays ordinary" },
    { Kind::UnclosedQuote,
        "value set %2 of item %1: a quote in '%3' is not closed; check the code" },
    { Kind::RangeReversed, "value set %2 of item %1: the range %3 begins above its end" },
    { Kind::CodeNotANumber,
        "value set %2 of item %1: the code '%3' of a numeric item is no number" },
    { Kind::SubItemWithoutParent, "subitem %1 has no item before it that it could be part of" },
    { Kind::LinkWithoutValues,
        "value set %2 of item %1 has no values: no set before it with the link %3 has any" },
    { Kind::InvalidJson, "the JSON cannot be read: %3" },
    { Kind::WrongJsonType, "%3 is not what the format says and was passed over" },
};

QString nameOf(const CSProProblem& problem)
{
    return problem.name.isEmpty() ? QStringLiteral("without a name") : quotedText(problem.name);
}

} // namespace

QString describeProblem(const CSProProblem& problem)
{
    const auto* entry = std::find_if(std::begin(problemTexts), std::end(problemTexts),
        [&](const ProblemText& candidate) { return candidate.kind == problem.kind; });
    if (entry == std::end(problemTexts))
        return quotedText(problem.text);
    // Absent placeholders must not shift the others, so all three are filled by hand.
    QString text;
    for (const char* character = entry->text; *character != '\0'; ++character) {
        if (*character != '%') {
            text += QLatin1Char(*character);
            continue;
        }
        ++character;
        text += *character == '1' ? nameOf(problem)
            : *character == '2'   ? quotedText(problem.valueSet)
                                  : quotedText(problem.text);
    }
    return text;
}

bool endsReading(CSProProblem::Kind kind)
{
    return kind == Kind::TooManyItems || kind == Kind::InvalidJson;
}

QString quotedText(const QString& text)
{
    constexpr int LongestQuote = 80;
    if (text.size() <= LongestQuote)
        return text;
    const bool cutsPair =
        text.at(LongestQuote - 1).isHighSurrogate() && text.at(LongestQuote).isLowSurrogate();
    return text.left(LongestQuote - (cutsPair ? 1 : 0)) + QStringLiteral("...");
}
