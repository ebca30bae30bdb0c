#pragma once

#include "lookups/LookupFile.h"
#include "lookups/LookupLabels.h"

#include <QString>
#include <QVector>

#include <optional>

/*! One problem of a lookup file. */
struct LookupMessage {
    enum class Kind { NoSeparator, WrongKeyLength, DuplicateKey };
    int line; /*!< from 1 */
    Kind kind;
    QString text;
};

/*! "no-separator", "wrong-key-length" or "duplicate-key". */
QString kindName(LookupMessage::Kind kind);

/*! A value of a lookup and how many keys carry it. */
struct ValueCount {
    QString value;
    int keys;
};

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
    QVector<LookupMessage> messages; /*!< in order of the lines */
    std::optional<QVector<ValueCount>> frequencies; /*!< most frequent first */
    std::optional<LabelComparison> comparison;

    bool isConsistent() const
    {
        return messages.isEmpty() && (!comparison || comparison->isEqual());
    }
};

/*!
 * Imports and checks a lookup file, with a progress bar. False, and told, when it cannot be read or
 * no line of it has the separator.
 */
bool checkLookup(const LookupTask& task, LookupOutcome& outcome);
