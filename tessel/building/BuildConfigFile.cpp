#include "building/BuildConfigFile.h"

#include "checking/InputConfig.h"

using tessel::BuildConfig;

namespace {

void take(const BuildConfig& config, BuildSettings& settings)
{
    takeInput(config, settings.input, settings.selected);
    settings.target = config.target();
    settings.schema = config.schema;
    settings.repeats = config.repeats;
    settings.hasAllLanguages = config.hasAllLanguages;
}

void save(
    BuildConfig& config, const BuildSettings& settings, const tessel::DataDictionary& dictionary)
{
    saveInput(config, settings.input, settings.selected, dictionary);
    config.setTarget(settings.target);
    config.schema = settings.schema;
    config.repeats = settings.repeats;
    config.hasAllLanguages = settings.hasAllLanguages;
}

} // namespace

bool readConfig(const QString& path, BuildSettings& settings)
{
    BuildConfig config;
    if (!readConfigFile(path, config))
        return false;
    take(config, settings);
    return true;
}

QString takeConfig(const QByteArray& json, BuildSettings& settings)
{
    BuildConfig config;
    const QString mistake = config.readJson(json);
    if (mistake.isNull())
        take(config, settings);
    return mistake;
}

bool writeConfig(const BuildSettings& settings, const tessel::DataDictionary& dictionary)
{
    BuildConfig config;
    save(config, settings, dictionary);
    return writeConfigFile(settings.configFile, config);
}

QByteArray keptConfig(const BuildSettings& settings, const tessel::DataDictionary& dictionary)
{
    BuildConfig config;
    save(config, settings, dictionary);
    makeAbsolute(config);
    return config.json(false);
}
