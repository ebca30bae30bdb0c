#pragma once

#include "writers/Book.h"

#include <QString>
#include <QStringList>

/*! What a codebook tells in words of the files, records and variables, in pieces of a sentence. */

/*! Of a file: its name, that of the dictionary, version, encoding and record type. */
QStringList sourceFacts(const Listing& listing);

/*! Of a record. */
QStringList recordFacts(const Listing& listing, const ListedRecord& record);

/*! Of a variable, beside what the table of its record tells. */
QStringList entryFacts(const Listing& listing, const BookEntry& entry);

/*! The columns of a variable, of all its occurrences; empty when the file has none. */
QString columnsText(const Listing& listing, const BookEntry& entry);

/*! The range of a field that has one, with the value set that it is of where there are several. */
QString rangeText(const ListedField& field);

/*! The type, with format, measure, decimals, filling and the number of occurrences. */
QString typeText(const Listing& listing, const BookEntry& entry);

/*! The codes of missing and not applicable, as the table of the record has them. */
QStringList missingTexts(const ListedField& field);

/*! A code or a range as people read it. */
QString codeText(const ListedCode& code);

/*! The name of a variable: of a repeated item that of the item. */
QString nameOf(const Listing& listing, const BookEntry& entry);

/*! A note, with what a line of its own says of whom the variable is about. */
struct BookNote {
    QString universe; /*!< behind "Universe:"; empty: not said */
    QString text; /*!< the other lines, without blanks around them */
};

/*! What the note \a text says. */
BookNote noteOf(const QString& text);
