#pragma once

#include "listing/TreeFacts.h"

#include <model_Tessel/DictionaryBuilder.h>

#include <QString>
#include <QVector>

struct InputOptions;

/*!
 * Builds the tree of entities and variables of the file \a path, whatever kind it is. Null, and
 * told on standard error, when it cannot be read.
 * \param lookups files that hold the codes of variables, under the names of those
 * \param facts filled when the file is read as it was written
 * \param isPartial set when something of the file cannot be read
 */
DictionaryPointer readTree(const QString& path, const InputOptions& options,
    const QVector<LookupDictionary>& lookups, TreeFacts& facts, bool& isPartial);
