#include <model_Tessel/CSProItem.h>

#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/Numbers_p.h>

#include <algorithm>

namespace {

// An ordinary code or range of numbers.
bool isBound(const TCSProValueSet& valueSet, const TValueSetItem& entry)
{
    if (entry.special || !isFiniteNumber(entry.code))
        return false;
    const QString& highCode = valueSet.detail(&entry).highCode;
    return highCode.isNull() || isFiniteNumber(highCode);
}

} // namespace

TCSProItem::TCSProItem()
    : valueSets(new QList<TCSProValueSet*>)
{
}

TCSProItem::~TCSProItem() = default;

int TCSProItem::getCount()
{
    valueSetCount = valueSets->size();
    return valueSetCount;
}

bool TCSProItem::getHasValueSet() const
{
    return valueSets && !valueSets->isEmpty();
}

TCSProValueSet* TCSProItem::getValueSet(int index) const
{
    return valueSets->at(index);
}

const TCSProValueSet* TCSProItem::boundingValueSet() const
{
    const auto hasBound = [](const TCSProValueSet* valueSet) {
        return std::any_of(valueSet->items->cbegin(), valueSet->items->cend(),
            [valueSet](const TValueSetItem* entry) { return isBound(*valueSet, *entry); });
    };
    const auto set = std::find_if(valueSets->cbegin(), valueSets->cend(), hasBound);
    return set == valueSets->cend() ? nullptr : *set;
}

void TCSProItem::addValueSet(TCSProValueSet* valueSet)
{
    if (!getHasValueSet()) // kept: an item has one value set at most
        valueSets->append(valueSet);
}

const CSProItemDetail& TCSProItem::detail() const
{
    static const CSProItemDetail none;
    return m_detail ? *m_detail : none;
}

CSProItemDetail& TCSProItem::editDetail()
{
    if (!m_detail)
        m_detail = std::make_unique<CSProItemDetail>();
    return *m_detail;
}

// Kept: a record does not hold its items, they link to it.

void TCSProRecord::addItem(TCSProItem* item)
{
    Q_UNUSED(item)
}

int TCSProRecord::getCount() const
{
    return 1;
}

TCSProItem* TCSProRecord::getItem(int index) const
{
    Q_UNUSED(index)
    return nullptr;
}
