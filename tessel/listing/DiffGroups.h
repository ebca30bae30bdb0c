#pragma once

#include "listing/Difference.h"

/*! What is told as one: a difference, or several values that were added or removed alike. */
using DifferenceRun = QVector<const Difference*>;

/*! What differs in a variable. */
struct VariableDifferences {
    QString variable; /*!< null: in the record or the dictionary itself */
    QVector<DifferenceRun> runs;

    /*! True when they are of values of several value sets. */
    bool haveSeveralSets() const;
};

/*! What differs in a record. */
struct RecordDifferences {
    QString record; /*!< null: in no record */
    QVector<VariableDifferences> variables;
};

/*!
 * The differences that break data, or the others, by record and variable in the order in which
 * these come first. They are those of \a differences, which have to stay.
 */
QVector<RecordDifferences> groupDifferences(const QVector<Difference>& differences, bool breaking);

/*! How many differences break data. */
int countBreaking(const QVector<Difference>& differences);

/*!
 * The codes of a run, those in a row from first to last: "1 to 5", "7". A range that is a value is
 * "0:95".
 */
QStringList codeSpans(const DifferenceRun& run);
