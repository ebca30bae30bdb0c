#include <model_Tessel/CSProBuilder_p.h>

#include <model_Tessel/Numbers_p.h>

#include <QStringBuilder>

#include <algorithm>
#include <limits>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

namespace {

// The format ends at 32,000 columns a record, so no dictionary comes near; a larger number of
// occurrences is a damaged file, which must not fill the memory.
constexpr int MaxFields = 500'000;

// The first ordinary code of a value set that isWanted accepts.
template <typename Predicate>
std::optional<QString> firstCode(const TCSProValueSet& valueSet, Predicate isWanted)
{
    for (const TValueSetItem* entry : qAsConst(*valueSet.items)) {
        if (entry->special)
            continue;
        if (isWanted(entry->code))
            return entry->code;
        if (!entry->highCode.isNull() && isWanted(entry->highCode))
            return entry->highCode;
    }
    return std::nullopt;
}

const TValueSetItem* firstReversedRange(const TCSProValueSet& valueSet)
{
    for (const TValueSetItem* entry : qAsConst(*valueSet.items)) {
        if (!entry->highCode.isNull() && realOrZero(entry->code) > realOrZero(entry->highCode))
            return entry;
    }
    return nullptr;
}

// Beyond what an int holds a column is damage; it stays the largest.
int column(qint64 number)
{
    return int(std::clamp<qint64>(
        number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

bool isNoInteger(const QString& code)
{
    return !IsNumeric2(code);
}

bool isNoNumber(const QString& code)
{
    if (IsNumeric2(code))
        return false;
    bool isNumber = false;
    code.toDouble(&isNumber);
    return !isNumber;
}

QString TCSProItem::*specialCode(int type)
{
    switch (type) {
    case CSProSpecial::Missing:
        return &TCSProItem::missingCode;
    case CSProSpecial::NotApplicable:
        return &TCSProItem::notApplicableCode;
    case CSProSpecial::Refused:
        return &TCSProItem::refusedCode;
    default:
        return nullptr;
    }
}

} // namespace

void CSProBuilder::DropItem::operator()(TCSProItem* item) const
{
    delete item->valueSets;
    delete item;
}

void CSProBuilder::DropValueSet::operator()(TCSProValueSet* valueSet) const
{
    if (!valueSet->linkedSet)
        qDeleteAll(*valueSet->items);
    delete valueSet->items;
    delete valueSet;
}

CSProBuilder::CSProBuilder(TCSPro& dictionary)
    : m_dictionary(dictionary)
{
}

const CSProReadingRules& CSProBuilder::rules() const
{
    return m_dictionary.m_rules;
}

void CSProBuilder::setNote(const QString& note)
{
    m_dictionary.m_note = note;
}

void CSProBuilder::addLanguage(const CSProLanguage& language)
{
    m_dictionary.m_languages.append(language);
}

void CSProBuilder::addLevel(const CSProLevel& level)
{
    m_dictionary.m_levels.append(level);
}

void CSProBuilder::addRelation(const CSProRelation& relation)
{
    m_dictionary.m_relations.append(relation);
}

void CSProBuilder::addRecord(std::unique_ptr<TCSProRecord> record)
{
    finishItem();
    record->level = m_dictionary.m_levels.size();
    m_dictionary.currentRecord = record.release();
    const TCSProRecord& added = *m_dictionary.currentRecord;
    m_dictionary.records->append(m_dictionary.currentRecord);
    TCSProRecord*& ofValue = m_dictionary.recordsByValue[added.recordTypeValue];
    if (ofValue)
        note(Kind::RecordTypeRepeated, added.sourceLine, added.name, added.recordTypeValue);
    ofValue = m_dictionary.currentRecord;
}

void CSProBuilder::useCommonRecord()
{
    m_dictionary.currentRecord = m_dictionary.commonRecord;
}

void CSProBuilder::addItem(ItemPointer item)
{
    finishItem();
    item->dictionaryName = item->name;
    item->level = m_dictionary.m_levels.size();
    if (item->len <= 0)
        note(Kind::ItemWithoutLength, item->sourceLine, item->name, QString::number(item->len));
    if (item->occurrences < 1) {
        dropItem(*item);
        return;
    }
    if (rules().structure && item->isSubItem != 0 && !hasParent(*item))
        note(Kind::SubItemWithoutParent, item->sourceLine, item->name);
    const int parents = rules().repeatedSubItems && hasParent(*item) ? m_parentCount : 1;
    const qint64 total = qint64(item->occurrences) * parents;
    if (total > MaxFields - m_fieldCount) {
        note(Kind::TooManyItems, item->sourceLine, item->name, QString::number(MaxFields));
        throw std::length_error("too many items in a dictionary");
    }
    m_fieldCount += static_cast<int>(total);

    const int start = m_dictionary.items->size();
    const bool isSubItem = item->isSubItem != 0;
    if (total == 1) {
        if (rules().structure && hasParent(*item))
            item->parent = m_dictionary.items->at(m_parentStart);
        appendItem(item.release());
    } else {
        appendOccurrences(*item, parents);
    }
    m_groupStart = start;
    if (!isSubItem) {
        m_parentRecord = m_dictionary.currentRecord;
        m_parentStart = start;
        m_parentCount = m_dictionary.items->size() - start;
    }
}

// Kept without the rule: the value sets that follow belong to the item before it.
void CSProBuilder::dropItem(const TCSProItem& item)
{
    note(Kind::ItemDropped, item.sourceLine, item.name, QString::number(item.occurrences));
    if (rules().allValueSets)
        m_dictionary.lastItem = nullptr;
    if (item.isSubItem == 0)
        m_parentRecord = nullptr;
}

bool CSProBuilder::hasParent(const TCSProItem& item) const
{
    return item.isSubItem != 0 && m_parentRecord && m_parentRecord == m_dictionary.currentRecord;
}

void CSProBuilder::appendItem(TCSProItem* item)
{
    item->record = m_dictionary.currentRecord;
    m_dictionary.currentRecord->addItem(item);
    m_dictionary.lastItem = item;
    m_dictionary.items->append(item);
}

void CSProBuilder::appendOccurrences(const TCSProItem& item, int parents)
{
    const int firstIndex = m_dictionary.items->size();
    for (int ofParent = 1; ofParent <= parents; ++ofParent) {
        for (int number = 1; number <= item.occurrences; ++number) {
            TCSProItem* copy = makeOccurrence(item, ofParent, number, parents > 1);
            copy->firstOccurrenceIndex = firstIndex;
            if (rules().structure && hasParent(item))
                copy->parent = m_dictionary.items->at(m_parentStart + ofParent - 1);
            appendItem(copy);
        }
    }
}

// With several parents a subitem stands at the same place in each.
TCSProItem* CSProBuilder::makeOccurrence(
    const TCSProItem& item, int ofParent, int number, bool isRepeatedWithParent) const
{
    auto* copy = new TCSProItem;
    copy->label = item.label;
    copy->len = item.len;
    copy->isAlpha = item.isAlpha;
    copy->isSubItem = item.isSubItem;
    copy->decimal = item.decimal;
    copy->hasDecimalChar = item.hasDecimalChar;
    copy->dictionaryName = item.dictionaryName;
    copy->sourceLine = item.sourceLine;
    copy->level = item.level;
    copy->note = item.note;
    copy->contentType = item.contentType;
    copy->occurrenceLabels = item.occurrenceLabels;

    qint64 start = item.start + qint64(number - 1) * item.len;
    if (ofParent > 1)
        start += qint64(ofParent - 1) * m_dictionary.items->at(m_parentStart)->len;
    copy->start = column(start);

    copy->occurrence = (ofParent - 1) * item.occurrences + number;
    if (!rules().occurrenceNumbers) {
        // Kept: zero fill stays behind, and the suffix is the character whose code is the number.
        copy->name = item.name % QLatin1Char('_') % QChar(static_cast<ushort>(copy->occurrence));
        return copy;
    }
    copy->isZeroFill = item.isZeroFill;
    copy->name = item.name;
    if (isRepeatedWithParent)
        copy->name += QLatin1Char('_') + QString::number(ofParent);
    if (!isRepeatedWithParent || item.occurrences > 1)
        copy->name += QLatin1Char('_') + QString::number(number);
    if (isRepeatedWithParent && item.occurrences == 1) {
        copy->occurrenceLabel =
            m_dictionary.items->at(m_parentStart + ofParent - 1)->occurrenceLabel;
    } else {
        copy->occurrenceLabel = item.occurrenceLabels.value(number - 1);
    }
    return copy;
}

// Kept: without the rule an item has its first value set alone.
bool CSProBuilder::ignoresValueSets() const
{
    return !rules().allValueSets && m_dictionary.lastItem
        && m_dictionary.lastItem->getHasValueSet();
}

void CSProBuilder::addValueSet(ValueSetPointer valueSet)
{
    if (rules().structure)
        shareLinkedValues(*valueSet);
    if (!valueSet->linkedSet && !acceptsCodes(*valueSet))
        return;
    if (!rules().writtenOrder)
        valueSet->sortItems();
    if (!m_dictionary.lastItem) {
        noteValueSet(Kind::ValueSetWithoutItem, valueSet->sourceLine, valueSet->name);
        return;
    }
    if (!attach(valueSet.get()))
        return;
    TCSProValueSet* attached = valueSet.release();
    const bool hasOwnValues = !attached->linkedSet && !attached->items->isEmpty();
    if (!attached->link.isEmpty() && hasOwnValues && !m_links.contains(attached->link))
        m_links.insert(attached->link, attached);
    if (rules().specials)
        takeSpecialCodes(*attached);
}

// Only the first set of a link has values; the others take them over.
void CSProBuilder::shareLinkedValues(TCSProValueSet& valueSet)
{
    if (valueSet.link.isEmpty() || !valueSet.items->isEmpty())
        return;
    valueSet.linkedSet = m_links.value(valueSet.link);
    if (valueSet.linkedSet) {
        *valueSet.items = *valueSet.linkedSet->items;
        valueSet.details = valueSet.linkedSet->details;
    } else {
        noteValueSet(Kind::LinkWithoutValues, valueSet.sourceLine, valueSet.name, valueSet.link);
    }
}

// False when the value set is to be dropped.
bool CSProBuilder::acceptsCodes(TCSProValueSet& valueSet)
{
    if (rules().keptValueSets) {
        noteOddCodes(valueSet);
        return true;
    }
    const bool mayBeDecimal =
        rules().decimalCodes && m_dictionary.lastItem && m_dictionary.lastItem->decimal > 0;
    if (!mayBeDecimal && !valueSet.validateItems(0) && !settleDecimalCodes(valueSet))
        return false;
    if (!valueSet.isNumeric)
        return true;
    const auto code = firstCode(valueSet, mayBeDecimal ? isNoNumber : isNoInteger);
    if (code)
        noteValueSet(Kind::CodesNotInteger, valueSet.sourceLine, valueSet.name, *code);
    return !code;
}

// Of a numeric set that is kept whatever its codes are.
void CSProBuilder::noteOddCodes(const TCSProValueSet& valueSet)
{
    if (!valueSet.isNumeric)
        return;
    if (const auto code = firstCode(valueSet, isNoNumber))
        noteValueSet(Kind::CodeNotANumber, valueSet.sourceLine, valueSet.name, *code);
    if (const TValueSetItem* range = firstReversedRange(valueSet)) {
        noteValueSet(Kind::RangeReversed, valueSet.sourceLine, valueSet.name,
            range->code + QLatin1Char(':') + range->highCode);
    }
}

// False when the value set is to be dropped.
bool CSProBuilder::settleDecimalCodes(TCSProValueSet& valueSet)
{
    CSProProblem& problem = m_dictionary.m_decimalCase;
    const TCSProItem* item = m_dictionary.lastItem;
    problem = { Kind::DecimalCodesDropped, valueSet.sourceLine,
        item ? item->dictionaryName : QString(), valueSet.name,
        firstCode(valueSet, IsDecimal).value_or(QString()) };
    m_dictionary.showMessageBoxDecimal(TCSPro::tr("<b>A decimal number was found</b>"),
        TCSPro::tr("Would you like to convert it to an integer number?"), TCSPro::tr("Caution"),
        QMessageBox::Question);
    const int button = m_dictionary.decimalButton;
    if (button == QMessageBox::YesToAll)
        m_dictionary.decimalAnswer = 1;
    else if (button == QMessageBox::NoToAll)
        m_dictionary.decimalAnswer = 2;
    const bool isConverted = button == QMessageBox::Yes || button == QMessageBox::YesToAll;
    const bool isDropped = button == QMessageBox::No || button == QMessageBox::NoToAll;
    if (isConverted) {
        convertCodes(valueSet);
        problem.kind = Kind::DecimalCodesConverted;
    }
    if (isConverted || isDropped)
        m_dictionary.m_problems.append(problem);
    return !isDropped;
}

// Special codes stay as they are; they belong to no number.
void CSProBuilder::convertCodes(TCSProValueSet& valueSet)
{
    std::vector<std::pair<TValueSetItem*, QString>> specials;
    for (TValueSetItem* entry : qAsConst(*valueSet.items)) {
        if (entry->special)
            specials.emplace_back(entry, entry->code);
    }
    valueSet.itemsAsNumberZero();
    for (const auto& [entry, code] : specials)
        entry->code = code;
}

// False when no item took the set.
bool CSProBuilder::attach(TCSProValueSet* valueSet)
{
    TCSProItem* last = m_dictionary.lastItem;
    m_isFinished = false;
    if (rules().allValueSets) {
        last->valueSets->append(valueSet);
        return true;
    }
    if (last->firstOccurrenceIndex != 0)
        return attachToOccurrences(valueSet);
    const bool isTaken = !last->getHasValueSet();
    last->addValueSet(valueSet);
    // Kept: when the file's first item is repeated, its last occurrence alone gets the set.
    if (last->occurrence > 1)
        noteValueSet(Kind::ValueSetOnLastOccurrence, valueSet->sourceLine, valueSet->name);
    return isTaken;
}

// Kept: from the end of all items, also where a host put others behind the item added last.
bool CSProBuilder::attachToOccurrences(TCSProValueSet* valueSet)
{
    const QList<TCSProItem*>& items = *m_dictionary.items;
    const QList<TCSProValueSet*> shared { valueSet }; // one allocation for all
    const int group = m_dictionary.lastItem->firstOccurrenceIndex;
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

// Codes of the last occurrence, which the others get from it.
void CSProBuilder::takeSpecialCodes(const TCSProValueSet& valueSet)
{
    TCSProItem& last = *m_dictionary.lastItem;
    for (const TValueSetItem* entry : qAsConst(*valueSet.items)) {
        const auto code = entry->special ? specialCode(entry->type) : nullptr;
        if (code && (last.*code).isEmpty())
            last.*code = entry->code;
    }
}

void CSProBuilder::finishItem()
{
    const TCSProItem* last = m_dictionary.lastItem;
    if (m_isFinished || !last)
        return;
    m_isFinished = true;
    for (int i = m_groupStart; i < m_dictionary.items->size() - 1; ++i) {
        TCSProItem* item = m_dictionary.items->at(i);
        if (rules().allValueSets)
            *item->valueSets = *last->valueSets; // shares the list's one allocation
        if (rules().specials) {
            item->missingCode = last->missingCode;
            item->notApplicableCode = last->notApplicableCode;
            item->refusedCode = last->refusedCode;
        }
    }
}

void CSProBuilder::noteOutside(int line, const QString& text)
{
    if (m_isOutside)
        note(Kind::LineOutsideSection, line, QString(), text);
    m_isOutside = false;
}

void CSProBuilder::beginSection()
{
    m_isOutside = false;
}

void CSProBuilder::beginLoad()
{
    m_isOutside = true;
    m_firstProblem = m_dictionary.m_problems.size();
    m_fieldCount = 0;
}

void CSProBuilder::finishLoad()
{
    finishItem();
    std::stable_sort(m_dictionary.m_problems.begin() + m_firstProblem,
        m_dictionary.m_problems.end(), [](const CSProProblem& first, const CSProProblem& second) {
            return first.line < second.line;
        });
}

void CSProBuilder::note(Kind kind, int line, const QString& name, const QString& text)
{
    m_dictionary.m_problems.append({ kind, line, name, QString(), text });
}

void CSProBuilder::noteValueSet(Kind kind, int line, const QString& valueSet, const QString& text)
{
    const TCSProItem* item = m_dictionary.lastItem;
    m_dictionary.m_problems.append(
        { kind, line, item ? item->dictionaryName : QString(), valueSet, text });
}
