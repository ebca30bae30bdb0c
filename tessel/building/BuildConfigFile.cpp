#include "building/BuildConfigFile.h"

#include "process/FileNames.h"
#include "reading/ReadInput.h"

#include <tessel_data/BuildConfig.h>

using tessel::BuildConfig;

bool readConfig(const QString& path, BuildSettings& settings)
{
    QByteArray json;
    if (!readInput(path, json))
        return false;
    const QString mistake = takeConfig(json, settings);
    return mistake.isNull() || failInput(path, 0, mistake);
}

QString takeConfig(const QByteArray& json, BuildSettings& settings)
{
    BuildConfig config;
    QString mistake = config.readJson(json);
    if (!mistake.isNull())
        return mistake;
    settings.input.first = FileNames::path(config.config().getDataBase()->getSourceFile());
    settings.input.data = FileNames::paths(config.data);
    settings.input.dictionary = FileNames::path(config.dictionary);
    settings.input.dataEncoding = config.dataEncoding;
    settings.target = config.target();
    settings.schema = config.schema;
    settings.repeats = config.repeats;
    settings.input.reading.language = config.language;
    settings.input.reading.encoding = config.encoding.toLatin1();
    settings.hasAllLanguages = config.hasAllLanguages;
    settings.selected.selection = config.selection();
    settings.selected.hasSeed = settings.selected.selection.sample > 0;
    return QString();
}

QByteArray configText(
    const BuildSettings& settings, const tessel::DataDictionary& dictionary, bool isIndented)
{
    BuildConfig config;
    config.config().getDataBase()->setSourceFile(settings.input.first);
    config.data = settings.input.data;
    config.dictionary = settings.input.dictionary;
    config.dataEncoding = settings.input.dataEncoding;
    config.setTarget(settings.target);
    config.schema = settings.schema;
    config.repeats = settings.repeats;
    config.language = settings.input.reading.language;
    config.encoding = QString::fromLatin1(settings.input.reading.encoding);
    config.hasAllLanguages = settings.hasAllLanguages;
    config.setSelection(settings.selected.selection, dictionary);
    return config.json(isIndented);
}
