#include <tessel_data/CrossSuppression_p.h>

#include <algorithm>

namespace tessel {

namespace {

/*
 * A figure and the parts that it is the sum of. Hidden figures of such a tree cannot be worked out
 * when no sum that is told has a single hidden part, and no hidden sum has none.
 */
struct Sum {
    qint64 count = 0;
    StatisticsCell* cell = nullptr; // null: told nowhere by itself
    bool isHidden = false;
    std::vector<Sum> parts;
};

Sum sumOf(StatisticsCell& cell)
{
    return { cell.count().value_or(0), &cell, cell.isHidden(), {} };
}

void hideSmall(Sum& sum, qint64 fewest)
{
    sum.isHidden = sum.isHidden || (sum.count > 0 && sum.count < fewest);
    for (Sum& part : sum.parts)
        hideSmall(part, fewest);
}

// Hidden parts that are few all together may each be one.
bool isSafe(const Sum& sum, qint64 fewest)
{
    const auto hidden = std::count_if(
        sum.parts.begin(), sum.parts.end(), [](const Sum& part) { return part.isHidden; });
    qint64 together = 0;
    for (const Sum& part : sum.parts)
        together += part.isHidden ? part.count : 0;
    if (sum.isHidden)
        return sum.parts.empty() || hidden > 0;
    return hidden == 0 || (hidden > 1 && together >= fewest);
}

bool hideAnother(Sum& sum)
{
    Sum* smallest = nullptr;
    for (Sum& part : sum.parts) {
        if (!part.isHidden && part.count > 0 && (!smallest || part.count < smallest->count))
            smallest = &part;
    }
    if (smallest)
        smallest->isHidden = true;
    return smallest != nullptr;
}

// From above: what is hidden of a sum decides what has to be of its parts, and the other way round.
bool protect(Sum& sum, qint64 fewest)
{
    bool isChanged = false;
    while (!isSafe(sum, fewest) && hideAnother(sum))
        isChanged = true;
    if (!isSafe(sum, fewest) && !sum.isHidden) {
        sum.isHidden = true;
        isChanged = true;
    }
    for (Sum& part : sum.parts)
        isChanged = protect(part, fewest) || isChanged;
    return isChanged;
}

void apply(const Sum& sum)
{
    if (sum.isHidden && sum.cell)
        sum.cell->hide();
    for (const Sum& part : sum.parts)
        apply(part);
}

void hideWhole(Sum& sum)
{
    sum.isHidden = true;
    for (Sum& part : sum.parts)
        hideWhole(part);
}

void hideAll(StatisticsValueSet& set)
{
    for (StatisticsCell& cell : set.codes)
        cell.hide();
    set.rest.hide();
}

// Hides the small cells of one variable.
class VariableSuppression {
public:
    VariableSuppression(VariableStatistics& variable, qint64 fewest)
        : m_variable(variable)
        , m_fewest(fewest)
        , m_isFew(variable.of(StatisticsKind::Valid).count().value_or(0) < fewest)
    {
    }

    void run();

private:
    void hideCells();
    Sum kindSum(StatisticsKind kind);
    void hideFurtherSets();
    void hideOutside(bool isHidden);
    void hideMissingKinds();
    void hideNumbers();
    void hideHistogram();
    bool isSmall(const StatisticsCell& cell) const
    {
        const qint64 count = cell.count().value_or(1);
        return cell.isHidden() || (count > 0 && count < m_fewest);
    }
    bool hasHidden(StatisticsKind kind) const;

    VariableStatistics& m_variable;
    qint64 m_fewest;
    bool m_isFew; // there are too few valid values
    bool m_hidesCodes = false; // some of several valid ones
};

void VariableSuppression::run()
{
    hideCells();
    hideFurtherSets();
    hideMissingKinds();
    hideHistogram();
    hideNumbers();
}

// What no code stands for is a part as well; if that is hidden, so is the rest.
Sum VariableSuppression::kindSum(StatisticsKind kind)
{
    Sum sum = sumOf(m_variable.kinds[std::size_t(kind)]);
    if (m_variable.valueSets.empty())
        return sum;
    StatisticsValueSet& set = m_variable.valueSets.front();
    qint64 left = sum.count;
    for (std::size_t i = 0; i < set.codes.size(); ++i) {
        if (set.kinds[i] != kind)
            continue;
        sum.parts.push_back(sumOf(set.codes[i]));
        left -= sum.parts.back().count;
    }
    sum.parts.push_back({ left, nullptr, false, {} });
    return sum;
}

void VariableSuppression::hideCells()
{
    Sum total = sumOf(m_variable.total);
    for (std::size_t kind = 0; kind < StatisticsKindCount; ++kind)
        total.parts.push_back(kindSum(StatisticsKind(kind)));
    if (total.count > 0 && total.count < m_fewest) {
        for (Sum& part : total.parts)
            hideWhole(part);
    }
    for (Sum& part : total.parts)
        hideSmall(part, m_fewest);
    while (protect(total, m_fewest)) { }
    total.isHidden = false; // told by the rows
    apply(total);
    const auto isRestHidden = [](const Sum& kind) {
        return !kind.parts.empty() && kind.parts.back().isHidden;
    };
    if (!m_variable.valueSets.empty()
        && std::any_of(total.parts.begin(), total.parts.end(), isRestHidden))
        m_variable.valueSets.front().rest.hide();
    const Sum& valid = total.parts.front();
    const auto count = [&](auto isCounted) {
        return std::count_if(valid.parts.begin(), valid.parts.end(), isCounted);
    };
    m_hidesCodes = count([](const Sum& part) { return part.isHidden; }) > 0
        && count([](const Sum& part) { return part.count > 0; }) > 1;
    hideOutside(valid.isHidden || isRestHidden(valid));
}

// Those of one code would say that the code is there.
void VariableSuppression::hideOutside(bool isHidden)
{
    if (isHidden)
        m_variable.outside.hide();
    Sum outside = sumOf(m_variable.outside);
    qint64 left = outside.count;
    for (StatisticsCode& code : m_variable.outsideCodes) {
        outside.parts.push_back(sumOf(code.cell));
        left -= outside.parts.back().count;
    }
    outside.parts.push_back({ std::max<qint64>(0, left), nullptr, false, {} });
    for (Sum& part : outside.parts)
        hideSmall(part, m_fewest);
    if (isHidden)
        hideWhole(outside);
    while (!outside.isHidden && protect(outside, m_fewest)) { }
    apply(outside);
    const auto isGone = [](const StatisticsCode& code) { return code.cell.isHidden(); };
    auto& codes = m_variable.outsideCodes;
    const auto end = std::remove_if(codes.begin(), codes.end(), isGone);
    m_variable.hasAllOutsideCodes = m_variable.hasAllOutsideCodes && end == codes.end();
    codes.erase(end, codes.end());
}

bool VariableSuppression::hasHidden(StatisticsKind kind) const
{
    if (m_variable.of(kind).isHidden())
        return true;
    if (m_variable.valueSets.empty())
        return false;
    const StatisticsValueSet& set = m_variable.valueSets.front();
    for (std::size_t i = 0; i < set.codes.size(); ++i) {
        if (set.kinds[i] == kind && set.codes[i].isHidden())
            return true;
    }
    return set.rest.isHidden();
}

// Codes of several sets that stand for the same values tell of each other.
void VariableSuppression::hideFurtherSets()
{
    bool isHidden = false;
    for (std::size_t kind = 0; kind < StatisticsKindCount; ++kind)
        isHidden = isHidden || hasHidden(StatisticsKind(kind));
    for (std::size_t i = 1; i < m_variable.valueSets.size(); ++i) {
        StatisticsValueSet& set = m_variable.valueSets[i];
        isHidden = isHidden || isSmall(set.rest)
            || std::any_of(set.codes.begin(), set.codes.end(),
                [this](const StatisticsCell& cell) { return isSmall(cell); });
    }
    for (std::size_t i = 1; isHidden && i < m_variable.valueSets.size(); ++i)
        hideAll(m_variable.valueSets[i]);
}

// The kinds of Stata may have codes as well.
void VariableSuppression::hideMissingKinds()
{
    auto& kinds = m_variable.missingKinds;
    const bool isHidden = hasHidden(StatisticsKind::Missing)
        || std::any_of(kinds.begin(), kinds.end(),
            [this](const StatisticsCode& code) { return isSmall(code.cell); });
    if (!isHidden)
        return;
    for (StatisticsCode& code : kinds)
        code.cell.hide();
    if (kinds.isEmpty() || m_variable.valueSets.empty())
        return;
    StatisticsValueSet& set = m_variable.valueSets.front();
    for (std::size_t i = 0; i < set.codes.size(); ++i) {
        if (set.kinds[i] == StatisticsKind::Missing)
            set.codes[i].hide();
    }
    set.rest.hide();
}

// Bars over codes of which some are hidden, or bars of which some are over several codes, tell of
// them.
void VariableSuppression::hideHistogram()
{
    auto& bins = m_variable.histogram;
    if (bins.empty())
        return;
    Sum valid = sumOf(m_variable.kinds[std::size_t(StatisticsKind::Valid)]);
    for (StatisticsBin& bin : bins) {
        valid.parts.push_back(sumOf(bin.cell));
        valid.count += valid.isHidden ? valid.parts.back().count : 0;
    }
    for (Sum& part : valid.parts)
        hideSmall(part, m_fewest);
    while (protect(valid, m_fewest)) { }
    const bool hasHiddenBin = std::any_of(
        valid.parts.begin(), valid.parts.end(), [](const Sum& part) { return part.isHidden; });
    const auto hasSeveralCodes = [](const StatisticsValueSet& set) {
        return std::count(set.kinds.begin(), set.kinds.end(), StatisticsKind::Valid) > 1;
    };
    const bool haveCodes =
        std::any_of(m_variable.valueSets.begin(), m_variable.valueSets.end(), hasSeveralCodes);
    if (m_hidesCodes || (hasHiddenBin && haveCodes)) {
        for (Sum& part : valid.parts)
            part.isHidden = true;
    }
    for (const Sum& part : valid.parts)
        apply(part);
}

void VariableSuppression::hideNumbers()
{
    if (!m_variable.hasNumbers)
        return;
    const auto hideEnd = [this](QString& end, StatisticsCell& cell) {
        if (m_isFew || isSmall(cell))
            end = QString();
        if (m_isFew || m_hidesCodes || isSmall(cell))
            cell.hide();
    };
    hideEnd(m_variable.lowest, m_variable.lowestCell);
    hideEnd(m_variable.highest, m_variable.highestCell);
    if (m_isFew || m_hidesCodes) {
        m_variable.moments = {};
        m_variable.weightedMoments = {};
    }
}

// The frequencies that a side of a cross table repeats; null where it has others.
const StatisticsValueSet* sameFrequencies(
    const StatisticsReport& report, const CrossTable& cross, int variable)
{
    const VariableStatistics* const figures = report.find(variable);
    const bool isSame = figures && figures->occurrences == 0 && figures->record == cross.record;
    return isSame && !figures->valueSets.empty() ? &figures->valueSets.front() : nullptr;
}

void hideCells(const StatisticsReport& report, CrossTable& cross, qint64 fewest)
{
    CrossSuppression suppression(cross, fewest);
    if (const auto* lines = sameFrequencies(report, cross, cross.first)) {
        suppression.keepLineTotals();
        for (std::size_t i = 0; i < lines->codes.size(); ++i) {
            if (lines->codes[i].isHidden())
                suppression.hideLineTotal(int(i));
        }
        if (lines->rest.isHidden())
            suppression.hideLineTotal(cross.lineCount - 1);
    }
    if (const auto* columns = sameFrequencies(report, cross, cross.second)) {
        suppression.keepColumnTotals();
        for (std::size_t i = 0; i < columns->codes.size(); ++i) {
            if (columns->codes[i].isHidden())
                suppression.hideColumnTotal(int(i));
        }
        if (columns->rest.isHidden())
            suppression.hideColumnTotal(cross.columnCount - 1);
    }
    suppression.run();
    suppression.apply(cross);
}

} // namespace

void StatisticsReport::suppress(qint64 fewest)
{
    hiddenBelow = fewest;
    if (fewest <= 1)
        return;
    const auto end = std::remove_if(variables.begin(), variables.end(),
        [](const VariableStatistics& one) { return one.isOccurrence; });
    variables.erase(end, variables.end());
    for (VariableStatistics& variable : variables)
        VariableSuppression(variable, fewest).run();
    for (CrossTable& cross : crosses)
        hideCells(*this, cross, fewest);
}

} // namespace tessel
