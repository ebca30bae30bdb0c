#include "listing/Crosswalk.h"

#include "listing/CodeKeys.h"
#include "listing/ListingDiff.h"
#include "listing/Pairing.h"

namespace {

using Kind = CrosswalkRow::Kind;

// The codes of a variable, each once.
struct Codes {
    QVector<ListedCode> entries;
    QStringList keys;
};

// Of value sets that are compared: with files of rows the first one.
Codes codesOf(const ListedField& field, bool firstSetOnly, KeyOfCode keyOf)
{
    Codes codes;
    QSet<QString> known;
    const int count = firstSetOnly ? qMin(1, field.valueSets.size()) : field.valueSets.size();
    for (int i = 0; i < count; ++i) {
        const QVector<ListedCode>& entries = field.valueSets.at(i).codes;
        const QStringList keys = rangeKeys(entries, keyOf);
        for (int j = 0; j < entries.size(); ++j) {
            if (known.contains(keys.at(j)))
                continue;
            known.insert(keys.at(j));
            codes.keys.append(keys.at(j));
            codes.entries.append(entries.at(j));
        }
    }
    return codes;
}

class VariableCrosswalk {
public:
    VariableCrosswalk(const VariablePair& pair, bool haveRecords, QVector<CrosswalkRow>& rows);

    void addAll();

private:
    CrosswalkSide sideOf(const ListedField* field) const;
    void findLabels(const Codes& after);
    void addCode(const ListedCode* before, const ListedCode* after);
    static void setCode(CrosswalkSide& side, const ListedCode* entry);

    const ListedField m_none; // without codes
    const ListedField& m_before;
    const ListedField& m_after;
    const bool m_haveRecords;
    const KeyOfCode m_keyOf;
    QHash<QString, QString> m_codesByLabel; // of m_after; null: several
    CrosswalkRow m_variable;
    QVector<CrosswalkRow>& m_rows;
};

VariableCrosswalk::VariableCrosswalk(
    const VariablePair& pair, bool haveRecords, QVector<CrosswalkRow>& rows)
    : m_before(pair.before ? *pair.before : m_none)
    , m_after(pair.after ? *pair.after : m_none)
    , m_haveRecords(haveRecords)
    , m_keyOf(keyFor(pair.before ? m_before : m_after, pair.after ? m_after : m_before))
    , m_rows(rows)
{
    m_variable.before = sideOf(pair.before);
    m_variable.after = sideOf(pair.after);
}

CrosswalkSide VariableCrosswalk::sideOf(const ListedField* field) const
{
    if (!field)
        return {};
    return { field->record, m_haveRecords ? field->item : field->name, QString(), field->label };
}

void VariableCrosswalk::setCode(CrosswalkSide& side, const ListedCode* entry)
{
    if (!entry) {
        side = CrosswalkSide();
        return;
    }
    side.code = entry->text();
    side.label = entry->label;
}

void VariableCrosswalk::addCode(const ListedCode* before, const ListedCode* after)
{
    CrosswalkRow row = m_variable;
    row.kind = (before ? before : after)->isRange() ? Kind::Range : Kind::Value;
    setCode(row.before, before);
    setCode(row.after, after);
    const QString labelAt = before ? m_codesByLabel.value(before->label) : QString();
    if (labelAt != row.after.code)
        row.labelAt = labelAt;
    m_rows.append(row);
}

// A label that went to another code says that the codes changed their meaning.
void VariableCrosswalk::findLabels(const Codes& after)
{
    for (const ListedCode& entry : after.entries) {
        const bool isKnown = m_codesByLabel.contains(entry.label);
        if (!entry.label.isEmpty())
            m_codesByLabel.insert(entry.label, isKnown ? QString() : entry.text());
    }
}

void VariableCrosswalk::addAll()
{
    m_rows.append(m_variable);
    const Codes before = codesOf(m_before, !m_haveRecords, m_keyOf);
    const Codes after = codesOf(m_after, !m_haveRecords, m_keyOf);
    findLabels(after);
    const CodeCover beforeCover(m_before.valueSets, m_keyOf);
    const CodeCover afterCover(m_after.valueSets, m_keyOf);
    Pairing pairing(before.entries.size(), after.entries.size());
    pairing.pair(before.keys, after.keys);
    const auto unlabelled = [](ListedCode entry) {
        entry.label = QString();
        return entry;
    };
    for (int i = 0; i < before.entries.size(); ++i) {
        const ListedCode& entry = before.entries.at(i);
        const ListedCode covered = unlabelled(entry);
        const int partner = pairing.afterOf(i);
        if (partner >= 0)
            addCode(&entry, &after.entries.at(partner));
        else
            addCode(&entry, afterCover.contains(entry) ? &covered : nullptr);
    }
    for (int i = 0; i < after.entries.size(); ++i) {
        const ListedCode& entry = after.entries.at(i);
        const ListedCode covered = unlabelled(entry);
        if (pairing.beforeOf(i) < 0)
            addCode(beforeCover.contains(entry) ? &covered : nullptr, &entry);
    }
}

} // namespace

QVector<CrosswalkRow> makeCrosswalk(const Listing& before, const Listing& after)
{
    QVector<CrosswalkRow> rows;
    const bool haveRecords = before.hasRecords() && after.hasRecords();
    const QVector<VariablePair> pairs = pairVariables(before, after);
    for (const VariablePair& pair : pairs)
        VariableCrosswalk(pair, haveRecords, rows).addAll();
    return rows;
}
