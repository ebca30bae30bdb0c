#include "writers/ExportText.h"

#include <QFileInfo>

#include <algorithm>

QVector<FieldGroup> groupsOf(const Listing& listing)
{
    QVector<FieldGroup> groups(1);
    QHash<QString, int> indexes;
    for (const ListedRecord& record : listing.records) {
        if (!indexes.contains(record.name))
            indexes.insert(record.name, groups.size());
        FieldGroup group;
        group.record = &record;
        groups.append(group);
    }
    for (int i = 0; i < listing.fields.size(); ++i)
        groups[indexes.value(listing.fields.at(i).record, 0)].fields.append(i);
    if (groups.constFirst().fields.isEmpty() && groups.size() > 1)
        groups.removeFirst();
    return groups;
}

KeyFields::KeyFields(const Listing& listing)
{
    QHash<QString, int> levels;
    for (const ListedRecord& record : listing.records)
        levels.insert(record.name, record.level);
    // The items of a level stand before the records of the level.
    int level = 0;
    for (int i = listing.fields.size() - 1; i >= 0; --i) {
        const ListedField& field = listing.fields.at(i);
        if (field.isIdentification)
            m_keys.append({ i, level });
        else
            level = levels.value(field.record);
    }
    std::reverse(m_keys.begin(), m_keys.end());
}

QVector<int> KeyFields::of(const ListedRecord& record) const
{
    QVector<int> fields;
    for (const Key& key : m_keys) {
        if (key.level <= record.level)
            fields.append(key.field);
    }
    return fields;
}

QString titleOf(const Listing& listing)
{
    if (!listing.label.trimmed().isEmpty())
        return listing.label;
    return listing.name.isEmpty() ? QFileInfo(listing.file).fileName() : listing.name;
}
