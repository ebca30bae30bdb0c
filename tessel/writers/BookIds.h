#pragma once

#include "writers/Book.h"
#include "writers/ExportText.h"

/*! The ids that a page has so far. */
struct PageIds {
    UniqueNames names;
    int sharedSets = 0;
};

/*!
 * Where the parts of a book stand in its page. Records and variables are found by their names, so
 * that links into a page survive another codebook. Ids are letters, digits, "_" and "-", which need
 * no quotes.
 */
class BookIds {
public:
    /*! \param taken those of the page, which these join */
    BookIds(const Book& book, PageIds& taken);

    QString ofGroup(int index) const
    {
        return m_groups.at(index);
    }

    /*! Of the entry whose first field is \a field. */
    QString ofEntry(int field) const
    {
        return m_entries.value(field);
    }

    /*! The number in the page of a value set that several entries have; 0: one has it. */
    int numberOf(int valueSet) const
    {
        return m_numbers.at(valueSet);
    }

private:
    void takeEntries(const QVector<BookEntry>& entries, const Listing& listing, UniqueNames& taken);

    QStringList m_groups;
    QHash<int, QString> m_entries;
    QVector<int> m_numbers;
};
