#include <model_Tessel/CSProWrittenBuilder_p.h>

#include <model_Tessel/Numbers_p.h>

#include <optional>

namespace {

bool isNoNumber(const QString& code)
{
    if (IsNumeric2(code))
        return false;
    bool isNumber = false;
    code.toDouble(&isNumber);
    return !isNumber;
}

// The first ordinary code or bound of a range that is no number.
std::optional<QString> firstOddCode(const TCSProValueSet& valueSet)
{
    for (const TValueSetItem* entry : qAsConst(*valueSet.items)) {
        if (entry->special)
            continue;
        if (isNoNumber(entry->code))
            return entry->code;
        const QString& highCode = valueSet.detail(entry).highCode;
        if (!highCode.isNull() && isNoNumber(highCode))
            return highCode;
    }
    return std::nullopt;
}

// The first range whose lower bound is the higher; empty when there is none.
QString firstReversedRange(const TCSProValueSet& valueSet)
{
    for (const TValueSetItem* entry : qAsConst(*valueSet.items)) {
        const QString& highCode = valueSet.detail(entry).highCode;
        if (!highCode.isNull() && realOrZero(entry->code) > realOrZero(highCode))
            return entry->code + QLatin1Char(':') + highCode;
    }
    return QString();
}

QString* specialCode(TCSProItem& item, int type)
{
    switch (type) {
    case CSProSpecial::Missing:
        return &item.missingCode;
    case CSProSpecial::NotApplicable:
        return &item.notApplicableCode;
    case CSProSpecial::Refused:
        return &item.editDetail().refusedCode;
    default:
        return nullptr;
    }
}

} // namespace

CSProWrittenBuilder::CSProWrittenBuilder(CSProModel& model, CSProFindings& findings)
    : CSProBuilder(model, findings)
{
}

void CSProWrittenBuilder::placeItem(ItemPointer item)
{
    const bool isInParent = hasParent(*item);
    const bool isSubItem = item->isSubItem != 0;
    if (isSubItem && !isInParent)
        report(Kind::SubItemWithoutParent, item->sourceLine, item->name);
    const int parents = isInParent ? m_parentCount : 1;
    const qint64 total = qint64(item->occurrences) * parents;
    countFields(*item, total);
    m_groupStart = m_model.items->size();
    if (total == 1) {
        if (isInParent)
            item->editDetail().parent = m_model.items->at(m_parentStart);
        appendItem(item.release());
    } else {
        appendOccurrences(*item, parents);
    }
    if (!isSubItem) {
        m_parentRecord = m_model.currentRecord;
        m_parentStart = m_groupStart;
        m_parentCount = m_model.items->size() - m_groupStart;
    }
}

// Value sets that follow belong to nobody.
void CSProWrittenBuilder::passOverItem(const TCSProItem& item)
{
    m_model.lastItem = nullptr;
    if (item.isSubItem == 0)
        m_parentRecord = nullptr;
}

bool CSProWrittenBuilder::hasParent(const TCSProItem& item) const
{
    return item.isSubItem != 0 && m_parentRecord && m_parentRecord == m_model.currentRecord;
}

void CSProWrittenBuilder::appendOccurrences(const TCSProItem& item, int parents)
{
    const int firstIndex = m_model.items->size();
    const bool isInParent = hasParent(item);
    for (int ofParent = 1; ofParent <= parents; ++ofParent) {
        for (int number = 1; number <= item.occurrences; ++number) {
            TCSProItem* occurrence = makeOccurrence(item, ofParent, number);
            occurrence->firstOccurrenceIndex = firstIndex;
            if (isInParent) {
                occurrence->editDetail().parent = m_model.items->at(m_parentStart + ofParent - 1);
            }
            if (parents > 1)
                nameOccurrenceOfParent(*occurrence, item, ofParent, number);
            else
                nameOccurrence(*occurrence, item, number);
            appendItem(occurrence);
        }
    }
}

// With several parents a subitem stands at the same place in each.
TCSProItem* CSProWrittenBuilder::makeOccurrence(
    const TCSProItem& item, int ofParent, int number) const
{
    qint64 start = item.start + qint64(number - 1) * item.len;
    if (ofParent > 1)
        start += qint64(ofParent - 1) * m_model.items->at(m_parentStart)->len;
    TCSProItem* occurrence = copyOf(item, start);
    occurrence->occurrence = (ofParent - 1) * item.occurrences + number;
    occurrence->isZeroFill = item.isZeroFill;
    occurrence->editDetail() = item.detail();
    return occurrence;
}

void CSProWrittenBuilder::nameOccurrence(
    TCSProItem& occurrence, const TCSProItem& item, int number) const
{
    occurrence.name = item.name + QLatin1Char('_') + QString::number(number);
    CSProItemDetail& detail = occurrence.editDetail();
    detail.occurrenceLabel = detail.occurrenceLabels.value(number - 1);
}

void CSProWrittenBuilder::nameOccurrenceOfParent(
    TCSProItem& occurrence, const TCSProItem& item, int ofParent, int number) const
{
    occurrence.name = item.name + QLatin1Char('_') + QString::number(ofParent);
    CSProItemDetail& detail = occurrence.editDetail();
    if (item.occurrences > 1) {
        occurrence.name += QLatin1Char('_') + QString::number(number);
        detail.occurrenceLabel = detail.occurrenceLabels.value(number - 1);
    } else {
        detail.occurrenceLabel = detail.parent->detail().occurrenceLabel;
    }
}

bool CSProWrittenBuilder::ignoresValueSets() const
{
    return false;
}

void CSProWrittenBuilder::addValueSet(ValueSetPointer valueSet)
{
    shareLinkedValues(*valueSet);
    if (!valueSet->linkedSet())
        reportOddCodes(*valueSet);
    if (!m_model.lastItem) {
        reportValueSet(Kind::ValueSetWithoutItem, valueSet->sourceLine, valueSet->name);
        return;
    }
    m_isFinished = false;
    m_model.lastItem->valueSets->append(valueSet.get());
    TCSProValueSet* added = valueSet.release();
    const bool hasOwnValues = !added->linkedSet() && !added->items->isEmpty();
    const QString link = added->link();
    if (!link.isEmpty() && hasOwnValues && !m_links.contains(link))
        m_links.insert(link, added);
    takeSpecialCodes(*added);
}

// Only the first set of a link has values; the others take them over.
void CSProWrittenBuilder::shareLinkedValues(TCSProValueSet& valueSet)
{
    const QString link = valueSet.link();
    if (link.isEmpty() || !valueSet.items->isEmpty())
        return;
    if (TCSProValueSet* linked = m_links.value(link))
        valueSet.shareEntries(linked);
    else
        reportValueSet(Kind::LinkWithoutValues, valueSet.sourceLine, valueSet.name, link);
}

// A numeric set is kept whatever its codes are.
void CSProWrittenBuilder::reportOddCodes(const TCSProValueSet& valueSet)
{
    if (!valueSet.isNumeric)
        return;
    if (const auto code = firstOddCode(valueSet))
        reportValueSet(Kind::CodeNotANumber, valueSet.sourceLine, valueSet.name, *code);
    const QString range = firstReversedRange(valueSet);
    if (!range.isEmpty())
        reportValueSet(Kind::RangeReversed, valueSet.sourceLine, valueSet.name, range);
}

// Codes of the last occurrence, which the others get from it.
void CSProWrittenBuilder::takeSpecialCodes(const TCSProValueSet& valueSet)
{
    TCSProItem& last = *m_model.lastItem;
    for (const TValueSetItem* entry : qAsConst(*valueSet.items)) {
        QString* code = entry->special ? specialCode(last, entry->type) : nullptr;
        if (code && code->isEmpty())
            *code = entry->code;
    }
}

void CSProWrittenBuilder::finishItem()
{
    const TCSProItem* last = m_model.lastItem;
    if (m_isFinished || !last)
        return;
    m_isFinished = true;
    for (int i = m_groupStart; i < m_model.items->size() - 1; ++i) {
        TCSProItem* item = m_model.items->at(i);
        *item->valueSets = *last->valueSets; // shares the list's one allocation
        item->missingCode = last->missingCode;
        item->notApplicableCode = last->notApplicableCode;
        if (!last->detail().refusedCode.isEmpty())
            item->editDetail().refusedCode = last->detail().refusedCode;
    }
}
