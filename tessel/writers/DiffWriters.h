#pragma once

#include "listing/Difference.h"
#include "text/ByteSink.h"

/*! Two listings and what compareListings() found. */
struct ComparedFiles {
    const Listing& before;
    const Listing& after;
    const QVector<Difference>& differences;
};

/*! For programs, for example "variable-added". */
QString nameOf(DifferenceKind kind);

/*! For programs, for example "recordType"; null for all of a thing. */
QString nameOf(DifferingProperty property);

/*! \a value in words or digits; null: none. */
QString textOf(const PropertyValue& value);

/*! What differs where, as one line. */
QString textOf(const Difference& difference);

/*! Hands a line for each difference, and one that counts them, to \a sink. */
void writeDiffText(const ComparedFiles& files, const ByteSink& sink);

/*! Hands the differences as JSON to \a sink piece by piece. */
void writeDiffJson(const ComparedFiles& files, const ByteSink& sink);
