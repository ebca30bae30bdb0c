#pragma once

#include "listing/DiffContext.h"
#include "listing/DifferenceList.h"

/*! A variable with all its occurrences, or one occurrence where only one dictionary has them. */
struct ComparedVariable {
    QVector<const ListedField*> occurrences;
    QString name;
    QString recordKey; /*!< the same for the same record of both dictionaries; empty: none */
    int group = 0; /*!< differences of one group stand together */

    const ListedField& first() const
    {
        return *occurrences.constFirst();
    }
};

/*! Adds to \a differences all in which two variables differ. */
void compareVariables(const ComparedVariable& before, const ComparedVariable& after,
    const DiffContext& context, DifferenceList& differences);
