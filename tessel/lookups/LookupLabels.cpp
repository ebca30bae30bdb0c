#include "lookups/LookupLabels.h"

#include "reading/ReadInput.h"
#include "reading/ReadListing.h"
#include "text/PlainNumber.h"
#include "writers/ListingNames.h"

#include <model_Tessel/Lookup.h>

#include <QHash>

#include <algorithm>

namespace {

struct Range {
    double low;
    double high;
    int index; // among the codes
    int farthest; // of those up to this one the range that ends last
};

/* The codes of a value set, to be found by keys. */
class CodeIndex {
public:
    CodeIndex(const QVector<ListedCode>& codes, bool isNumeric);

    /*! Index of the code or range that \a key falls to; -1: none. */
    int find(const QString& key) const;

private:
    QString comparable(const QString& code) const;

    bool m_isNumeric;
    QHash<QString, int> m_codes;
    QVector<Range> m_ranges; // by their low bounds
};

CodeIndex::CodeIndex(const QVector<ListedCode>& codes, bool isNumeric)
    : m_isNumeric(isNumeric)
{
    for (int i = 0; i < codes.size(); ++i) {
        const ListedCode& entry = codes.at(i);
        const QString code = comparable(entry.code);
        if (entry.isRange())
            m_ranges.append({ code.toDouble(), entry.highCode.trimmed().toDouble(), i, 0 });
        else if (!m_codes.contains(code))
            m_codes.insert(code, i);
    }
    std::stable_sort(m_ranges.begin(), m_ranges.end(),
        [](const Range& a, const Range& b) { return a.low < b.low; });
    for (int i = 1; i < m_ranges.size(); ++i) {
        const int before = m_ranges.at(i - 1).farthest;
        m_ranges[i].farthest = m_ranges.at(before).high > m_ranges.at(i).high ? before : i;
    }
}

int CodeIndex::find(const QString& key) const
{
    const QString code = comparable(key);
    const auto found = m_codes.constFind(code);
    if (found != m_codes.constEnd())
        return *found;
    bool isNumber = false;
    const double number = code.toDouble(&isNumber);
    if (!isNumber)
        return -1;
    const auto behind = std::upper_bound(m_ranges.cbegin(), m_ranges.cend(), number,
        [](double value, const Range& range) { return value < range.low; });
    if (behind == m_ranges.cbegin())
        return -1;
    const Range& nearest = *(behind - 1);
    const Range& range = number <= nearest.high ? nearest : m_ranges.at(nearest.farthest);
    return number <= range.high ? range.index : -1;
}

QString CodeIndex::comparable(const QString& code) const
{
    return m_isNumeric ? numberKey(code) : code.trimmed();
}

// A repeated item answers to its own name as well as to those of its occurrences.
const ListedField* findField(const Listing& listing, const QString& name)
{
    for (const ListedField& field : listing.fields) {
        if (field.name.compare(name, Qt::CaseInsensitive) == 0
            || field.item.compare(name, Qt::CaseInsensitive) == 0)
            return &field;
    }
    return nullptr;
}

} // namespace

bool readVariable(const LabelSource& source, ListedField& variable)
{
    InputOptions options;
    options.dictionary.encoding = source.encoding;
    options.encodingOption = QStringLiteral("--against-encoding");
    Listing listing;
    if (!readListing(source.file, options, listing))
        return false;
    const ListedField* const field = findField(listing, source.variable);
    if (!field) {
        return failInput(source.file, 0,
            QStringLiteral("has no variable '%1'; 'tessel fields' lists those it has")
                .arg(source.variable));
    }
    if (field->valueLabelCount() == 0) {
        return failInput(source.file, 0,
            QStringLiteral("variable %1 has no value labels to compare with").arg(field->name));
    }
    variable = *field;
    return true;
}

LabelComparison compareLabels(
    const std::map<QString, TOxLookupValue*>& values, const ListedField& variable)
{
    LabelComparison result;
    result.variable = variable.name;
    const QVector<ListedCode>& codes = variable.valueSets.constFirst().codes;
    const CodeIndex index(codes, !variable.isText());
    QVector<bool> hasKey(codes.size(), false);
    for (const auto& [key, value] : values) {
        if (key.isEmpty())
            continue;
        const int found = index.find(key);
        if (found < 0) {
            result.keysWithoutLabel.append({ key, value->value, QString() });
            continue;
        }
        hasKey[found] = true;
        const ListedCode& entry = codes.at(found);
        if (!entry.isRange() && entry.label.trimmed() != value->value.trimmed())
            result.differentTexts.append({ key, value->value, entry.label });
    }
    for (int i = 0; i < codes.size(); ++i) {
        if (!hasKey.at(i))
            result.labelsWithoutKey.append(
                { codes.at(i).text(), QString(), shownLabel(codes.at(i)) });
    }
    return result;
}
