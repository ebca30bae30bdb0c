#include "listing/VariableDiff.h"

#include "listing/CodeKeys.h"
#include "listing/ValueDiff.h"

#include <algorithm>

namespace {

using Property = DifferingProperty;

// Where columns hold the values a whole number of many digits is listed as real.
ValueType numberType(const ListedField& field)
{
    const bool isWhole = field.hasColumns() && !field.isText() && field.decimals == 0;
    return isWhole ? ValueType::Integer : field.type;
}

class VariableComparison {
public:
    VariableComparison(const DiffContext& context, DifferenceList& differences)
        : m_context(context)
        , m_differences(differences)
    {
    }

    void compareNames(const ComparedVariable& before, const ComparedVariable& after);
    void comparePlaces(const ComparedVariable& before, const ComparedVariable& after);
    void compareTypes(const ListedField& before, const ListedField& after);
    void compareLengths(const ComparedVariable& before, const ComparedVariable& after);
    void compareDecimals(const ListedField& before, const ListedField& after);
    void compareOccurrences(const ComparedVariable& before, const ComparedVariable& after);
    void compareLabels(const ListedField& before, const ListedField& after);

private:
    const DiffContext& m_context;
    DifferenceList& m_differences;
};

// Columns hold no names; rows of SPSS and Stata files are asked for by them.
void VariableComparison::compareNames(const ComparedVariable& before, const ComparedVariable& after)
{
    if (before.name.compare(after.name, Qt::CaseInsensitive) == 0)
        return;
    const bool haveColumns = before.first().hasColumns() && after.first().hasColumns();
    m_differences.add(
        DifferenceKind::Renamed, Property::Name, !haveColumns, before.name, after.name);
}

void VariableComparison::comparePlaces(
    const ComparedVariable& before, const ComparedVariable& after)
{
    if (m_context.haveRecords() && before.recordKey != after.recordKey) {
        m_differences.add(DifferenceKind::Moved, Property::Record, true, before.first().record,
            after.first().record);
        return;
    }
    if (!before.first().hasColumns() || !after.first().hasColumns())
        return;
    // Of another length all occurrences but the first move anyway.
    const bool isSameLength = before.first().length == after.first().length;
    const int count =
        isSameLength ? std::min(before.occurrences.size(), after.occurrences.size()) : 1;
    for (int i = 0; i < count; ++i) {
        const ListedField& first = *before.occurrences.at(i);
        const ListedField& second = *after.occurrences.at(i);
        if (first.start == second.start)
            continue;
        Difference& difference = m_differences.add(
            DifferenceKind::Moved, Property::Start, true, first.start, second.start);
        if (i > 0)
            difference.variable = first.name;
        return;
    }
}

// Between whole numbers and others decimals tell more, where they differ.
void VariableComparison::compareTypes(const ListedField& before, const ListedField& after)
{
    const ValueType first = numberType(before);
    const ValueType second = numberType(after);
    const bool areNumbers = !before.isText() && !after.isText();
    if (first == second
        || (areNumbers && m_context.haveFormats && before.decimals != after.decimals))
        return;
    bool isNarrower = areNumbers ? first == ValueType::Real : before.isText();
    if (!before.isText() && after.isText())
        isNarrower = losesCodesAsText(before, after);
    m_differences.add(DifferenceKind::Retyped, Property::Type, isNarrower, first, second);
}

// A number is not bound to the width that its format shows. Other occurrences, and other parts of
// an item, stand in the columns behind one.
void VariableComparison::compareLengths(
    const ComparedVariable& before, const ComparedVariable& after)
{
    const ListedField& first = before.first();
    const ListedField& second = after.first();
    const bool areTexts = first.isText() && second.isText();
    if (first.length == second.length || (!m_context.haveFormats && !areTexts))
        return;
    const bool isBound = second.hasColumns() || second.isText();
    const bool isNarrower = second.length < first.length;
    const bool haveColumns = first.hasColumns() && second.hasColumns();
    const bool takesOthers = haveColumns && (before.occurrences.size() > 1 || first.isSubItem);
    m_differences.add(DifferenceKind::Resized, Property::Length, isNarrower ? isBound : takesOthers,
        first.length, second.length);
}

// Without a decimal point in the data another number of decimals makes other values of it.
void VariableComparison::compareDecimals(const ListedField& before, const ListedField& after)
{
    if (before.isText() || after.isText() || !m_context.haveFormats)
        return;
    const bool haveColumns = before.hasColumns() && after.hasColumns();
    if (before.decimals != after.decimals) {
        const bool isImplied = haveColumns
            && (!after.hasDecimalChar || (before.decimals > 0 && !before.hasDecimalChar));
        m_differences.add(DifferenceKind::Resized, Property::Decimals,
            isImplied || after.decimals < before.decimals, before.decimals, after.decimals);
    }
    if (haveColumns && before.decimals > 0 && after.decimals > 0
        && before.hasDecimalChar != after.hasDecimalChar) {
        m_differences.add(DifferenceKind::Resized, Property::DecimalChar, true,
            before.hasDecimalChar, after.hasDecimalChar);
    }
}

void VariableComparison::compareOccurrences(
    const ComparedVariable& before, const ComparedVariable& after)
{
    const int first = before.occurrences.size();
    const int second = after.occurrences.size();
    if (first != second) {
        m_differences.add(
            DifferenceKind::Resized, Property::Occurrences, second < first, first, second);
    }
    for (int i = 0; i < std::min(first, second); ++i) {
        const ListedField& occurrence = *before.occurrences.at(i);
        const QString& label = after.occurrences.at(i)->occurrenceLabel;
        if (occurrence.occurrenceLabel == label
            || (!m_context.haveRecords() && !m_context.isSameKind))
            continue;
        m_differences
            .add(DifferenceKind::Relabelled, Property::OccurrenceLabel, false,
                orNull(occurrence.occurrenceLabel), orNull(label))
            .variable = occurrence.name;
    }
}

void VariableComparison::compareLabels(const ListedField& before, const ListedField& after)
{
    if (before.label != after.label) {
        m_differences.add(DifferenceKind::Relabelled, Property::Label, false, orNull(before.label),
            orNull(after.label));
    }
}

} // namespace

void compareVariables(const ComparedVariable& before, const ComparedVariable& after,
    const DiffContext& context, DifferenceList& differences)
{
    const ListedField& first = before.first();
    const ListedField& second = after.first();
    VariableComparison comparison(context, differences);
    comparison.compareNames(before, after);
    comparison.comparePlaces(before, after);
    comparison.compareTypes(first, second);
    comparison.compareLengths(before, after);
    comparison.compareDecimals(first, second);
    comparison.compareOccurrences(before, after);
    comparison.compareLabels(first, second);
    compareValues(first, second, context, differences);
}
