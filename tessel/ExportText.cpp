#include "ExportText.h"

#include <QFileInfo>
#include <QHash>

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

QVector<int> keysOf(const Listing& listing, const ListedRecord& record)
{
    QHash<QString, int> levels;
    for (const ListedRecord& other : listing.records)
        levels.insert(other.name, other.level);
    // The items of a level stand before the records of the level.
    QVector<int> keys;
    int level = 0;
    for (int i = listing.fields.size() - 1; i >= 0; --i) {
        const ListedField& field = listing.fields.at(i);
        if (!field.isIdentification)
            level = levels.value(field.record);
        else if (level <= record.level)
            keys.prepend(i);
    }
    return keys;
}

QString titleOf(const Listing& listing)
{
    if (!listing.label.trimmed().isEmpty())
        return listing.label;
    return listing.name.isEmpty() ? QFileInfo(listing.file).fileName() : listing.name;
}

QString codeText(const ListedCode& entry)
{
    return entry.highCode.isNull() ? entry.code : entry.code + QLatin1Char(':') + entry.highCode;
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
    QString name = wanted;
    for (int number = 2; m_taken.contains(name.toCaseFolded()); ++number)
        name = wanted + QLatin1Char('_') + QString::number(number);
    m_taken.insert(name.toCaseFolded());
    return name;
}
