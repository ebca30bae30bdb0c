#include "reading/ReadListing.h"

#include "process/Console.h"
#include "reading/CSProListing.h"
#include "reading/StatListing.h"

#include <model_Tessel/CSProDataImport.h>

FileKind kindOfInput(const QString& path, const InputOptions& options)
{
    const FileKind kind = options.kind == FileKind::Unknown ? kindOfContent(path) : options.kind;
    if (kind != FileKind::CSPro && !options.dictionary.encoding.isEmpty()) {
        Console::tell(path, 0, Console::Severity::Note,
            QStringLiteral("--encoding is for CSPro dictionaries and does nothing here"));
    }
    return kind;
}

bool readListing(const QString& path, const InputOptions& options, Listing& listing)
{
    if (!checkInput(path))
        return false;
    const FileKind kind = kindOfInput(path, options);
    if (kind != FileKind::CSPro)
        return listStatFile(path, kind, options.dictionary.asWritten, listing);
    const auto importer = openDictionary(path, options.dictionary);
    if (!importer)
        return false;
    listing = listFields(path, *importer);
    return true;
}
