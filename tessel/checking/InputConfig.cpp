#include "checking/InputConfig.h"

#include "process/FileNames.h"
#include "reading/ReadInput.h"

using tessel::BuildConfig;

void takeInput(const BuildConfig& config, DataInput& input, SelectionRequest& selected)
{
    input.first = FileNames::path(config.config().getDataBase()->getSourceFile());
    input.data = FileNames::paths(config.data);
    input.dictionary = FileNames::path(config.dictionary);
    input.dataEncoding = config.dataEncoding;
    input.reading.language = config.language;
    input.reading.encoding = config.encoding.toLatin1();
    selected.selection = config.selection();
    selected.hasSeed = selected.selection.sample > 0;
}

void saveInput(BuildConfig& config, const DataInput& input, const SelectionRequest& selected,
    const tessel::DataDictionary& dictionary)
{
    config.config().getDataBase()->setSourceFile(input.first);
    config.data = input.data;
    config.dictionary = input.dictionary;
    config.dataEncoding = input.dataEncoding;
    config.language = input.reading.language;
    config.encoding = QString::fromLatin1(input.reading.encoding);
    config.setSelection(selected.selection, dictionary);
}

bool readConfigFile(const QString& path, BuildConfig& config)
{
    QByteArray json;
    if (!readInput(path, json))
        return false;
    const QString mistake = config.readJson(json);
    return mistake.isNull() || failInput(path, 0, mistake);
}
