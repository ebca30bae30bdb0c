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

QString xmlText(const QString& text)
{
    QString result = text;
    for (int i = 0; i < result.size(); ++i) {
        const QChar character = result.at(i);
        const ushort code = character.unicode();
        const bool isPair = character.isHighSurrogate() && i + 1 < result.size()
            && result.at(i + 1).isLowSurrogate();
        if (isPair)
            ++i;
        else if (code < 0x20 && code != '\t' && code != '\n' && code != '\r')
            result[i] = QChar(ushort(0x2400 + code)); // its picture among the control pictures
        else if (character.isSurrogate() || code >= 0xFFFE || (code >= 0x7F && code < 0xA0))
            result[i] = QChar::ReplacementCharacter;
    }
    return result;
}

QString UniqueNames::take(const QString& wanted)
{
    const QString key = wanted.toCaseFolded();
    QString name = wanted;
    int number = m_lastNumbers.value(key, 1);
    while (m_lastNumbers.contains(name.toCaseFolded()))
        name = wanted + QLatin1Char('_') + QString::number(++number);
    m_lastNumbers[key] = number;
    m_lastNumbers.insert(name.toCaseFolded(), 1);
    return name;
}
