#include "reading/ReadDataDictionary.h"

#include "reading/ReadInput.h"

#include <model_Tessel/CSProDataImport.h>

#include <tessel_data/DataError.h>

using tessel::DataDictionary;

namespace {

// The reader has told of a name that the dictionary does not have.
int languageOf(const DataDictionary& dictionary, const QString& name)
{
    for (int i = 0; i < dictionary.languages.size(); ++i) {
        if (dictionary.languages.at(i).name.compare(name, Qt::CaseInsensitive) == 0)
            return i;
    }
    return 0;
}

} // namespace

DataDictionary dataDictionaryOf(const DictionaryFile& file, const QString& path,
    tessel::ValueSetChoice choice, const QString& language)
{
    DataDictionary dictionary =
        DataDictionary::fromReader(*file.csproImporter()->dictionary, path, choice);
    dictionary.language = languageOf(dictionary, language);
    return dictionary;
}

bool readDataDictionary(
    const QString& path, const InputOptions& options, DataDictionary& dictionary)
{
    const DictionaryFile file = readInputDictionary(path, options).file;
    if (!file.hasDictionary())
        return false;
    if (!file.csproImporter()) {
        return failInput(path, 0,
            QStringLiteral("is no CSPro dictionary, which describes text data; 'tessel convert' "
                           "writes its rows for other programs"));
    }
    try {
        dictionary = dataDictionaryOf(
            file, path, tessel::ValueSetChoice::First, options.dictionary.language);
    } catch (const tessel::DataError& error) {
        return failInput(path, 0, error.text);
    }
    return true;
}
