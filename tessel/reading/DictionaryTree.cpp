#include "reading/DictionaryTree.h"

#include "reading/ReadListing.h"
#include "reading/StatFile.h"

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/StatDictionary.h>
#include <model_Tessel/StatInput.h>

namespace {

DictionaryPointer readStatTree(const QString& path, FileKind kind, bool asWritten,
    const QVector<LookupDictionary>& lookups, bool& isPartial)
{
    TStatInput input;
    TStatFileDescription file;
    if (!describeStatFile(path, kind, input, file, isPartial))
        return nullptr;
    if (asWritten)
        return DictionaryPointer(buildDictionary(file, lookups));
    const auto importer = importStatFile(file, input, isPartial);
    return DictionaryPointer(importer ? buildDictionary(*importer, lookups) : nullptr);
}

} // namespace

DictionaryPointer readTree(const QString& path, const InputOptions& options,
    const QVector<LookupDictionary>& lookups, bool& isPartial)
{
    if (!checkInput(path))
        return nullptr;
    const FileKind kind = kindOfInput(path, options);
    if (kind != FileKind::CSPro)
        return readStatTree(path, kind, options.dictionary.asWritten, lookups, isPartial);
    const auto importer = openDictionary(path, options.dictionary);
    return DictionaryPointer(importer ? buildDictionary(*importer, lookups) : nullptr);
}
