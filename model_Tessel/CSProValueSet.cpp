#include <model_Tessel/CSProValueSet.h>

#include <model_Tessel/BoundedSort_p.h>
#include <model_Tessel/Constants.h>
#include <model_Tessel/ErrorManager.h>
#include <model_Tessel/Numbers_p.h>

#include <QHash>

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <vector>

namespace {

// Runs an operation over codes; whatever goes wrong in it becomes error 101.
template <typename Operation> auto guarded(Operation operation)
{
    try {
        return operation();
    } catch (...) {
        throw new OxErrorManager(ClassNameCSProValueSet, PointerNULL);
    }
}

TValueSetItem& checked(TValueSetItem* item)
{
    if (!item)
        throw std::invalid_argument("null entry in a value set");
    return *item;
}

template <typename Key, typename Compare>
void sortByKeys(QList<TValueSetItem*>& items, std::vector<Key>& keys, Compare before)
{
    boundedSort(keys, before);
    std::transform(
        keys.begin(), keys.end(), items.begin(), [](const Key& key) { return key.item; });
}

struct NumericKey {
    double code; // NaN for what is not an integer
    TValueSetItem* item;
};

struct TextKey {
    uint hash; // of the code; tells most different codes apart without looking at them
    TValueSetItem* item;
};

bool areDifferent(const TextKey& first, const TextKey& second)
{
    return first.hash != second.hash || !first.item || !second.item
        || first.item->code != second.item->code;
}

} // namespace

TValueSetItem::TValueSetItem()
    : code(QChar(ushort(3))) // kept: hosts tell an entry without a code by it
{
}

TValueSetItem::~TValueSetItem() = default;

// What a dictionary that is read as written says of a set besides its codes and labels.
struct TCSProValueSet::Detail {
    QString link;
    QString note;
    TCSProValueSet* linkedSet = nullptr;
    QHash<const TValueSetItem*, CSProValueDetail> entries; // those of which anything is said
};

TCSProValueSet::TCSProValueSet()
    : items(new QList<TValueSetItem*>)
{
}

TCSProValueSet::~TCSProValueSet() = default;

void TCSProValueSet::addItem(TValueSetItem* item)
{
    items->append(item);
}

int TCSProValueSet::getCount() const
{
    return items->size();
}

TValueSetItem* TCSProValueSet::getValueSetItem(int index) const
{
    return items->at(index);
}

void TCSProValueSet::setValueSetItem(int index, TValueSetItem* item)
{
    try {
        if (index < 0 || index > items->size())
            throw std::out_of_range("position outside the value set");
        items->insert(index, item); // kept: inserts, does not replace
    } catch (...) {
        throw new OxErrorManager(ClassNameCSProValueSet, ItemNotStored, QString::number(index));
    }
}

bool TCSProValueSet::validateItems(int mode)
{
    return guarded([&] {
        if (!isNumeric || (mode != 0 && mode != 1))
            return true;
        return std::all_of(items->cbegin(), items->cend(), [mode](TValueSetItem* item) {
            const QString& code = checked(item).code;
            return mode == 0 ? !IsDecimal(code) : IsNumeric2(code);
        });
    });
}

void TCSProValueSet::itemsAsNumberZero()
{
    guarded([&] {
        if (!isNumeric)
            return;
        for (TValueSetItem* item : qAsConst(*items)) {
            if (!IsNumeric2(checked(item).code))
                item->code = QStringLiteral("0");
        }
    });
}

void TCSProValueSet::itemsAsInteger()
{
    guarded([&] {
        if (!isNumeric)
            return;
        for (TValueSetItem* item : qAsConst(*items)) {
            if (IsDecimal(checked(item).code))
                item->code = QString::number(double(item->code.toFloat()), 'f', 0);
        }
    });
}

void TCSProValueSet::sortItems()
{
    // Codes are converted once; what the comparators make of them stays the same.
    if (isNumeric) {
        std::vector<NumericKey> keys;
        keys.reserve(static_cast<std::size_t>(items->size()));
        for (TValueSetItem* item : qAsConst(*items)) {
            bool isInteger = false;
            const double code = item ? integerOf(item->code, &isInteger) : 0;
            keys.push_back({ isInteger ? code : std::numeric_limits<double>::quiet_NaN(), item });
        }
        sortByKeys(*items, keys, [](const NumericKey& first, const NumericKey& second) {
            return !(first.code >= second.code); // true when either is not a number
        });
    } else {
        std::vector<TextKey> keys;
        keys.reserve(static_cast<std::size_t>(items->size()));
        for (TValueSetItem* item : qAsConst(*items))
            keys.push_back({ item ? qHash(item->code) : 0, item });
        sortByKeys(*items, keys, areDifferent); // kept: different codes come before each other
    }
}

TCSProValueSet::Detail& TCSProValueSet::editDetail()
{
    if (!m_detail)
        m_detail = std::make_unique<Detail>();
    return *m_detail;
}

const CSProValueDetail& TCSProValueSet::detail(const TValueSetItem* entry) const
{
    static const CSProValueDetail none;
    if (!m_detail)
        return none;
    const auto found = m_detail->entries.constFind(entry);
    return found == m_detail->entries.constEnd() ? none : *found;
}

bool TCSProValueSet::hasDetails() const
{
    return m_detail && !m_detail->entries.isEmpty();
}

void TCSProValueSet::setDetail(const TValueSetItem* entry, const CSProValueDetail& detail)
{
    if (!detail.isEmpty())
        editDetail().entries.insert(entry, detail);
}

void TCSProValueSet::shareEntries(TCSProValueSet* valueSet)
{
    Detail& detail = editDetail();
    detail.linkedSet = valueSet;
    if (valueSet->hasDetails())
        detail.entries = valueSet->m_detail->entries;
    *items = *valueSet->items;
}

TCSProValueSet* TCSProValueSet::linkedSet() const
{
    return m_detail ? m_detail->linkedSet : nullptr;
}

QString TCSProValueSet::link() const
{
    return m_detail ? m_detail->link : QString();
}

void TCSProValueSet::setLink(const QString& link)
{
    if (link != this->link())
        editDetail().link = link;
}

QString TCSProValueSet::note() const
{
    return m_detail ? m_detail->note : QString();
}

void TCSProValueSet::setNote(const QString& note)
{
    if (note != this->note())
        editDetail().note = note;
}

bool IsNumeric2(const QString& text)
{
    bool isInteger = false;
    integerOf(text, &isInteger);
    return isInteger;
}

bool IsDecimal(const QString& text)
{
    bool hasPoint = false;
    for (const QChar character : text) {
        const bool isPoint = character == QLatin1Char('.');
        if (isPoint ? hasPoint : !character.isDigit())
            return false;
        hasPoint = hasPoint || isPoint;
    }
    return hasPoint;
}

int CompareCodes(void* first, void* second)
{
    if (!first || !second)
        return -1;
    const int order = QString::compare(static_cast<const TValueSetItem*>(first)->code,
        static_cast<const TValueSetItem*>(second)->code, Qt::CaseSensitive);
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

bool CompareCodesNumeric(void* first, void* second)
{
    if (!first || !second)
        return true;
    const QString& firstCode = static_cast<const TValueSetItem*>(first)->code;
    const QString& secondCode = static_cast<const TValueSetItem*>(second)->code;
    return !IsNumeric2(firstCode) || !IsNumeric2(secondCode)
        || firstCode.toDouble() < secondCode.toDouble();
}
