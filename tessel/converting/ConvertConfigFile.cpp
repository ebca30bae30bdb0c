#include "converting/ConvertConfigFile.h"

#include "checking/InputConfig.h"
#include "process/FileNames.h"

using namespace tessel;

namespace {

constexpr struct {
    ConversionFormat format;
    const char* name;
} formats[] = {
    { ConversionFormat::Stata, "stata" },
    { ConversionFormat::Spss, "spss" },
    { ConversionFormat::Csv, "csv" },
};

} // namespace

QString formatName(ConversionFormat format)
{
    for (const auto& known : formats) {
        if (known.format == format)
            return QLatin1String(known.name);
    }
    return QString();
}

std::optional<ConversionFormat> formatOf(const QString& name)
{
    for (const auto& known : formats) {
        if (name == QLatin1String(known.name))
            return known.format;
    }
    return std::nullopt;
}

bool readConfig(const QString& path, ConvertSettings& settings)
{
    BuildConfig config;
    if (!readConfigFile(path, config))
        return false;
    const ConversionConfig& conversion = config.conversion;
    takeInput(config, settings.input, settings.selected);
    settings.options.hasRepeatTables = config.repeats == QLatin1String("tables");
    const std::optional<ConversionFormat> format = formatOf(conversion.format);
    settings.hasFormat = format.has_value();
    settings.options.format = format.value_or(settings.options.format);
    settings.folder = FileNames::path(conversion.folder);
    settings.options.isMerged = conversion.isMerged;
    settings.options.keepsMissingCodes = conversion.keepsMissingCodes;
    settings.options.csv = { conversion.hasLabels, conversion.forSpreadsheet };
    return true;
}

bool writeConfig(const ConvertSettings& settings, const DataDictionary& dictionary)
{
    BuildConfig config;
    const ConversionOptions& options = settings.options;
    saveInput(config, settings.input, settings.selected, dictionary);
    config.setTarget(QString());
    config.repeats = options.hasRepeatTables ? QStringLiteral("tables") : QStringLiteral("columns");
    config.conversion = { formatName(options.format), settings.folder, options.isMerged,
        options.keepsMissingCodes, options.csv.hasLabels, options.csv.forSpreadsheet };
    return writeConfigFile(settings.savedConfig, config);
}
