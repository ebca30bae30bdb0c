#include "reading/ReadListing.h"

#include "process/Console.h"
#include "reading/CSProFile.h"
#include "reading/CSProListing.h"
#include "reading/StatListing.h"

#include <model_Tessel/CSProDataImport.h>

namespace {

void tellUnused(const QString& path, const char* option, bool isGiven)
{
    if (!isGiven)
        return;
    Console::tell(path, 0, Console::Severity::Note,
        QStringLiteral("%1 is for CSPro dictionaries and does nothing here")
            .arg(QLatin1String(option)));
}

} // namespace

FileKind kindOfInput(const InputFile& file, const InputOptions& options)
{
    const FileKind kind = options.kind == FileKind::Unknown ? file.kind() : options.kind;
    const bool isCSPro = kind == FileKind::CSPro || kind == FileKind::CSProDb;
    if (!isCSPro) {
        tellUnused(file.path(), "--encoding", !options.dictionary.encoding.isEmpty());
        tellUnused(file.path(), "--language", !options.dictionary.language.isEmpty());
    } else if (file.kind() == FileKind::CSProDb && !options.dictionary.encoding.isEmpty()) {
        Console::tell(file.path(), 0, Console::Severity::Note,
            QStringLiteral("--encoding does nothing here, as the texts of a CSPro DB are UTF-8"));
    }
    return isCSPro ? FileKind::CSPro : kind;
}

bool readListing(const QString& path, const InputOptions& options, Listing& listing)
{
    InputFile file(path);
    if (!file.open())
        return false;
    const FileKind kind = kindOfInput(file, options);
    if (kind != FileKind::CSPro)
        return listStatFile(path, kind, options.dictionary.asWritten, listing);
    DictionaryText text;
    if (!readDictionaryText(file, options.dictionary, text))
        return false;
    const auto importer = openDictionary(path, text, options.dictionary);
    if (!importer)
        return false;
    listing = listFields(path, *importer);
    if (!text.origin.isNull())
        listing.notes.prepend(text.origin);
    return true;
}
