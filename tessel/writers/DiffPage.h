#pragma once

#include "text/ByteSink.h"
#include "writers/DiffTexts.h"

/*!
 * Hands a page to \a sink that tells the differences by record and variable, those that break data
 * first. It needs no other file, runs no script and is well-formed XML, and no text of a dictionary
 * is markup in it.
 */
void writeDiffPage(const ComparedFiles& files, const ByteSink& sink);
