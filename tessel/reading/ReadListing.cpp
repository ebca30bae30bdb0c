#include "reading/ReadListing.h"

#include "reading/CSProListing.h"
#include "reading/DdiListing.h"
#include "reading/StatListing.h"

#include <model_Tessel/CSProDataImport.h>

namespace {

void addReading(const InputDictionary& input, Listing& listing)
{
    if (!input.origin.isNull())
        listing.notes.prepend(input.origin);
    listing.isPartial = !input.file.isWhole();
}

bool isDdi(const QString& path, const InputOptions& options)
{
    return options.kind == DictionaryFileKind::Unknown && isDdiFile(path);
}

} // namespace

bool readListing(const QString& path, const InputOptions& options, Listing& listing)
{
    if (isDdi(path, options)) {
        QVector<Listing> languages;
        if (!listDdi(path, options.dictionary.language, languages))
            return false;
        listing = languages.constFirst();
        return true;
    }
    const InputDictionary input = readInputDictionary(path, options);
    const DictionaryFile& file = input.file;
    if (!file.hasDictionary())
        return false;
    if (TCSProDataImport* importer = file.csproImporter())
        listing = listFields(path, *importer);
    else
        listing = listStatFile(file);
    addReading(input, listing);
    return true;
}

bool readLanguages(const QString& path, const InputOptions& options, QVector<Listing>& languages)
{
    if (isDdi(path, options))
        return listDdi(path, options.dictionary.language, languages);
    const InputDictionary input = readInputDictionary(path, options);
    if (!input.file.hasDictionary())
        return false;
    TCSProDataImport* importer = input.file.csproImporter();
    if (importer && options.dictionary.language.isEmpty())
        languages = listLanguages(path, *importer);
    else if (importer)
        languages = { listFields(path, *importer) };
    else
        languages = { listStatFile(input.file) };
    for (Listing& listing : languages)
        addReading(input, listing);
    return true;
}
