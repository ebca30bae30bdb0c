#include "checking/InputConfig.h"

#include "process/FileNames.h"
#include "process/Output.h"
#include "reading/ReadInput.h"

#include <tessel_data/PostgresTarget.h>

#include <QDir>
#include <QFileInfo>

#include <functional>

using tessel::BuildConfig;
using tessel::PostgresTarget;

namespace {

// Relative names in a file of settings count from its folder; what is written to a pipe or device
// has none, and keeps them.
class ConfigFolder {
public:
    explicit ConfigFolder(const QString& configFile)
    {
        const QFileInfo file(configFile);
        m_folder = QDir(file.exists() && !file.isFile() ? QDir::currentPath() : file.path());
        m_folder.setPath(m_folder.canonicalPath());
    }

    // As the program takes a name that the settings have.
    QString opened(const QString& name) const
    {
        return moved(name, m_folder.path() + QLatin1Char('/') + name, QDir::current());
    }
    // As the settings have a name that the program was given.
    QString written(const QString& name) const
    {
        return moved(name, FileNames::absolute(name), m_folder);
    }

private:
    QString moved(const QString& name, const QString& path, const QDir& folder) const
    {
        const bool isMoved =
            FileNames::isRelative(name) && m_folder.path() != QDir::current().canonicalPath();
        return isMoved ? FileNames::path(folder.relativeFilePath(QDir::cleanPath(path))) : name;
    }

    QDir m_folder;
};

bool isFile(const QString& target)
{
    return !PostgresTarget::isKeywordConnection(target) && !target.contains(QLatin1String("://"));
}

void renameFiles(BuildConfig& config, const std::function<QString(const QString& name)>& renamed)
{
    auto& database = *config.config().getDataBase();
    database.setSourceFile(renamed(database.getSourceFile()));
    config.dictionary = renamed(config.dictionary);
    config.conversion.folder = renamed(config.conversion.folder);
    for (QString& name : config.data)
        name = renamed(name);
    const QString target = config.target();
    if (!target.isEmpty() && isFile(target))
        config.setTarget(renamed(target));
}

} // namespace

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
    const ConfigFolder folder(path);
    renameFiles(config, [&](const QString& name) { return folder.opened(name); });
    return mistake.isNull() || failInput(path, 0, mistake);
}

bool writeConfigFile(const QString& path, BuildConfig& config)
{
    const ConfigFolder folder(path);
    renameFiles(config, [&](const QString& name) { return folder.written(name); });
    return Output(path).write(config.json(true));
}

void makeAbsolute(BuildConfig& config)
{
    renameFiles(config, FileNames::absolute);
}
