#include "writers/Book.h"

#include "writers/ExportText.h"
#include "writers/LanguageTag.h"

#include <QDataStream>

namespace {

bool continues(const ListedField& field, const ListedField& before)
{
    return field.occurrence > 1 && field.occurrence == before.occurrence + 1
        && field.item == before.item && field.record == before.record;
}

// A single range without a label is the range of the field.
bool tellsMore(const ListedValueSet& valueSet)
{
    const QVector<ListedCode>& codes = valueSet.codes;
    const bool isRangeAlone = codes.size() == 1 && codes.constFirst().isRange()
        && codes.constFirst().label.trimmed().isEmpty() && valueSet.details.isEmpty();
    return !(codes.isEmpty() || isRangeAlone) || !valueSet.note.isNull();
}

void addContent(QDataStream& stream, const ListedValueSet& valueSet)
{
    stream << valueSet.note;
    for (int i = 0; i < valueSet.codes.size(); ++i) {
        const ListedCode& code = valueSet.codes.at(i);
        const ListedDetail detail = valueSet.details.value(i);
        stream << code.code << code.highCode << code.label << int(code.special) << detail.note
               << detail.image;
    }
}

// Subitems stand under the item whose columns they describe.
QVector<BookEntry> nested(const QVector<BookEntry>& entries, const Listing& listing)
{
    QVector<BookEntry> items;
    QHash<QString, int> places;
    for (const BookEntry& entry : entries) {
        const ListedField& field = listing.fields.at(entry.first());
        const int place = field.parent.isNull() ? -1 : places.value(field.parent, -1);
        if (place >= 0) {
            items[place].parts.append(entry);
            continue;
        }
        places.insert(field.item, items.size());
        items.append(entry);
    }
    return items;
}

} // namespace

Book::Book(const QVector<Listing>& languages)
    : m_languages(languages)
{
    const Listing& first = listing();
    if (languages.size() > 1)
        m_tags = languageTags(first.languages, first.languageLabels);
    const QVector<FieldGroup> groups = groupsOf(first);
    for (const FieldGroup& group : groups) {
        const int record = group.record ? int(group.record - first.records.constData()) : -1;
        m_groups.append({ record, nested(entriesOf(group.fields), first) });
    }
}

QVector<BookEntry> Book::entriesOf(const QVector<int>& fields)
{
    QVector<BookEntry> entries;
    for (const int index : fields) {
        const ListedField& field = listing().fields.at(index);
        if (!entries.isEmpty()
            && continues(field, listing().fields.at(entries.constLast().fields.constLast()))) {
            entries.last().fields.append(index);
            continue;
        }
        entries.append({ { index }, {}, valueSetsOf(index) });
    }
    return entries;
}

QVector<int> Book::valueSetsOf(int field)
{
    QVector<int> places;
    const QVector<ListedValueSet>& valueSets = listing().fields.at(field).valueSets;
    for (int i = 0; i < valueSets.size(); ++i) {
        places.append(tellsMore(valueSets.at(i)) ? placeOf(field, i) : -1);
    }
    return places;
}

int Book::placeOf(int field, int index)
{
    const QByteArray content = contentOf(field, index);
    const int place = m_places.value(content, m_valueSets.size());
    if (place == m_valueSets.size()) {
        m_places.insert(content, place);
        m_valueSets.append({ field, index, {} });
    }
    QVector<int>& users = m_valueSets[place].users;
    if (users.isEmpty() || users.constLast() != field)
        users.append(field);
    return place;
}

QByteArray Book::contentOf(int field, int index) const
{
    QByteArray content;
    QDataStream stream(&content, QIODevice::WriteOnly);
    for (const Listing& listing : m_languages)
        addContent(stream, listing.fields.at(field).valueSets.at(index));
    return content;
}
