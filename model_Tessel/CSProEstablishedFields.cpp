#include <model_Tessel/CSProEstablishedFields_p.h>

#include <model_Tessel/CSProLengthRange_p.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/Numbers_p.h>
#include <model_Tessel/UtilStrings.h>

#include <QStringBuilder>

#include <algorithm>

namespace {

// Entries whose texts are fetched before they are needed.
constexpr int Ahead = 8;

int digitsBeforePoint(const TCSProItem& item)
{
    qint64 digits = item.len;
    if (item.decimal > 0 && !item.getHasValueSet()) {
        if (item.hasDecimalChar)
            digits -= 1;
        else
            digits = item.len == item.decimal ? 1 : digits - item.decimal;
    }
    return int(std::clamp<qint64>(digits, 0, CSProMostColumns));
}

} // namespace

void CSProEstablishedFields::describe(TCSProVariable& field, const TCSProItem& item)
{
    if (item.isAlpha != 0)
        return;
    // Kept: the number is one character, so it never reads as a number and values are not scaled.
    field.decimals = item.decimal != 0 ? asCharacter(item.decimal) : QStringLiteral("0");
    field.minValue = QStringLiteral("0");
    field.maxValue = StringOfChar('9', digitsBeforePoint(item));
}

void CSProEstablishedFields::summarize(const QList<TCSProValueSet*>& valueSets)
{
    m_min = 0;
    m_max = 0;
    m_hasHighest = false;
    if (m_fieldType != TGenericField::StringType)
        startBounds(*valueSets.constFirst());
    for (const TCSProValueSet* valueSet : valueSets)
        addEntries(*valueSet);
    m_labels.squeeze();
    m_lowest = shortNumberText(m_min);
    m_highest = shortNumberText(m_max);
}

// Kept: the bounds start from the first and the last entry, special or not.
void CSProEstablishedFields::startBounds(const TCSProValueSet& first)
{
    if (first.getCount() == 0)
        return;
    bool lowIsNumber = false;
    bool highIsNumber = false;
    const double low = first.items->constFirst()->code.toDouble(&lowIsNumber);
    const double high = first.items->constLast()->code.toDouble(&highIsNumber);
    if (!lowIsNumber || !highIsNumber)
        return;
    m_min = low;
    m_max = high;
    m_hasHighest = true;
}

void CSProEstablishedFields::addEntries(const TCSProValueSet& valueSet)
{
    const QList<TValueSetItem*>& items = *valueSet.items;
    for (int i = 0; i < items.size(); ++i) {
        // Sorted entries lie anywhere in memory, so the ones ahead are fetched meanwhile.
        if (i + 2 * Ahead < items.size()) {
            __builtin_prefetch(&items.at(i + 2 * Ahead)->label);
            __builtin_prefetch(items.at(i + Ahead)->code.data_ptr());
            __builtin_prefetch(items.at(i + Ahead)->label.data_ptr());
        }
        if (!items.at(i)->special)
            addEntry(*items.at(i));
    }
}

// A number widens the bounds and takes the form that the field's type has.
void CSProEstablishedFields::addEntry(const TValueSetItem& entry)
{
    if (m_fieldType == TGenericField::StringType) {
        addLabel(entry.code, entry.label);
        return;
    }
    bool isNumber = false;
    const int integer = integerOf(entry.code, &isNumber);
    const double number = isNumber ? integer : entry.code.toDouble(&isNumber);
    if (!isNumber)
        return;
    m_min = std::min(m_min, number);
    m_max = std::max(m_max, number);
    if (m_fieldType == TGenericField::IntegerType && !isShortNumberText(entry.code))
        addLabel(shortNumberText(number), entry.label);
    else
        addLabel(entry.code, entry.label);
}

void CSProEstablishedFields::addLabel(const QString& code, const QString& label)
{
    m_labels += code;
    m_labels += QLatin1Char(' ');
    m_labels += label;
    m_labels += QLatin1Char('\t');
}

void CSProEstablishedFields::bound(TCSProVariable& field) const
{
    field.minValue = m_lowest;
    if (m_hasHighest)
        field.maxValue = m_highest;
}
