#include "listing/ValueDiff.h"

#include "listing/CodeKeys.h"
#include "listing/Pairing.h"
#include "text/PlainNumber.h"
#include "text/ShownText.h"

#include <model_Tessel/UtilStrings.h>

#include <algorithm>

namespace {

using Property = DifferingProperty;

class ValueComparison {
public:
    ValueComparison(const DiffContext& context, DifferenceList& differences)
        : m_context(context)
        , m_differences(differences)
    {
    }

    void compareMissing(const ListedField& before, const ListedField& after);
    void compareValueSets(const ListedField& before, const ListedField& after);

private:
    void compareCodes(const ListedValueSet& before, const ListedValueSet& after,
        const CodeCover& cover, KeyOfCode keyOf);
    void compareCode(
        const ListedValueSet& valueSet, const ListedCode& before, const ListedCode& after);
    void addCode(
        DifferenceKind kind, bool breaks, const ListedValueSet& valueSet, const ListedCode& entry);

    const DiffContext& m_context;
    DifferenceList& m_differences;
};

QString joined(const QVector<ListedCode>& codes)
{
    QStringList texts;
    for (const ListedCode& entry : codes) {
        texts.append(
            entry.isRange() ? entry.code + QLatin1String("..") + entry.highCode : entry.code);
    }
    return joinedCodes(texts);
}

// True when a key of \a before is not among \a after.
bool losesKeys(const QStringList& before, const QStringList& after)
{
    const QSet<QString> kept(after.cbegin(), after.cend());
    return std::any_of(
        before.cbegin(), before.cend(), [&](const QString& key) { return !kept.contains(key); });
}

// Both as an SPSS or Stata file has them: a number cannot be blank there but is missing by itself.
QVector<ListedCode> allMissingCodes(const ListedField& field)
{
    QVector<ListedCode> codes = field.missingCodes() + field.notApplicableCodes();
    const auto isDropped = [&](const ListedCode& entry) {
        return !field.isText() && isBlank(entry.code);
    };
    codes.erase(std::remove_if(codes.begin(), codes.end(), isDropped), codes.end());
    return codes;
}

// SPSS and Stata files do not tell what is not applicable from what is missing.
void ValueComparison::compareMissing(const ListedField& before, const ListedField& after)
{
    const KeyOfCode keyOf = keyFor(before, after);
    const auto compare = [&](DifferenceKind kind, Property property,
                             const QVector<ListedCode>& first, const QVector<ListedCode>& second) {
        const QStringList firstKeys = rangeKeys(first, keyOf);
        const QStringList secondKeys = rangeKeys(second, keyOf);
        const bool isLost = losesKeys(firstKeys, secondKeys);
        if (isLost || losesKeys(secondKeys, firstKeys))
            m_differences.add(kind, property, isLost, joined(first), joined(second));
    };
    if (m_context.hadRecords != m_context.hasRecords) {
        compare(DifferenceKind::MissingChanged, Property::Missing, allMissingCodes(before),
            allMissingCodes(after));
        return;
    }
    compare(DifferenceKind::MissingChanged, Property::Missing, before.missingCodes(),
        after.missingCodes());
    compare(DifferenceKind::NotApplicableChanged, Property::NotApplicable,
        before.notApplicableCodes(), after.notApplicableCodes());
}

QStringList namesOf(const QVector<ListedValueSet>& valueSets)
{
    QStringList names;
    for (const ListedValueSet& valueSet : valueSets)
        names.append(valueSet.name.toCaseFolded());
    return names;
}

// Value sets have names only in dictionaries with several; elsewhere the first is the one.
void ValueComparison::compareValueSets(const ListedField& before, const ListedField& after)
{
    QVector<ListedValueSet> first = before.valueSets;
    QVector<ListedValueSet> second = after.valueSets;
    if (!m_context.haveRecords()) {
        first = first.mid(0, 1);
        second = second.mid(0, 1);
    }
    Pairing pairing(first.size(), second.size());
    pairing.pair(namesOf(first), namesOf(second));
    pairing.pairInOrder();
    const KeyOfCode keyOf = keyFor(before, after);
    const CodeCover cover(after.valueSets, keyOf);
    for (int i = 0; i < first.size(); ++i) {
        const int partner = pairing.afterOf(i);
        compareCodes(
            first.at(i), partner >= 0 ? second.at(partner) : ListedValueSet(), cover, keyOf);
    }
    for (int i = 0; i < second.size(); ++i) {
        if (pairing.beforeOf(i) < 0)
            compareCodes(ListedValueSet(), second.at(i), cover, keyOf);
    }
}

void ValueComparison::addCode(
    DifferenceKind kind, bool breaks, const ListedValueSet& valueSet, const ListedCode& entry)
{
    Difference& difference = m_differences.add(kind, breaks);
    difference.valueSet = orNull(valueSet.name);
    difference.code = entry.code;
    difference.highCode = entry.highCode;
    if (kind == DifferenceKind::ValueRemoved)
        difference.before = entry.label;
    else
        difference.after = entry.label;
}

// A code that another value set, or a range, still has is not lost to the data. SPSS and Stata
// files have no labels for ranges and blanks, and take such values without.
void ValueComparison::compareCodes(const ListedValueSet& before, const ListedValueSet& after,
    const CodeCover& cover, KeyOfCode keyOf)
{
    Pairing pairing(before.codes.size(), after.codes.size());
    pairing.pair(rangeKeys(before.codes, keyOf), rangeKeys(after.codes, keyOf));
    for (int i = 0; i < before.codes.size(); ++i) {
        const ListedCode& entry = before.codes.at(i);
        const int partner = pairing.afterOf(i);
        if (partner < 0) {
            const bool isUnlabelled = m_context.hadRecords && !m_context.hasRecords
                && (entry.isRange() || isBlank(entry.code));
            addCode(DifferenceKind::ValueRemoved, !isUnlabelled && !cover.contains(entry), before,
                entry);
            continue;
        }
        compareCode(before, entry, after.codes.at(partner));
    }
    for (int i = 0; i < after.codes.size(); ++i) {
        if (pairing.beforeOf(i) < 0)
            addCode(DifferenceKind::ValueAdded, false, after, after.codes.at(i));
    }
}

void ValueComparison::compareCode(
    const ListedValueSet& valueSet, const ListedCode& before, const ListedCode& after)
{
    const auto change = [&](Property property, bool breaks, const PropertyValue& first,
                            const PropertyValue& second) {
        Difference& difference =
            m_differences.add(DifferenceKind::ValueChanged, property, breaks, first, second);
        difference.valueSet = orNull(valueSet.name);
        difference.code = before.code;
        difference.highCode = before.highCode;
    };
    if (before.label != after.label)
        change(Property::Label, false, orNull(before.label), orNull(after.label));
    const bool isSame = m_context.hadRecords == m_context.hasRecords
        ? before.special == after.special
        : before.isSpecial() == after.isSpecial();
    if (!isSame)
        change(Property::Special, true, before.special, after.special);
}

} // namespace

void compareValues(const ListedField& before, const ListedField& after, const DiffContext& context,
    DifferenceList& differences)
{
    ValueComparison comparison(context, differences);
    comparison.compareMissing(before, after);
    comparison.compareValueSets(before, after);
}
