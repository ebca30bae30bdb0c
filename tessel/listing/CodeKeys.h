#pragma once

#include "listing/Listing.h"

#include <QPair>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

/*! The same text for what two dictionaries mean the same code by. */
using KeyOfCode = QString (*)(const QString&);

/*! How the codes of two variables compare: as numbers where both are. */
KeyOfCode keyFor(const ListedField& before, const ListedField& after);

/*! The keys of \a codes; a range of one code is that code. */
QStringList rangeKeys(const QVector<ListedCode>& codes, KeyOfCode keyOf);

/*! True for the code of blank columns. */
bool isBlank(const QString& code);

/*! The values that some value sets have a label for, in ordinary or special codes. */
class CodeCover {
public:
    CodeCover(const QVector<ListedValueSet>& valueSets, KeyOfCode keyOf);

    /*! True when one code or range has all of \a entry. */
    bool contains(const ListedCode& entry) const;

private:
    using Range = QPair<double, double>;

    bool readRange(const ListedCode& entry, Range& range) const;
    void add(const ListedCode& entry);
    void mergeRanges();

    KeyOfCode m_keyOf;
    QSet<QString> m_keys;
    QVector<Range> m_ranges; // apart from each other, in order
};

/*! True when a number's codes, as they stand in the data, are not among those of \a text. */
bool losesCodesAsText(const ListedField& number, const ListedField& text);
