#pragma once

#include "reading/InputFile.h"

#include <QString>

#include <memory>

class TDataImport;
struct TStatFileDescription;

/*!
 * Describes the SPSS or Stata file \a path and tells on standard error what of it cannot be read.
 * False when that is all of it.
 * \param isPartial set when value labels are missing
 */
bool describeStatFile(
    const QString& path, FileKind kind, TStatFileDescription& file, bool& isPartial);

/*!
 * Opens \a file with the library's importer.
 * \param isPartial set, and told, when the importer does not read it whole
 */
std::unique_ptr<TDataImport> importStatFile(const TStatFileDescription& file, bool& isPartial);
