#pragma once

#include "lookups/LookupFile.h"
#include "lookups/LookupLabels.h"
#include "lookups/ValueCounts.h"

#include <model_Tessel/Lookup.h>

#include <QString>
#include <QVector>

#include <optional>

/*! "no-separator", "wrong-key-length" or "duplicate-key". */
QString lookupProblemName(TOxLookupProblem::Kind kind);

/*! What is wanted of a check. */
struct LookupTask {
    LookupFile file;
    int separator = 0; /*!< the library's code for it */
    bool isGuessed = false; /*!< the separator */
    bool countsValues = false;
    const ListedField* variable = nullptr; /*!< to compare the keys with; null: none */
};

/*! What a check of a lookup file came to. */
struct LookupOutcome {
    QString path;
    QString encoding;
    int separator = 0;
    bool isGuessed = false;
    int lines = 0;
    int keys = 0; /*!< different ones */
    int duplicateKeys = 0;
    int wrongKeyLengths = 0;
    int withoutSeparator = 0; /*!< lines */
    int repeatedBySeparator = 0; /*!< duplicate keys that are lines without a separator */
    QVector<TOxLookupProblem> problems; /*!< in order of the lines */
    std::optional<QVector<ValueCount>> frequencies; /*!< most frequent first */
    std::optional<LabelComparison> comparison;

    bool isConsistent() const
    {
        return problems.isEmpty() && (!comparison || comparison->isEqual());
    }
};

/*!
 * Imports a lookup file into \a lookup and checks it, with a progress bar. False, and told, when it
 * cannot be read or no line of it has the separator.
 */
bool checkLookup(const LookupTask& task, TOxLookup& lookup, LookupOutcome& outcome);
