#pragma once

#include "listing/DataFigures.h"

#include <QByteArray>
#include <QHash>
#include <QStringList>
#include <QVector>

#include <memory>

/*! One variable of a codebook: an item with all of its occurrences. */
struct BookEntry {
    QVector<int> fields; /*!< indexes in the listing; of an item that is not repeated one */
    QVector<BookEntry> parts; /*!< its subitems */
    QVector<int>
        valueSets; /*!< indexes in the book; -1 for a set that tells no more than the range */

    int first() const
    {
        return fields.constFirst();
    }
};

/*! Variables that stand together. */
struct BookGroup {
    int record = -1; /*!< index in the listing; -1: identification items, or a file without records
                      */
    QVector<BookEntry> entries;
};

/*! Codes with their labels, which several variables may share. */
struct BookValueSet {
    int field = 0; /*!< the first that has it */
    int index = 0; /*!< among its value sets */
    QVector<int> users; /*!< first fields of the entries that have it */
};

/*! What a codebook tells of a dictionary: each repeated item and each value set once. */
class Book {
public:
    /*! \param languages the same dictionary in each of its languages; one listing at least */
    explicit Book(const QVector<Listing>& languages);

    /*! The dictionary in its first language, which has all that is no text. */
    const Listing& listing() const
    {
        return m_languages.constFirst();
    }

    /*! The dictionary in each of its languages. */
    const QVector<Listing>& languages() const
    {
        return m_languages;
    }

    const QVector<BookGroup>& groups() const
    {
        return m_groups;
    }

    const QVector<BookValueSet>& valueSets() const
    {
        return m_valueSets;
    }

    /*! BCP 47 tags of the languages; empty when there is only one. */
    const QStringList& tags() const
    {
        return m_tags;
    }

    /*! The figures of its data; null: none. */
    const DataFigures* figures() const
    {
        return m_figures.get();
    }

    /*! Gives the book the figures of its data. */
    void setFigures(const std::shared_ptr<const DataFigures>& figures)
    {
        m_figures = figures;
    }

    /*! A text in each language: what \a get makes of the listings. */
    template <typename Get> QStringList texts(Get get) const
    {
        QStringList texts;
        for (const Listing& listing : m_languages)
            texts.append(get(listing));
        return texts;
    }

private:
    QVector<BookEntry> entriesOf(const QVector<int>& fields);
    QVector<int> valueSetsOf(int field);
    int placeOf(int field, int index);
    QByteArray contentOf(int field, int index) const;

    QVector<Listing> m_languages;
    std::shared_ptr<const DataFigures> m_figures;
    QStringList m_tags;
    QVector<BookGroup> m_groups;
    QVector<BookValueSet> m_valueSets;
    QHash<QByteArray, int> m_places; // of value sets, by their content
};
