#pragma once

#include "listing/DiffGroups.h"
#include "listing/Listing.h"

/*! Two listings and what compareListings() found. */
struct ComparedFiles {
    const Listing& before;
    const Listing& after;
    const QVector<Difference>& differences;
    bool onlyBreaking = false; /*!< no others are to be told */
};

/*! For programs, for example "variable-added". */
QString nameOf(DifferenceKind kind);

/*! For programs, for example "recordType"; null for all of a thing. */
QString nameOf(DifferingProperty property);

/*! \a value in words or digits; null: none. */
QString textOf(const PropertyValue& value);

/*! What differs where, as one line. */
QString textOf(const Difference& difference);

/*!
 * What differs, where the record and the variable are told already, as one line.
 * \param tellsSet names value sets
 */
QString textOf(const DifferenceRun& run, bool tellsSet);

/*!
 * How many differences there are, and how many of them can break data.
 * \param before \param after names of the files
 */
QString summaryOf(
    const QVector<Difference>& differences, const QString& before, const QString& after);
