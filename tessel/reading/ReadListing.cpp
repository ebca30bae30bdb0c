#include "reading/ReadListing.h"

#include "reading/CSProListing.h"
#include "reading/StatListing.h"

#include <model_Tessel/CSProDataImport.h>

bool readListing(const QString& path, const InputOptions& options, Listing& listing)
{
    const InputDictionary input = readInputDictionary(path, options);
    const DictionaryFile& file = input.file;
    if (!file.hasDictionary())
        return false;
    if (TCSProDataImport* importer = file.csproImporter())
        listing = listFields(path, *importer);
    else
        listing = listStatFile(file);
    if (!input.origin.isNull())
        listing.notes.prepend(input.origin);
    listing.isPartial = !file.isWhole();
    return true;
}
