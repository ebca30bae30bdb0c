#include "listing/CodeKeys.h"

#include "text/PlainNumber.h"
#include "text/ShownText.h"

#include <model_Tessel/UtilStrings.h>

#include <algorithm>

namespace {

QString rangeKey(const ListedCode& entry, KeyOfCode keyOf)
{
    const QString low = keyOf(entry.code);
    const QString high = entry.isRange() ? keyOf(entry.highCode) : low;
    const QString key = QLatin1Char('=') + low;
    return low == high ? key : key + QLatin1Char('\n') + high;
}

QString withoutLeadingZeros(const QString& digits)
{
    int zeros = 0;
    while (zeros < digits.size() - 1 && digits.at(zeros) == QLatin1Char('0'))
        ++zeros;
    return digits.mid(zeros);
}

// A number as the columns of a field hold it: at their right end, behind zeros or blanks.
QString inColumns(const QString& number, const ListedField& field)
{
    QString text = number.trimmed();
    if (!field.hasColumns())
        return text;
    const QString sign = text.startsWith(QLatin1Char('-')) ? QStringLiteral("-") : QString();
    const int point = text.indexOf(QLatin1Char('.'));
    QString digits = text.mid(sign.size(), point < 0 ? -1 : point - sign.size());
    if (field.decimals > 0) {
        const QString decimals = point < 0 ? QString() : text.mid(point + 1);
        digits += field.hasDecimalChar ? QLatin1String(".") : QLatin1String();
        digits += decimals.leftJustified(field.decimals, QLatin1Char('0'));
    }
    digits = field.hasDecimalChar ? digits : withoutLeadingZeros(digits);
    if (field.isZeroFilled)
        return sign + digits.rightJustified(field.length - sign.size(), QLatin1Char('0'));
    return (sign + digits).rightJustified(field.length);
}

QSet<QString> textKeysOf(const ListedField& field)
{
    QSet<QString> keys;
    for (const ListedValueSet& valueSet : field.valueSets) {
        for (const ListedCode& entry : valueSet.codes)
            keys.insert(withoutTrailingBlanks(entry.code));
    }
    return keys;
}

} // namespace

KeyOfCode keyFor(const ListedField& before, const ListedField& after)
{
    return before.isText() || after.isText() ? withoutTrailingBlanks : numberKey;
}

QStringList rangeKeys(const QVector<ListedCode>& codes, KeyOfCode keyOf)
{
    QStringList keys;
    keys.reserve(codes.size());
    for (const ListedCode& entry : codes)
        keys.append(rangeKey(entry, keyOf));
    return keys;
}

bool isBlank(const QString& code)
{
    return code.trimmed().isEmpty();
}

CodeCover::CodeCover(const QVector<ListedValueSet>& valueSets, KeyOfCode keyOf)
    : m_keyOf(keyOf)
{
    for (const ListedValueSet& valueSet : valueSets) {
        for (const ListedCode& entry : valueSet.codes)
            add(entry);
    }
    mergeRanges();
}

void CodeCover::mergeRanges()
{
    std::sort(m_ranges.begin(), m_ranges.end());
    QVector<Range> merged;
    for (const Range& range : qAsConst(m_ranges)) {
        if (!merged.isEmpty() && range.first <= merged.constLast().second)
            merged.last().second = std::max(merged.constLast().second, range.second);
        else
            merged.append(range);
    }
    m_ranges = merged;
}

bool CodeCover::contains(const ListedCode& entry) const
{
    if (m_keys.contains(rangeKey(entry, m_keyOf)))
        return true;
    Range range;
    if (!readRange(entry, range))
        return false;
    const auto next = std::upper_bound(m_ranges.cbegin(), m_ranges.cend(), range.first,
        [](double low, const Range& other) { return low < other.first; });
    return next != m_ranges.cbegin() && range.second <= std::prev(next)->second;
}

bool CodeCover::readRange(const ListedCode& entry, Range& range) const
{
    bool isLow = false;
    bool isHigh = false;
    range.first = entry.code.toDouble(&isLow);
    range.second = (entry.isRange() ? entry.highCode : entry.code).toDouble(&isHigh);
    return m_keyOf == numberKey && isLow && isHigh;
}

void CodeCover::add(const ListedCode& entry)
{
    m_keys.insert(rangeKey(entry, m_keyOf));
    Range range;
    if (entry.isRange() && readRange(entry, range))
        m_ranges.append(range);
}

bool losesCodesAsText(const ListedField& number, const ListedField& text)
{
    const QSet<QString> kept = textKeysOf(text);
    const auto isLost = [&](const ListedCode& entry) {
        if (isBlank(entry.code))
            return false;
        return entry.isRange() || !kept.contains(inColumns(entry.code, number));
    };
    return !kept.isEmpty()
        && std::any_of(number.valueSets.cbegin(), number.valueSets.cend(),
            [&](const ListedValueSet& valueSet) {
                return std::any_of(valueSet.codes.cbegin(), valueSet.codes.cend(), isLost);
            });
}
