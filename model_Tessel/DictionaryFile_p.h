#pragma once

#include <model_Tessel/DictionaryFile.h>

// What the readers of the kinds of files share.
namespace DictionaryFiles {

using Kind = DictionaryFileProblem::Kind;
using Severity = DictionaryFileProblem::Severity;

// Adds an error and returns false.
bool fail(DictionaryFile& file, Kind kind, const QString& text);
void warn(DictionaryFile& file, Kind kind, const QString& text);

// Reads the text of a dictionary, whatever it comes from.
void readCSPro(DictionaryFile& file, const QByteArray& bytes, const DictionaryFileOptions& options);

// Reads file as kind, whatever its own is.
void readStat(DictionaryFile& file, DictionaryFileKind kind, const DictionaryFileOptions& options);

bool isEncryptedSpss(const QByteArray& head);

} // namespace DictionaryFiles
