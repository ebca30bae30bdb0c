#include "listing/ListingDiff.h"

#include "listing/Pairing.h"
#include "listing/VariableDiff.h"
#include "text/ShownText.h"

#include <model_Tessel/UtilStrings.h>

#include <QHash>
#include <QStringList>

namespace {

using Property = DifferingProperty;

class Comparison {
public:
    Comparison(const Listing& before, const Listing& after);
    QVector<Difference> run();
    QVector<VariablePair> pairs() const;

private:
    enum class Side { Before, After };

    void compareDictionaries();
    void compareRecords();
    void compareRecord(const ListedRecord& before, const ListedRecord& after);
    void compareFields();
    QVector<ComparedVariable> variablesOf(const Listing& listing, Side side) const;
    void locate(const QString& record, Side side, ComparedVariable& variable) const;
    Pairing pairVariables(
        const QVector<ComparedVariable>& before, const QVector<ComparedVariable>& after) const;
    static void pairRenamed(const QVector<ComparedVariable>& before,
        const QVector<ComparedVariable>& after, Pairing& pairing);
    void begin(const ComparedVariable& variable);
    int lastGroup() const;

    const Listing& m_before;
    const Listing& m_after;
    const DiffContext m_context;
    Pairing m_records;
    QHash<QString, int> m_beforeRecords; // index by name in small letters
    QHash<QString, int> m_afterRecords;
    DifferenceList m_differences;
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
        types.append(orNull(withoutTrailingBlanks(record.recordType)));
    return types;
}

QHash<QString, int> indexesOf(const QStringList& names)
{
    QHash<QString, int> indexes;
    for (int i = names.size() - 1; i >= 0; --i)
        indexes.insert(names.at(i), i);
    return indexes;
}

// The dictionary and its identification items, the records, those that are new, and variables of
// no record.
int groupCount(const Listing& before, const Listing& after)
{
    return before.records.size() + after.records.size() + 2;
}

Comparison::Comparison(const Listing& before, const Listing& after)
    : m_before(before)
    , m_after(after)
    , m_context(before, after)
    , m_records(before.records.size(), after.records.size())
    , m_beforeRecords(indexesOf(recordNames(before)))
    , m_afterRecords(indexesOf(recordNames(after)))
    , m_differences(groupCount(before, after))
{
    if (!m_context.haveRecords())
        return;
    m_records.pair(recordNames(before), recordNames(after));
    m_records.pairUnique(recordTypes(before), recordTypes(after)); // renamed ones
}

QVector<Difference> Comparison::run()
{
    if (m_context.haveRecords()) {
        compareDictionaries();
        compareRecords();
    }
    compareFields();
    return m_differences.all();
}

int Comparison::lastGroup() const
{
    return groupCount(m_before, m_after) - 1;
}

// ---- records

void Comparison::compareDictionaries()
{
    const auto kind = DifferenceKind::DictionaryChanged;
    const int length = m_before.recordTypeLength;
    if (length != m_after.recordTypeLength) {
        m_differences.add(kind, Property::RecordTypeLength, true, length, m_after.recordTypeLength);
    }
    if (length > 0 && m_after.recordTypeLength > 0
        && m_before.recordTypeStart != m_after.recordTypeStart) {
        m_differences.add(kind, Property::RecordTypeStart, true, m_before.recordTypeStart,
            m_after.recordTypeStart);
    }
}

void Comparison::compareRecords()
{
    for (int i = 0; i < m_before.records.size(); ++i) {
        m_differences.begin(1 + i, m_before.records.at(i).name, QString());
        if (m_records.afterOf(i) >= 0)
            compareRecord(m_before.records.at(i), m_after.records.at(m_records.afterOf(i)));
        else
            m_differences.add(DifferenceKind::RecordRemoved, true);
    }
    for (int i = 0; i < m_after.records.size(); ++i) {
        if (m_records.beforeOf(i) >= 0)
            continue;
        m_differences.begin(1 + m_before.records.size() + i, m_after.records.at(i).name, QString());
        m_differences.add(DifferenceKind::RecordAdded, false);
    }
}

void Comparison::compareRecord(const ListedRecord& before, const ListedRecord& after)
{
    const auto kind = DifferenceKind::RecordChanged;
    if (before.name.compare(after.name, Qt::CaseInsensitive) != 0)
        m_differences.add(kind, Property::Name, false, before.name, after.name);
    if (before.label != after.label)
        m_differences.add(kind, Property::Label, false, orNull(before.label), orNull(after.label));
    if (withoutTrailingBlanks(before.recordType) != withoutTrailingBlanks(after.recordType)) {
        m_differences.add(
            kind, Property::RecordType, true, orNull(before.recordType), orNull(after.recordType));
    }
    if (before.maxRecords != after.maxRecords) {
        m_differences.add(kind, Property::Maximum, after.maxRecords < before.maxRecords,
            before.maxRecords, after.maxRecords);
    }
    if (before.level > 0 && after.level > 0 && before.level != after.level) {
        m_differences.add(kind, Property::Level, true, before.level, after.level);
    }
}

// ---- variables

void Comparison::compareFields()
{
    const QVector<ComparedVariable> before = variablesOf(m_before, Side::Before);
    const QVector<ComparedVariable> after = variablesOf(m_after, Side::After);
    const Pairing pairing = pairVariables(before, after);
    for (int i = 0; i < before.size(); ++i) {
        begin(before.at(i));
        if (pairing.afterOf(i) >= 0)
            compareVariables(before.at(i), after.at(pairing.afterOf(i)), m_context, m_differences);
        else
            m_differences.add(DifferenceKind::VariableRemoved, true);
    }
    for (int i = 0; i < after.size(); ++i) {
        if (pairing.beforeOf(i) >= 0)
            continue;
        begin(after.at(i));
        m_differences.add(DifferenceKind::VariableAdded, false);
    }
}

void Comparison::begin(const ComparedVariable& variable)
{
    m_differences.begin(variable.group, variable.first().record, variable.name);
}

void Comparison::locate(const QString& record, Side side, ComparedVariable& variable) const
{
    const bool isBefore = side == Side::Before;
    const QString name = record.toCaseFolded();
    const int index =
        record.isNull() ? -1 : (isBefore ? m_beforeRecords : m_afterRecords).value(name, -1);
    if (index < 0) {
        const bool isStranger = !isBefore && m_context.hadRecords && !m_context.hasRecords;
        variable.group = isStranger ? lastGroup() : 0;
        return;
    }
    const int known = isBefore ? index : m_records.beforeOf(index);
    variable.group = known >= 0 ? 1 + known : 1 + m_before.records.size() + index;
    variable.recordKey = QString::number(variable.group);
}

// The occurrences of an item are compared as one where both dictionaries have them.
QVector<ComparedVariable> Comparison::variablesOf(const Listing& listing, Side side) const
{
    QVector<ComparedVariable> variables;
    QHash<QString, int> latest;
    for (const ListedField& field : listing.fields) {
        ComparedVariable variable;
        variable.occurrences.append(&field);
        variable.name = m_context.haveRecords() ? field.item : field.name;
        locate(field.record, side, variable);
        if (m_context.haveRecords()) {
            const QString key = variable.recordKey + QLatin1Char('.') + variable.name;
            const int known = latest.value(key, -1);
            if (field.occurrence > 1 && known >= 0) {
                variables[known].occurrences.append(&field);
                continue;
            }
            latest.insert(key, variables.size());
        }
        variables.append(variable);
    }
    return variables;
}

QStringList namesOf(const QVector<ComparedVariable>& variables, Qt::CaseSensitivity sensitivity)
{
    QStringList names;
    names.reserve(variables.size());
    for (const ComparedVariable& variable : variables)
        names.append(
            sensitivity == Qt::CaseSensitive ? variable.name : variable.name.toCaseFolded());
    return names;
}

QStringList placesOf(const QVector<ComparedVariable>& variables, Qt::CaseSensitivity sensitivity)
{
    QStringList places = namesOf(variables, sensitivity);
    for (int i = 0; i < variables.size(); ++i)
        places[i].prepend(variables.at(i).recordKey + QLatin1Char('.'));
    return places;
}

Pairing Comparison::pairVariables(
    const QVector<ComparedVariable>& before, const QVector<ComparedVariable>& after) const
{
    Pairing pairing(before.size(), after.size());
    if (m_context.hadRecords == m_context.hasRecords) {
        for (const auto sensitivity : { Qt::CaseSensitive, Qt::CaseInsensitive })
            pairing.pair(placesOf(before, sensitivity), placesOf(after, sensitivity));
    }
    for (const auto sensitivity : { Qt::CaseSensitive, Qt::CaseInsensitive })
        pairing.pairUnique(namesOf(before, sensitivity), namesOf(after, sensitivity));
    if (m_context.hadRecords == m_context.hasRecords)
        pairRenamed(before, after, pairing);
    return pairing;
}

// What would not change but by its name; null: what has no label could be anything.
QString contentOf(const ComparedVariable& variable)
{
    const ListedField& field = variable.first();
    if (field.label.isEmpty())
        return QString();
    return variable.recordKey
        + (field.isText() ? QLatin1String(".text.") : QLatin1String(".number.")) + field.label;
}

QStringList columnsOf(const QVector<ComparedVariable>& variables)
{
    QStringList columns;
    columns.reserve(variables.size());
    for (const ComparedVariable& variable : variables) {
        const ListedField& field = variable.first();
        const QString content = contentOf(variable);
        columns.append(content.isNull() || !field.hasColumns()
                ? QString()
                : QStringLiteral("%1.%2.").arg(field.start).arg(field.length) + content);
    }
    return columns;
}

// What stands in the same columns under the same label is the same, and what follows the same
// variable under the same label.
void Comparison::pairRenamed(const QVector<ComparedVariable>& before,
    const QVector<ComparedVariable>& after, Pairing& pairing)
{
    pairing.pairUnique(columnsOf(before), columnsOf(after));
    for (int i = 0; i < before.size(); ++i) {
        const int previous = i > 0 ? pairing.afterOf(i - 1) : -1;
        if (pairing.afterOf(i) >= 0 || (i > 0 && previous < 0))
            continue;
        const int next = previous + 1;
        if (next >= after.size() || pairing.beforeOf(next) >= 0)
            continue;
        const QString content = contentOf(before.at(i));
        if (!content.isNull() && content == contentOf(after.at(next)))
            pairing.join(i, next);
    }
}

QVector<VariablePair> Comparison::pairs() const
{
    const QVector<ComparedVariable> before = variablesOf(m_before, Side::Before);
    const QVector<ComparedVariable> after = variablesOf(m_after, Side::After);
    const Pairing pairing = pairVariables(before, after);
    QVector<QVector<VariablePair>> groups(lastGroup() + 1);
    for (int i = 0; i < before.size(); ++i) {
        const int partner = pairing.afterOf(i);
        const ListedField* other = partner < 0 ? nullptr : &after.at(partner).first();
        groups[before.at(i).group].append(VariablePair { &before.at(i).first(), other });
    }
    for (int i = 0; i < after.size(); ++i) {
        if (pairing.beforeOf(i) < 0)
            groups[after.at(i).group].append(VariablePair { nullptr, &after.at(i).first() });
    }
    QVector<VariablePair> pairs;
    for (const QVector<VariablePair>& group : qAsConst(groups))
        pairs += group;
    return pairs;
}

} // namespace

QVector<Difference> compareListings(const Listing& before, const Listing& after)
{
    return Comparison(before, after).run();
}

QVector<VariablePair> pairVariables(const Listing& before, const Listing& after)
{
    return Comparison(before, after).pairs();
}
