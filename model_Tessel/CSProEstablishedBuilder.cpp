#include <model_Tessel/CSProEstablishedBuilder_p.h>

#include <QMessageBox>
#include <QStringBuilder>

#include <algorithm>
#include <utility>

namespace {

// The first code that isWanted accepts; empty when there is none.
template <typename Predicate> QString firstCode(const TCSProValueSet& valueSet, Predicate isWanted)
{
    const auto found = std::find_if(valueSet.items->cbegin(), valueSet.items->cend(),
        [&](const TValueSetItem* entry) { return isWanted(entry->code); });
    return found == valueSet.items->cend() ? QString() : (*found)->code;
}

} // namespace

CSProEstablishedBuilder::CSProEstablishedBuilder(
    CSProModel& model, CSProFindings& findings, DecimalQuestion ask)
    : CSProBuilder(model, findings)
    , m_ask(std::move(ask))
{
}

void CSProEstablishedBuilder::placeItem(ItemPointer item)
{
    countFields(*item, item->occurrences);
    if (item->occurrences == 1) {
        appendItem(item.release());
        return;
    }
    const int firstIndex = m_model.items->size();
    for (int number = 1; number <= item->occurrences; ++number) {
        TCSProItem* occurrence = makeOccurrence(*item, number);
        occurrence->firstOccurrenceIndex = firstIndex;
        appendItem(occurrence);
    }
}

// Kept: zero fill stays behind, and the suffix is the character whose code is the number.
TCSProItem* CSProEstablishedBuilder::makeOccurrence(const TCSProItem& item, int number)
{
    TCSProItem* occurrence = copyOf(item, item.start + qint64(number - 1) * item.len);
    occurrence->occurrence = number;
    occurrence->name = item.name % QLatin1Char('_') % QChar(static_cast<ushort>(number));
    return occurrence;
}

// Kept: an item has its first value set alone.
bool CSProEstablishedBuilder::ignoresValueSets() const
{
    return m_model.lastItem && m_model.lastItem->getHasValueSet();
}

void CSProEstablishedBuilder::addValueSet(ValueSetPointer valueSet)
{
    if (!acceptsCodes(*valueSet))
        return;
    valueSet->sortItems();
    if (!m_model.lastItem) {
        reportValueSet(Kind::ValueSetWithoutItem, valueSet->sourceLine, valueSet->name);
        return;
    }
    if (attach(valueSet.get()))
        (void)valueSet.release(); // the model owns it now
}

// False when the value set is to be dropped.
bool CSProEstablishedBuilder::acceptsCodes(TCSProValueSet& valueSet)
{
    if (valueSet.validateItems(1))
        return true; // no integer is a decimal code, so nearly all sets are looked through once
    if (!valueSet.validateItems(0) && !settleDecimalCodes(valueSet))
        return false;
    if (valueSet.validateItems(1))
        return true;
    reportValueSet(Kind::CodesNotInteger, valueSet.sourceLine, valueSet.name,
        firstCode(valueSet, [](const QString& code) { return !IsNumeric2(code); }));
    return false;
}

// False when the value set is to be dropped.
bool CSProEstablishedBuilder::settleDecimalCodes(TCSProValueSet& valueSet)
{
    const TCSProItem* item = m_model.lastItem;
    CSProProblem problem = { Kind::DecimalCodesDropped, valueSet.sourceLine,
        item ? item->dictionaryName : QString(), valueSet.name, firstCode(valueSet, IsDecimal) };
    m_ask(problem);
    const int button = m_model.decimalButton;
    if (button == QMessageBox::YesToAll)
        m_model.decimalAnswer = 1;
    else if (button == QMessageBox::NoToAll)
        m_model.decimalAnswer = 2;
    const bool isConverted = button == QMessageBox::Yes || button == QMessageBox::YesToAll;
    const bool isDropped = button == QMessageBox::No || button == QMessageBox::NoToAll;
    if (isConverted) {
        valueSet.itemsAsNumberZero();
        problem.kind = Kind::DecimalCodesConverted;
    }
    if (isConverted || isDropped)
        m_findings.problems.append(problem);
    return !isDropped;
}

// False when no item took the set.
bool CSProEstablishedBuilder::attach(TCSProValueSet* valueSet)
{
    TCSProItem* last = m_model.lastItem;
    if (last->firstOccurrenceIndex != 0)
        return attachToOccurrences(valueSet);
    const bool isTaken = !last->getHasValueSet();
    last->addValueSet(valueSet);
    // Kept: when the file's first item is repeated, its last occurrence alone gets the set.
    if (last->occurrence > 1)
        reportValueSet(Kind::ValueSetOnLastOccurrence, valueSet->sourceLine, valueSet->name);
    return isTaken;
}

// Kept: from the end of all items, also where a host put others behind the item added last.
bool CSProEstablishedBuilder::attachToOccurrences(TCSProValueSet* valueSet)
{
    const QList<TCSProItem*>& items = *m_model.items;
    const QList<TCSProValueSet*> shared { valueSet }; // one allocation for all
    const int group = m_model.lastItem->firstOccurrenceIndex;
    bool isTaken = false;
    for (int i = items.size() - 1; i >= 0 && items.at(i)->firstOccurrenceIndex == group; --i) {
        TCSProItem* item = items.at(i);
        if (item->getHasValueSet())
            continue;
        *item->valueSets = shared;
        isTaken = true;
    }
    return isTaken;
}
