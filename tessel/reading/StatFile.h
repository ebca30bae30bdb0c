#pragma once

#include "reading/InputFile.h"

#include <QString>

#include <memory>

class TDataImport;
class TStatInput;
struct TStatFileDescription;

/*!
 * Opens the SPSS or Stata file \a path in \a input, which every later look at it has to use, and
 * describes it. Tells on standard error what of it cannot be read; false when that is all of it.
 * \param isPartial set when value labels are missing
 */
bool describeStatFile(const QString& path, FileKind kind, TStatInput& input,
    TStatFileDescription& file, bool& isPartial);

/*!
 * Opens \a file, described before, with the library's importer; null, and told, when it can no
 * longer be read.
 * \param isPartial set, and told, when the importer does not read it whole
 */
std::unique_ptr<TDataImport> importStatFile(
    const TStatFileDescription& file, TStatInput& input, bool& isPartial);

/*! Tells that \a input could not be read, if so; false then. */
bool checkRead(const TStatInput& input);
