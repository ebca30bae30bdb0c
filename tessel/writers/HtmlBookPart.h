#pragma once

#include "writers/Book.h"
#include "writers/BookIds.h"
#include "writers/HtmlFigures.h"
#include "writers/HtmlTexts.h"

#include <QString>

#include <optional>

/*!
 * Writes what a page tells of one dictionary. HTML may leave out the ends of rows, cells,
 * paragraphs and list items, and the quotes of plain attributes: long pages are a third smaller so.
 */
class HtmlBookPart {
public:
    /*! \param page takes the text of each function */
    HtmlBookPart(const Book& book, PageIds& ids, QString& page);

    /*! A list item for each record, that links to it. */
    void writeContents();
    /*! Title, notes and records. */
    void writeText(bool isOnly);
    /*! The value sets that several variables share. */
    void writeValueSets();
    /*! The cross tables of its data. */
    void writeCrosses();
    bool hasCrosses() const;
    /*! A list item on the file. */
    void writeSource();

private:
    void add(const char* html);
    bool isShared(int valueSet) const;
    void writeNote(const QString& text);
    void writeTitle();
    void writeFacts(const BookEntry& entry);
    void writeGroupTitle(const BookGroup& group);
    void writeGroup(int index);
    void writeTable(const BookGroup& group);
    void writeRow(const BookEntry& entry, bool isPart);
    void writeEntries(const QVector<BookEntry>& entries);
    void writeEntry(const BookEntry& entry);
    void writeOccurrences(const BookEntry& entry);
    void writeEntryValues(const BookEntry& entry);
    void writeSetTitle(int field, int index);
    void writeCodes(const BookValueSet& valueSet);
    void writeCode(const BookValueSet& valueSet, int index);
    QStringList labelsOf(int field) const;
    QString valuesText(const BookEntry& entry) const;
    QString linkToValues(int valueSet) const;
    bool hasSection(const BookEntry& entry) const;

    const Book& m_book;
    const Listing& m_listing;
    BookIds m_ids;
    HtmlTexts m_texts;
    std::optional<HtmlFigures> m_figures; // none without data
    QString& m_page;
};
