#include "BuildCommand.h"

#include "CommandLine.h"
#include "InputOptions.h"
#include "SelectionOptions.h"
#include "SourceOptions.h"

#include "building/BuildConfigFile.h"
#include "building/BuildRun.h"
#include "process/Console.h"
#include "process/FileNames.h"
#include "process/Output.h"

#include <tessel_data/PostgresTarget.h>

#include <QCommandLineParser>

using tessel::PostgresTarget;

namespace {

const QCommandLineOption& toOption()
{
    static const QCommandLineOption option(QStringLiteral("to"),
        QStringLiteral("The database that is made: an SQLite file, or postgresql://... for a "
                       "PostgreSQL server."),
        QStringLiteral("target"));
    return option;
}

const QCommandLineOption& schemaOption()
{
    static const QCommandLineOption option(QStringLiteral("schema"),
        QStringLiteral("Make the tables in this schema of a PostgreSQL database."),
        QStringLiteral("name"));
    return option;
}

const QCommandLineOption& overwriteOption()
{
    static const QCommandLineOption option(QStringLiteral("overwrite"),
        QStringLiteral("Replace the database when it is there, once the new one is whole."));
    return option;
}

const QCommandLineOption& addOption()
{
    static const QCommandLineOption option(QStringLiteral("add"),
        QStringLiteral("Add to the database: new cases are added, changed ones replaced, deleted "
                       "ones withdrawn."));
    return option;
}

const QCommandLineOption& planOption()
{
    static const QCommandLineOption option(QStringLiteral("plan"),
        QStringLiteral("Print the tables, columns, types and changed names, and make nothing."));
    return option;
}

const QCommandLineOption& repeatsOption()
{
    static const QCommandLineOption option(QStringLiteral("repeats"),
        QStringLiteral("Repeated items as columns, or in tables of their own."),
        QStringLiteral("columns|tables"));
    return option;
}

const QCommandLineOption& languagesOption()
{
    static const QCommandLineOption option(QStringLiteral("languages"),
        QStringLiteral("Labels in all languages: columns label, label_fr and so on."),
        QStringLiteral("all"));
    return option;
}

const QCommandLineOption& configOption()
{
    static const QCommandLineOption option(QStringLiteral("config"),
        QStringLiteral("Take the settings of a file; options of the command line go before it."),
        QStringLiteral("file"));
    return option;
}

void describe(QCommandLineParser& parser)
{
    parser.setApplicationDescription(
        QStringLiteral("Makes a database of data and their dictionary: CSPro text data (- is\n"
                       "standard input), a CSPro DB, or an SPSS or Stata file.\n\n"
                       "The database is whole or not there. Data are checked on the way: what is\n"
                       "wrong stands in its table tessel_problems, lines without a place in\n"
                       "tessel_rejects.\n"
                       "Exit status: 0 the database is made, 1 it is not, 2 wrong usage."));
    parser.addOptions({ toOption(), schemaOption(), overwriteOption(), addOption(), planOption(),
        repeatsOption(), dictionaryOption(), languagesOption() });
    parser.addOptions(dictionaryTextOptions());
    parser.addOption(dataEncodingOption());
    parser.addOptions(selectionOptions());
    parser.addOptions({ configOption(), saveConfigOption() });
    addSourceArgument(parser);
}

QString readServer(const QString& connection, BuildSettings& settings)
{
    settings.target = connection;
    const QString mistake = PostgresTarget::mistakeIn(connection);
    return mistake.isNull() ? QString() : QLatin1String("the target of --to ") + mistake;
}

QString readTarget(const QCommandLineParser& parser, BuildSettings& settings)
{
    const QString target = parser.isSet(toOption()) ? parser.value(toOption()) : settings.target;
    if (target.isEmpty())
        return parser.isSet(planOption()) ? QString()
                                          : QStringLiteral("--to needs the name of a database");
    if (parser.isSet(schemaOption()))
        settings.schema = parser.value(schemaOption());
    if (PostgresTarget::isConnection(target))
        return readServer(target, settings);
    if (parser.isSet(schemaOption()) && !PostgresTarget::isKeywordConnection(target))
        return QStringLiteral("--schema goes with --to postgresql://...");
    if (PostgresTarget::isKeywordConnection(target)) {
        return QStringLiteral(
            "--to takes a server as postgresql://USER@HOST/DATABASE; a file whose "
            "name begins with a keyword and '=' is written with ./ in front");
    }
    if (target.contains(QLatin1String("://"))) {
        return QStringLiteral("--to takes an SQLite file or postgresql://..., not '%1...'")
            .arg(target.left(target.indexOf(QLatin1String("://")) + 3));
    }
    settings.schema.clear();
    settings.target = FileNames::path(target);
    const DataInput& input = settings.input;
    return Output::checkPath(QStringLiteral("--to"), settings.target,
        input.data + QStringList { input.first, input.dictionary });
}

QString readShape(const QCommandLineParser& parser, BuildSettings& settings)
{
    if (parser.isSet(repeatsOption()))
        settings.repeats = parser.value(repeatsOption());
    const bool isKnown = settings.hasRepeatTables() || settings.repeats == QLatin1String("columns");
    if (!isKnown && (parser.isSet(repeatsOption()) || !settings.repeats.isEmpty()))
        return QStringLiteral("--repeats takes columns or tables, not '%1'").arg(settings.repeats);
    settings.hasAllLanguages = settings.hasAllLanguages || parser.isSet(languagesOption());
    if (parser.isSet(languagesOption())
        && parser.value(languagesOption()) != QLatin1String("all")) {
        return QStringLiteral("--languages takes all, not '%1'")
            .arg(parser.value(languagesOption()));
    }
    return QString();
}

QString readSettings(const QCommandLineParser& parser, BuildSettings& settings)
{
    settings.replacesTarget = parser.isSet(overwriteOption());
    settings.addsToTarget = parser.isSet(addOption());
    if (settings.addsToTarget && settings.replacesTarget)
        return QStringLiteral("--add keeps the database and --overwrite replaces it; give one");
    if (settings.addsToTarget && parser.isSet(planOption()))
        return QStringLiteral("--plan tells of a new database; give it without --add");
    QString mistake = readSource(parser, settings.input);
    if (mistake.isNull())
        mistake = readTarget(parser, settings);
    if (mistake.isNull())
        mistake = readShape(parser, settings);
    if (mistake.isNull())
        mistake = readSelectionOptions(parser, settings.selected);
    if (!mistake.isNull())
        return mistake;
    const DataInput& input = settings.input;
    return readSaveConfig(parser,
        input.data + QStringList { input.first, input.dictionary, settings.target },
        settings.configFile);
}

struct BuildCommandLine {
    BuildSettings settings;
    bool hasConfig = true; // that of --config was read, where one is wanted
};

// Options of the command line go before what the file says.
QString readOptions(const QCommandLineParser& parser, BuildCommandLine& line)
{
    line.hasConfig = !parser.isSet(configOption())
        || readConfig(FileNames::path(parser.value(configOption())), line.settings);
    return line.hasConfig ? readSettings(parser, line.settings) : QString();
}

} // namespace

int runBuild(const QStringList& arguments)
{
    QCommandLineParser parser;
    BuildCommandLine line;
    if (const auto status = readCommandLine(arguments, parser, describe, readOptions, line))
        return *status;
    if (!line.hasConfig)
        return InputFailed;
    return parser.isSet(planOption()) ? printPlan(line.settings) : build(line.settings);
}
