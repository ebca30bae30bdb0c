#include "SourceOptions.h"

#include "InputOptions.h"

#include "process/FileNames.h"
#include "process/Output.h"

#include <QCommandLineParser>

const QCommandLineOption& dictionaryOption()
{
    static const QCommandLineOption option(QStringLiteral("dictionary"),
        QStringLiteral("Read a CSPro DB with this dictionary instead of its own."),
        QStringLiteral("file"));
    return option;
}

const QCommandLineOption& saveConfigOption()
{
    static const QCommandLineOption option(QStringLiteral("save-config"),
        QStringLiteral("Write the settings to a file that --config takes."),
        QStringLiteral("file"));
    return option;
}

void addSourceArgument(QCommandLineParser& parser)
{
    parser.addPositionalArgument(QStringLiteral("source"),
        QStringLiteral("CSPro dictionary (.dcf) and text files that it describes; or one file of "
                       ".csdb, .sav, .zsav or .dta."),
        QStringLiteral("SOURCE..."));
}

QString readSource(const QCommandLineParser& parser, DataInput& input)
{
    const QStringList files = FileNames::paths(parser.positionalArguments());
    if (!files.isEmpty()) {
        input.first = files.first();
        input.data = files.mid(1);
    }
    if (input.first.isEmpty())
        return QStringLiteral("no file given");
    if (parser.isSet(dictionaryOption()))
        input.dictionary = FileNames::path(parser.value(dictionaryOption()));
    if (parser.isSet(dictionaryOption()) && input.dictionary.isEmpty())
        return QStringLiteral("--dictionary needs the name of a file");
    QString mistake = readDictionaryTextOptions(parser, input.reading);
    if (mistake.isNull())
        mistake = readDataEncoding(parser, input.dataEncoding);
    return mistake.isNull() ? checkDataInput(input) : mistake;
}

QString readSaveConfig(const QCommandLineParser& parser, const QStringList& others, QString& path)
{
    path = FileNames::path(parser.value(saveConfigOption()));
    if (parser.isSet(saveConfigOption()) && path.isEmpty())
        return QStringLiteral("--save-config needs the name of a file");
    return Output::checkPath(QStringLiteral("--save-config"), path, others);
}
