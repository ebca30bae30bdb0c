#include "writers/BookIds.h"

#include "writers/BookFacts.h"

namespace {

QString idOf(const QString& name)
{
    QString id = name;
    for (QChar& character : id) {
        if (!character.isLetterOrNumber() || character.isSurrogate())
            character = QLatin1Char('_');
    }
    return id.isEmpty() ? QStringLiteral("_") : id;
}

QString nameOf(const Listing& listing, const BookGroup& group)
{
    return group.record < 0 ? QStringLiteral("fields") : listing.records.at(group.record).name;
}

} // namespace

BookIds::BookIds(const Book& book, PageIds& taken)
{
    const Listing& listing = book.listing();
    for (const BookGroup& group : book.groups())
        m_groups.append(taken.names.take(QLatin1String("record-") + idOf(nameOf(listing, group))));
    for (const BookGroup& group : book.groups())
        takeEntries(group.entries, listing, taken.names);
    for (const BookValueSet& valueSet : book.valueSets())
        m_numbers.append(valueSet.users.size() > 1 ? ++taken.sharedSets : 0);
}

void BookIds::takeEntries(
    const QVector<BookEntry>& entries, const Listing& listing, UniqueNames& taken)
{
    for (const BookEntry& entry : entries) {
        m_entries.insert(entry.first(), taken.take(idOf(nameOf(listing, entry))));
        takeEntries(entry.parts, listing, taken);
    }
}
