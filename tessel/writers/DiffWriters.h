#pragma once

#include "text/ByteSink.h"
#include "writers/DiffTexts.h"

/*!
 * Hands the differences by record and variable to \a sink, those that break data first, and a line
 * that counts them.
 */
void writeDiffText(const ComparedFiles& files, const ByteSink& sink);

/*! Hands a line for each difference to \a sink, as CSV. */
void writeDiffCsv(const ComparedFiles& files, bool forSpreadsheet, const ByteSink& sink);

/*! Hands the differences as JSON to \a sink piece by piece. */
void writeDiffJson(const ComparedFiles& files, const ByteSink& sink);
