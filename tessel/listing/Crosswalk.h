#pragma once

#include "listing/Listing.h"

/*! A variable or one of its codes in one of two dictionaries; all null: there is no counterpart. */
struct CrosswalkSide {
    QString record; /*!< null: none */
    QString variable;
    QString code; /*!< null: of no code; "low:high" of a range */
    QString label; /*!< of the code, or of the variable */
};

/*! What a variable or a code of one dictionary is in another. */
struct CrosswalkRow {
    enum class Kind { Variable, Value, Range };

    Kind kind = Kind::Variable;
    CrosswalkSide before;
    CrosswalkSide after;
    QString labelAt; /*!< the code that has the label of the first side in the second dictionary,
                        where it is another; null: none or several have it */
};

/*!
 * A row for each variable that compareListings() compares, followed by one for each code that a
 * value set of it has: those of \a before in their order, then what only \a after has. A code
 * stands once for a variable, with the label of the first value set that has it. One that is not
 * a code of the other dictionary but lies in a range there stays what it is.
 */
QVector<CrosswalkRow> makeCrosswalk(const Listing& before, const Listing& after);
