#pragma once

#include "listing/TreeFacts.h"
#include "text/ByteSink.h"

#include <QString>

class Dictionary;
class TOxEntity;

/*! How a tree of entities and variables is written. */
struct TreeFormat {
    bool asJson = false;
    bool withValues = false; /*!< the value labels, and in JSON the ranges, too */
    int width = 80; /*!< of text, in columns */
};

/*!
 * Hands the text of \a top, which is \a dictionary's root or an entity below it, with all that it
 * holds, to \a sink piece by piece.
 */
void writeTree(const QString& file, const Dictionary& dictionary, const TOxEntity& top,
    const TreeFacts& facts, TreeFormat format, const ByteSink& sink);
