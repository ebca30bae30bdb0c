#include "DictionaryTree.h"

#include "InputOptions.h"
#include "StatFile.h"

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/DataProvider.h>
#include <model_Tessel/Record.h>
#include <model_Tessel/SourceField.h>
#include <model_Tessel/StatDictionary.h>

#include <memory>

namespace {

DictionaryPointer buildTree(TDataImport& importer, const QVector<LookupDictionary>& lookups)
{
    TOxDataProvider provider;
    provider.genericGetFieldsFrom(&importer);
    const std::unique_ptr<TOxRecord> recordTree(provider.recordTree);
    DictionaryPointer tree(buildDictionary(provider, lookups));
    qDeleteAll(*provider.fields);
    return tree;
}

DictionaryPointer readStatTree(const QString& path, FileKind kind, bool asWritten,
    const QVector<LookupDictionary>& lookups, bool& isPartial)
{
    TStatFileDescription file;
    if (!describeStatFile(path, kind, file, isPartial))
        return nullptr;
    if (asWritten)
        return DictionaryPointer(buildDictionary(file, lookups));
    return buildTree(*importStatFile(file, isPartial), lookups);
}

} // namespace

DictionaryPointer readTree(const QString& path, const InputOptions& options,
    const QVector<LookupDictionary>& lookups, bool& isPartial)
{
    if (!checkInput(path))
        return nullptr;
    const FileKind kind = options.kind == FileKind::Unknown ? kindOfContent(path) : options.kind;
    if (kind != FileKind::CSPro)
        return readStatTree(path, kind, options.dictionary.asWritten, lookups, isPartial);
    const auto importer = openDictionary(path, options.dictionary);
    return importer ? buildTree(*importer, lookups) : nullptr;
}
