#pragma once

#include "listing/Listing.h"

#include <QString>
#include <QVector>

enum class DifferenceKind {
    DictionaryChanged,
    RecordAdded,
    RecordRemoved,
    RecordChanged,
    VariableAdded,
    VariableRemoved,
    Moved,
    Retyped,
    Resized,
    Relabelled,
    ValueAdded,
    ValueRemoved,
    ValueChanged,
    MissingChanged,
    NotApplicableChanged
};

/*! One difference between two dictionaries, and what it does to data that fits the first. */
struct Difference {
    DifferenceKind kind = DifferenceKind::VariableAdded;
    bool breaks = false; /*!< data that fits the first dictionary may not fit the second */
    QString record; /*!< as the first names it, of additions the second; null: no record */
    QString variable; /*!< null: of the record, or of the dictionary */
    QString valueSet; /*!< that a value stands in; null: it has no name */
    QString code; /*!< of a value; of a range: its low bound */
    QString highCode; /*!< null: no range */
    QString property; /*!< what of it changed, for example "length"; null: all of it */
    QString before; /*!< null: none */
    QString after; /*!< null: none */
};

/*! Name of \a kind for programs, for example "variable-added". */
QString differenceName(DifferenceKind kind);

/*!
 * All that differs from \a before to \a after: by record and position in \a before, what only
 * \a after has at the end of its record. Takes time in proportion to the sizes.
 */
QVector<Difference> compareListings(const Listing& before, const Listing& after);
