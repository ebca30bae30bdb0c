#include "listing/ListingDiff.h"

#include "text/PlainNumber.h"
#include "text/ShownText.h"

#include <QHash>
#include <QSet>
#include <QStringList>

#include <algorithm>

namespace {

QString orNull(const QString& text)
{
    return text.isEmpty() ? QString() : text;
}

QString yesOrNo(bool isSo)
{
    return isSo ? QStringLiteral("yes") : QStringLiteral("no");
}

bool hasColumns(const ListedField& field)
{
    return field.start > 0;
}

// Where columns hold the values a whole number of many digits is listed as real.
QString numberType(const ListedField& field)
{
    const bool isWhole = hasColumns(field) && !field.isText() && field.decimals == 0;
    return isWhole ? QStringLiteral("integer") : field.type;
}

// Which entry of one list is which of another.
class Pairing {
public:
    Pairing(int beforeCount, int afterCount)
        : m_after(beforeCount, -1)
        , m_before(afterCount, -1)
    {
    }

    // Pairs what has no partner yet and has the same key, the first with the first; a null key has
    // no partner.
    void pair(const QStringList& before, const QStringList& after)
    {
        QHash<QString, QVector<int>> waiting;
        for (int i = after.size() - 1; i >= 0; --i) {
            if (m_before.at(i) < 0 && !after.at(i).isNull())
                waiting[after.at(i)].append(i);
        }
        for (int i = 0; i < before.size(); ++i) {
            const auto found = waiting.find(before.at(i));
            if (m_after.at(i) >= 0 || found == waiting.end() || found->isEmpty())
                continue;
            m_after[i] = found->takeLast();
            m_before[m_after.at(i)] = i;
        }
    }

    // The same for keys that stand once in each list.
    void pairUnique(const QStringList& before, const QStringList& after)
    {
        pair(uniqueOnly(before), uniqueOnly(after));
    }

    // -1: none
    int afterOf(int before) const
    {
        return m_after.at(before);
    }

    int beforeOf(int after) const
    {
        return m_before.at(after);
    }

private:
    static QStringList uniqueOnly(QStringList keys)
    {
        QHash<QString, int> counts;
        for (const QString& key : qAsConst(keys))
            ++counts[key];
        for (QString& key : keys) {
            if (counts.value(key) != 1)
                key = QString();
        }
        return keys;
    }

    QVector<int> m_after;
    QVector<int> m_before;
};

// ---- codes

QString textKey(const QString& code)
{
    int length = code.size();
    while (length > 0 && code.at(length - 1) == QLatin1Char(' '))
        --length;
    return code.left(length);
}

using KeyOfCode = QString (*)(const QString&);

// A range of one code is that code.
QString rangeKey(const ListedCode& entry, KeyOfCode keyOf)
{
    const QString low = keyOf(entry.code);
    const QString high = entry.highCode.isNull() ? low : keyOf(entry.highCode);
    const QString key = QLatin1Char('=') + low;
    return low == high ? key : key + QLatin1Char('\n') + high;
}

QStringList rangeKeys(const QVector<ListedCode>& codes, KeyOfCode keyOf)
{
    QStringList keys;
    keys.reserve(codes.size());
    for (const ListedCode& entry : codes)
        keys.append(rangeKey(entry, keyOf));
    return keys;
}

// The values that some value sets have a label for, in ordinary or special codes.
class CodeCover {
public:
    CodeCover(const QVector<ListedValueSet>& valueSets, KeyOfCode keyOf)
        : m_keyOf(keyOf)
    {
        for (const ListedValueSet& valueSet : valueSets) {
            for (const ListedCode& entry : valueSet.codes)
                add(entry);
        }
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

    bool contains(const ListedCode& entry) const
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

private:
    using Range = QPair<double, double>;

    bool readRange(const ListedCode& entry, Range& range) const
    {
        bool isLow = false;
        bool isHigh = false;
        range.first = entry.code.toDouble(&isLow);
        range.second = (entry.highCode.isNull() ? entry.code : entry.highCode).toDouble(&isHigh);
        return m_keyOf == numberKey && isLow && isHigh;
    }

    void add(const ListedCode& entry)
    {
        m_keys.insert(rangeKey(entry, m_keyOf));
        Range range;
        if (!entry.highCode.isNull() && readRange(entry, range))
            m_ranges.append(range);
    }

    KeyOfCode m_keyOf;
    QSet<QString> m_keys;
    QVector<Range> m_ranges; // apart from each other, in order
};

bool isBlank(const QString& code)
{
    return code.trimmed().isEmpty();
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
    const QString text = number.trimmed();
    if (!hasColumns(field))
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
            keys.insert(textKey(entry.code));
    }
    return keys;
}

// True when a number's codes, as they stand in the data, are not among those of the text.
bool losesCodesAsText(const ListedField& number, const ListedField& text)
{
    const QSet<QString> kept = textKeysOf(text);
    const auto isLost = [&](const ListedCode& entry) {
        if (isBlank(entry.code))
            return false;
        return !entry.highCode.isNull() || !kept.contains(inColumns(entry.code, number));
    };
    return !kept.isEmpty()
        && std::any_of(number.valueSets.cbegin(), number.valueSets.cend(),
            [&](const ListedValueSet& valueSet) {
                return std::any_of(valueSet.codes.cbegin(), valueSet.codes.cend(), isLost);
            });
}

QString joined(const QVector<ListedCode>& codes)
{
    QStringList texts;
    for (const ListedCode& entry : codes) {
        texts.append(entry.highCode.isNull() ? entry.code
                                             : entry.code + QLatin1String("..") + entry.highCode);
    }
    return joinedCodes(texts);
}

// ---- variables

// A variable with all its occurrences, or one occurrence where only one dictionary has them.
struct Unit {
    QVector<const ListedField*> occurrences;
    QString name;
    QString recordKey; // the same for the same record of both dictionaries; empty: none
    int group = 0; // differences of one group stand together

    const ListedField& first() const
    {
        return *occurrences.constFirst();
    }
};

class Comparison {
public:
    Comparison(const Listing& before, const Listing& after);
    QVector<Difference> run();

private:
    enum class Side { Before, After };

    void compareDictionaries();
    void compareRecords();
    void compareRecord(const ListedRecord& before, const ListedRecord& after);
    QVector<Unit> unitsOf(const Listing& listing, Side side) const;
    void locate(const QString& record, Side side, Unit& unit) const;
    Pairing pairUnits(const QVector<Unit>& before, const QVector<Unit>& after) const;
    void compareUnits(const Unit& before, const Unit& after);
    void comparePlaces(const Unit& before, const Unit& after);
    void compareTypes(const ListedField& before, const ListedField& after);
    void compareLengths(const Unit& before, const Unit& after);
    void compareDecimals(const ListedField& before, const ListedField& after);
    void compareOccurrences(const Unit& before, const Unit& after);
    void compareMissing(const ListedField& before, const ListedField& after);
    void compareValueSets(const ListedField& before, const ListedField& after);
    void compareCodes(const ListedValueSet& before, const ListedValueSet& after,
        const CodeCover& cover, KeyOfCode keyOf);
    void compareCode(const ListedCode& before, const ListedCode& after);
    void addCode(
        DifferenceKind kind, bool breaks, const ListedValueSet& valueSet, const ListedCode& entry);
    void beginUnit(const Unit& unit);
    Difference& add(DifferenceKind kind, bool breaks);
    Difference& add(DifferenceKind kind, const char* property, bool breaks, const QString& before,
        const QString& after);

    const Listing& m_before;
    const Listing& m_after;
    const bool m_haveRecords; // both
    const bool m_isSameKind;
    const bool m_haveFormats; // widths of numbers mean the same in both
    Pairing m_records;
    QHash<QString, int> m_beforeRecords; // index by name in small letters
    QHash<QString, int> m_afterRecords;
    QVector<QVector<Difference>> m_groups;
    int m_group = 0;
    QString m_record; // of the next differences
    QString m_variable;
};

QStringList recordNames(const Listing& listing)
{
    QStringList names;
    for (const ListedRecord& record : listing.records)
        names.append(record.name.toCaseFolded());
    return names;
}

QStringList recordTypes(const Listing& listing)
{
    QStringList types;
    for (const ListedRecord& record : listing.records)
        types.append(orNull(textKey(record.recordType)));
    return types;
}

QHash<QString, int> indexesOf(const QStringList& names)
{
    QHash<QString, int> indexes;
    for (int i = names.size() - 1; i >= 0; --i)
        indexes.insert(names.at(i), i);
    return indexes;
}

Comparison::Comparison(const Listing& before, const Listing& after)
    : m_before(before)
    , m_after(after)
    , m_haveRecords(before.hasRecords() && after.hasRecords())
    , m_isSameKind(before.kind == after.kind)
    , m_haveFormats(
          (before.kind == QLatin1String("stata")) == (after.kind == QLatin1String("stata")))
    , m_records(before.records.size(), after.records.size())
    , m_beforeRecords(indexesOf(recordNames(before)))
    , m_afterRecords(indexesOf(recordNames(after)))
    , m_groups(before.records.size() + after.records.size() + 2)
{
    if (!m_haveRecords)
        return;
    m_records.pair(recordNames(before), recordNames(after));
    m_records.pairUnique(recordTypes(before), recordTypes(after)); // renamed ones
}

QVector<Difference> Comparison::run()
{
    if (m_haveRecords) {
        compareDictionaries();
        compareRecords();
    }
    const QVector<Unit> before = unitsOf(m_before, Side::Before);
    const QVector<Unit> after = unitsOf(m_after, Side::After);
    const Pairing pairing = pairUnits(before, after);
    for (int i = 0; i < before.size(); ++i) {
        beginUnit(before.at(i));
        if (pairing.afterOf(i) >= 0)
            compareUnits(before.at(i), after.at(pairing.afterOf(i)));
        else
            add(DifferenceKind::VariableRemoved, true);
    }
    for (int i = 0; i < after.size(); ++i) {
        if (pairing.beforeOf(i) >= 0)
            continue;
        beginUnit(after.at(i));
        add(DifferenceKind::VariableAdded, false);
    }
    QVector<Difference> differences;
    for (const QVector<Difference>& group : qAsConst(m_groups))
        differences += group;
    return differences;
}

void Comparison::beginUnit(const Unit& unit)
{
    m_group = unit.group;
    m_record = unit.first().record;
    m_variable = unit.name;
}

Difference& Comparison::add(DifferenceKind kind, bool breaks)
{
    Difference difference;
    difference.kind = kind;
    difference.breaks = breaks;
    difference.record = m_record;
    difference.variable = m_variable;
    m_groups[m_group].append(difference);
    return m_groups[m_group].last();
}

Difference& Comparison::add(DifferenceKind kind, const char* property, bool breaks,
    const QString& before, const QString& after)
{
    Difference& difference = add(kind, breaks);
    difference.property = QLatin1String(property);
    difference.before = before;
    difference.after = after;
    return difference;
}

// ---- records

// Where the record type stands in the lines; without record types it stands nowhere.
void Comparison::compareDictionaries()
{
    m_group = 0;
    m_record = m_variable = QString();
    const auto kind = DifferenceKind::DictionaryChanged;
    const int length = m_before.recordTypeLength;
    if (length != m_after.recordTypeLength) {
        add(kind, "recordTypeLength", true, QString::number(length),
            QString::number(m_after.recordTypeLength));
    }
    if (length > 0 && m_after.recordTypeLength > 0
        && m_before.recordTypeStart != m_after.recordTypeStart) {
        add(kind, "recordTypeStart", true, QString::number(m_before.recordTypeStart),
            QString::number(m_after.recordTypeStart));
    }
}

void Comparison::compareRecords()
{
    m_variable = QString();
    for (int i = 0; i < m_before.records.size(); ++i) {
        m_group = 1 + i;
        m_record = m_before.records.at(i).name;
        if (m_records.afterOf(i) >= 0)
            compareRecord(m_before.records.at(i), m_after.records.at(m_records.afterOf(i)));
        else
            add(DifferenceKind::RecordRemoved, true);
    }
    for (int i = 0; i < m_after.records.size(); ++i) {
        if (m_records.beforeOf(i) >= 0)
            continue;
        m_group = 1 + m_before.records.size() + i;
        m_record = m_after.records.at(i).name;
        add(DifferenceKind::RecordAdded, false);
    }
}

void Comparison::compareRecord(const ListedRecord& before, const ListedRecord& after)
{
    const auto kind = DifferenceKind::RecordChanged;
    if (before.name.compare(after.name, Qt::CaseInsensitive) != 0)
        add(kind, "name", false, before.name, after.name);
    if (before.label != after.label)
        add(kind, "label", false, orNull(before.label), orNull(after.label));
    if (textKey(before.recordType) != textKey(after.recordType)) {
        add(kind, "recordType", true, orNull(before.recordType), orNull(after.recordType));
    }
    if (before.maxRecords != after.maxRecords) {
        add(kind, "maximum", after.maxRecords < before.maxRecords,
            QString::number(before.maxRecords), QString::number(after.maxRecords));
    }
    if (before.level > 0 && after.level > 0 && before.level != after.level) {
        add(kind, "level", true, QString::number(before.level), QString::number(after.level));
    }
}

// ---- which variable is which

void Comparison::locate(const QString& record, Side side, Unit& unit) const
{
    const bool isBefore = side == Side::Before;
    const QString name = record.toCaseFolded();
    const int index =
        record.isNull() ? -1 : (isBefore ? m_beforeRecords : m_afterRecords).value(name, -1);
    if (index < 0) {
        const bool isStranger = !isBefore && m_before.hasRecords() && !m_after.hasRecords();
        unit.group = isStranger ? m_groups.size() - 1 : 0;
        return;
    }
    const int known = isBefore ? index : m_records.beforeOf(index);
    unit.group = known >= 0 ? 1 + known : 1 + m_before.records.size() + index;
    unit.recordKey = QString::number(unit.group);
}

// The occurrences of an item are compared as one where both dictionaries have them.
QVector<Unit> Comparison::unitsOf(const Listing& listing, Side side) const
{
    QVector<Unit> units;
    QHash<QString, int> latest;
    for (const ListedField& field : listing.fields) {
        Unit unit;
        unit.occurrences.append(&field);
        unit.name = m_haveRecords ? field.item : field.name;
        locate(field.record, side, unit);
        if (m_haveRecords) {
            const QString key = unit.recordKey + QLatin1Char('.') + unit.name;
            const int known = latest.value(key, -1);
            if (field.occurrence > 1 && known >= 0) {
                units[known].occurrences.append(&field);
                continue;
            }
            latest.insert(key, units.size());
        }
        units.append(unit);
    }
    return units;
}

QStringList namesOf(const QVector<Unit>& units, Qt::CaseSensitivity sensitivity)
{
    QStringList names;
    names.reserve(units.size());
    for (const Unit& unit : units)
        names.append(sensitivity == Qt::CaseSensitive ? unit.name : unit.name.toCaseFolded());
    return names;
}

QStringList placesOf(const QVector<Unit>& units, Qt::CaseSensitivity sensitivity)
{
    QStringList places = namesOf(units, sensitivity);
    for (int i = 0; i < units.size(); ++i)
        places[i].prepend(units.at(i).recordKey + QLatin1Char('.'));
    return places;
}

Pairing Comparison::pairUnits(const QVector<Unit>& before, const QVector<Unit>& after) const
{
    Pairing pairing(before.size(), after.size());
    if (m_before.hasRecords() == m_after.hasRecords()) {
        for (const auto sensitivity : { Qt::CaseSensitive, Qt::CaseInsensitive })
            pairing.pair(placesOf(before, sensitivity), placesOf(after, sensitivity));
    }
    for (const auto sensitivity : { Qt::CaseSensitive, Qt::CaseInsensitive })
        pairing.pairUnique(namesOf(before, sensitivity), namesOf(after, sensitivity));
    return pairing;
}

// ---- two variables

void Comparison::compareUnits(const Unit& before, const Unit& after)
{
    const ListedField& first = before.first();
    const ListedField& second = after.first();
    comparePlaces(before, after);
    compareTypes(first, second);
    compareLengths(before, after);
    compareDecimals(first, second);
    compareOccurrences(before, after);
    if (first.label != second.label) {
        add(DifferenceKind::Relabelled, "label", false, orNull(first.label), orNull(second.label));
    }
    compareMissing(first, second);
    compareValueSets(first, second);
}

void Comparison::comparePlaces(const Unit& before, const Unit& after)
{
    if (m_haveRecords && before.recordKey != after.recordKey) {
        add(DifferenceKind::Moved, "record", true, before.first().record, after.first().record);
        return;
    }
    if (!hasColumns(before.first()) || !hasColumns(after.first()))
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
        Difference& difference = add(DifferenceKind::Moved, "start", true,
            QString::number(first.start), QString::number(second.start));
        if (i > 0)
            difference.variable = first.name;
        return;
    }
}

// Between whole numbers and others decimals tell more, where they differ.
void Comparison::compareTypes(const ListedField& before, const ListedField& after)
{
    const QString first = numberType(before);
    const QString second = numberType(after);
    const bool areNumbers = !before.isText() && !after.isText();
    if (first == second || (areNumbers && m_haveFormats && before.decimals != after.decimals))
        return;
    bool isNarrower = areNumbers ? first == QLatin1String("real") : before.isText();
    if (!before.isText() && after.isText())
        isNarrower = losesCodesAsText(before, after);
    add(DifferenceKind::Retyped, "type", isNarrower, first, second);
}

// A number is not bound to the width that its format shows. Other occurrences, and other parts of
// an item, stand in the columns behind one.
void Comparison::compareLengths(const Unit& before, const Unit& after)
{
    const ListedField& first = before.first();
    const ListedField& second = after.first();
    const bool areTexts = first.isText() && second.isText();
    if (first.length == second.length || (!m_haveFormats && !areTexts))
        return;
    const bool isBound = hasColumns(second) || second.isText();
    const bool isNarrower = second.length < first.length;
    const bool haveColumns = hasColumns(first) && hasColumns(second);
    const bool takesOthers = haveColumns && (before.occurrences.size() > 1 || first.isSubItem);
    add(DifferenceKind::Resized, "length", isNarrower ? isBound : takesOthers,
        QString::number(first.length), QString::number(second.length));
}

// Without a decimal point in the data another number of decimals makes other values of it.
void Comparison::compareDecimals(const ListedField& before, const ListedField& after)
{
    if (before.isText() || after.isText() || !m_haveFormats)
        return;
    const bool haveColumns = hasColumns(before) && hasColumns(after);
    if (before.decimals != after.decimals) {
        const bool isImplied = haveColumns
            && (!after.hasDecimalChar || (before.decimals > 0 && !before.hasDecimalChar));
        add(DifferenceKind::Resized, "decimals", isImplied || after.decimals < before.decimals,
            QString::number(before.decimals), QString::number(after.decimals));
    }
    if (haveColumns && before.decimals > 0 && after.decimals > 0
        && before.hasDecimalChar != after.hasDecimalChar) {
        add(DifferenceKind::Resized, "decimalChar", true, yesOrNo(before.hasDecimalChar),
            yesOrNo(after.hasDecimalChar));
    }
}

void Comparison::compareOccurrences(const Unit& before, const Unit& after)
{
    const int first = before.occurrences.size();
    const int second = after.occurrences.size();
    if (first != second) {
        add(DifferenceKind::Resized, "occurrences", second < first, QString::number(first),
            QString::number(second));
    }
    for (int i = 0; i < std::min(first, second); ++i) {
        const ListedField& occurrence = *before.occurrences.at(i);
        const QString& label = after.occurrences.at(i)->occurrenceLabel;
        if (occurrence.occurrenceLabel == label || (!m_haveRecords && !m_isSameKind))
            continue;
        add(DifferenceKind::Relabelled, "occurrenceLabel", false,
            orNull(occurrence.occurrenceLabel), orNull(label))
            .variable = occurrence.name;
    }
}

// ---- values

KeyOfCode keyFor(const ListedField& before, const ListedField& after)
{
    return before.isText() || after.isText() ? textKey : numberKey;
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
void Comparison::compareMissing(const ListedField& before, const ListedField& after)
{
    const KeyOfCode keyOf = keyFor(before, after);
    const auto compare = [&](DifferenceKind kind, const char* property,
                             const QVector<ListedCode>& first, const QVector<ListedCode>& second) {
        const QStringList firstKeys = rangeKeys(first, keyOf);
        const QStringList secondKeys = rangeKeys(second, keyOf);
        const bool isLost = losesKeys(firstKeys, secondKeys);
        if (isLost || losesKeys(secondKeys, firstKeys))
            add(kind, property, isLost, joined(first), joined(second));
    };
    if (m_before.hasRecords() != m_after.hasRecords()) {
        compare(DifferenceKind::MissingChanged, "missing", allMissingCodes(before),
            allMissingCodes(after));
        return;
    }
    compare(DifferenceKind::MissingChanged, "missing", before.missingCodes(), after.missingCodes());
    compare(DifferenceKind::NotApplicableChanged, "notApplicable", before.notApplicableCodes(),
        after.notApplicableCodes());
}

QStringList namesOf(const QVector<ListedValueSet>& valueSets)
{
    QStringList names;
    for (const ListedValueSet& valueSet : valueSets)
        names.append(valueSet.name.toCaseFolded());
    return names;
}

// The keys of what has no partner in \a pairing, the first, the second and so on.
template <typename HasPartner> QStringList leftOver(int count, const HasPartner& hasPartner)
{
    QStringList keys;
    int number = 0;
    for (int i = 0; i < count; ++i)
        keys.append(hasPartner(i) ? QString() : QString::number(number++));
    return keys;
}

// Value sets have names only in dictionaries with several; elsewhere the first is the one.
void Comparison::compareValueSets(const ListedField& before, const ListedField& after)
{
    QVector<ListedValueSet> first = before.valueSets;
    QVector<ListedValueSet> second = after.valueSets;
    if (!m_haveRecords) {
        first = first.mid(0, 1);
        second = second.mid(0, 1);
    }
    Pairing pairing(first.size(), second.size());
    pairing.pair(namesOf(first), namesOf(second));
    pairing.pair(leftOver(first.size(), [&](int i) { return pairing.afterOf(i) >= 0; }),
        leftOver(second.size(), [&](int i) { return pairing.beforeOf(i) >= 0; }));
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

void Comparison::addCode(
    DifferenceKind kind, bool breaks, const ListedValueSet& valueSet, const ListedCode& entry)
{
    Difference& difference = add(kind, breaks);
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
void Comparison::compareCodes(const ListedValueSet& before, const ListedValueSet& after,
    const CodeCover& cover, KeyOfCode keyOf)
{
    Pairing pairing(before.codes.size(), after.codes.size());
    pairing.pair(rangeKeys(before.codes, keyOf), rangeKeys(after.codes, keyOf));
    for (int i = 0; i < before.codes.size(); ++i) {
        const ListedCode& entry = before.codes.at(i);
        const int partner = pairing.afterOf(i);
        if (partner < 0) {
            const bool isUnlabelled = m_before.hasRecords() && !m_after.hasRecords()
                && (!entry.highCode.isNull() || isBlank(entry.code));
            addCode(DifferenceKind::ValueRemoved, !isUnlabelled && !cover.contains(entry), before,
                entry);
            continue;
        }
        const int known = m_groups.at(m_group).size();
        compareCode(entry, after.codes.at(partner));
        for (int j = known; j < m_groups.at(m_group).size(); ++j)
            m_groups[m_group][j].valueSet = orNull(before.name);
    }
    for (int i = 0; i < after.codes.size(); ++i) {
        if (pairing.beforeOf(i) < 0)
            addCode(DifferenceKind::ValueAdded, false, after, after.codes.at(i));
    }
}

void Comparison::compareCode(const ListedCode& before, const ListedCode& after)
{
    const auto change = [&](const char* property, bool breaks, const QString& first,
                            const QString& second) {
        Difference& difference =
            add(DifferenceKind::ValueChanged, property, breaks, orNull(first), orNull(second));
        difference.code = before.code;
        difference.highCode = before.highCode;
    };
    if (before.label != after.label)
        change("label", false, before.label, after.label);
    const bool isSame = m_before.hasRecords() == m_after.hasRecords()
        ? before.special == after.special
        : before.special.isNull() == after.special.isNull();
    if (!isSame)
        change("special", true, before.special, after.special);
}

} // namespace

QString differenceName(DifferenceKind kind)
{
    switch (kind) {
    case DifferenceKind::DictionaryChanged:
        return QStringLiteral("dictionary-changed");
    case DifferenceKind::RecordAdded:
        return QStringLiteral("record-added");
    case DifferenceKind::RecordRemoved:
        return QStringLiteral("record-removed");
    case DifferenceKind::RecordChanged:
        return QStringLiteral("record-changed");
    case DifferenceKind::VariableAdded:
        return QStringLiteral("variable-added");
    case DifferenceKind::VariableRemoved:
        return QStringLiteral("variable-removed");
    case DifferenceKind::Moved:
        return QStringLiteral("variable-moved");
    case DifferenceKind::Retyped:
        return QStringLiteral("variable-retyped");
    case DifferenceKind::Resized:
        return QStringLiteral("variable-resized");
    case DifferenceKind::Relabelled:
        return QStringLiteral("variable-relabelled");
    case DifferenceKind::ValueAdded:
        return QStringLiteral("value-added");
    case DifferenceKind::ValueRemoved:
        return QStringLiteral("value-removed");
    case DifferenceKind::ValueChanged:
        return QStringLiteral("value-changed");
    case DifferenceKind::MissingChanged:
        return QStringLiteral("missing-changed");
    case DifferenceKind::NotApplicableChanged:
        break;
    }
    return QStringLiteral("not-applicable-changed");
}

QVector<Difference> compareListings(const Listing& before, const Listing& after)
{
    return Comparison(before, after).run();
}
