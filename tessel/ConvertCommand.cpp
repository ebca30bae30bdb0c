#include "ConvertCommand.h"

#include "CommandLine.h"
#include "InputOptions.h"
#include "SelectionOptions.h"
#include "SourceOptions.h"
#include "SpreadsheetOption.h"

#include "checking/ProblemFile.h"
#include "converting/ConvertConfigFile.h"
#include "converting/ConvertRun.h"
#include "process/Console.h"
#include "process/FileNames.h"
#include "process/Output.h"

#include <QCommandLineParser>

using tessel::ConversionFormat;
using tessel::CsvForm;

namespace {

QCommandLineOption toOption()
{
    return { QStringLiteral("to"), QStringLiteral("What is made: files of Stata, of SPSS, or CSV."),
        QStringLiteral("stata|spss|csv") };
}

QCommandLineOption folderOption()
{
    return { { QStringLiteral("o"), QStringLiteral("output") },
        QStringLiteral("Folder that the files go to; it is made when it is missing."),
        QStringLiteral("folder") };
}

QCommandLineOption overwriteOption()
{
    return { QStringLiteral("overwrite"),
        QStringLiteral("Replace files of the same names, once all new ones are whole.") };
}

QCommandLineOption planOption()
{
    return { QStringLiteral("plan"),
        QStringLiteral("Print the files, variables and labels, and all that changes; make "
                       "nothing.") };
}

QCommandLineOption strictOption()
{
    return { QStringLiteral("strict"),
        QStringLiteral("Make nothing when anything is renamed, cut, rounded or left out.") };
}

QCommandLineOption repeatsOption()
{
    return { QStringLiteral("repeats"),
        QStringLiteral("Repeated items as columns, or in files of their own."),
        QStringLiteral("columns|tables") };
}

QCommandLineOption mergeOption()
{
    return { QStringLiteral("merge"),
        QStringLiteral("Put the variables of records that a case has once on each row of the "
                       "others.") };
}

QCommandLineOption missingOption()
{
    return { QStringLiteral("missing"),
        QStringLiteral("Stata: missing codes become .a, .b and so on, or stay codes."),
        QStringLiteral("kind|code") };
}

QCommandLineOption labelsOption()
{
    return { QStringLiteral("labels"), QStringLiteral("CSV: labels in place of codes.") };
}

QCommandLineOption problemsOption()
{
    return { QStringLiteral("problems"),
        QStringLiteral("Write all problems of the data to a file, as CSV or JSON by its name."),
        QStringLiteral("file.csv|file.json") };
}

QCommandLineOption configOption()
{
    return { QStringLiteral("config"),
        QStringLiteral("Take the settings of a file, also of one that 'tessel build' wrote; "
                       "options of the command line go before it."),
        QStringLiteral("file") };
}

void describe(QCommandLineParser& parser)
{
    parser.setApplicationDescription(
        QStringLiteral("Converts data and their dictionary into files of statistics programs, one\n"
                       "for each record: CSPro text data (- is standard input), a CSPro DB, or an\n"
                       "SPSS or Stata file.\n\n"
                       "What the format cannot hold as it is, is told. All files are whole or not\n"
                       "there.\n"
                       "Exit status: 0 the files are made, 1 they are not, 2 wrong usage."));
    parser.addOptions({ toOption(), folderOption(), overwriteOption(), planOption(), strictOption(),
        repeatsOption(), mergeOption(), missingOption(), labelsOption(), problemsOption(),
        spreadsheetOption(), dictionaryOption() });
    parser.addOptions(dictionaryTextOptions());
    parser.addOption(dataEncodingOption());
    parser.addOptions(selectionOptions());
    parser.addOptions({ configOption(), saveConfigOption() });
    addSourceArgument(parser);
}

QString valueOf(const QCommandLineParser& parser, const QCommandLineOption& option)
{
    return parser.value(option.names().constLast());
}

bool isSet(const QCommandLineParser& parser, const QCommandLineOption& option)
{
    return parser.isSet(option.names().constLast());
}

QString readFormat(const QCommandLineParser& parser, ConvertSettings& settings)
{
    if (!isSet(parser, toOption())) {
        return settings.hasFormat ? QString()
                                  : QStringLiteral("--to says what is made: stata, spss or csv");
    }
    const QString name = valueOf(parser, toOption());
    const std::optional<ConversionFormat> format = formatOf(name);
    if (!format)
        return QStringLiteral("--to takes stata, spss or csv, not '%1'").arg(name);
    settings.options.format = *format;
    return QString();
}

// Null when one of two words is given or none, which is the first.
QString readChoice(const QCommandLineParser& parser, const QCommandLineOption& option,
    const QString& first, const QString& second, bool& isSecond)
{
    const QString value = isSet(parser, option) ? valueOf(parser, option)
        : isSecond                              ? second
                                                : first;
    isSecond = value == second;
    return isSecond || value == first ? QString()
                                      : QStringLiteral("--%1 takes %2 or %3, not '%4'")
                                            .arg(option.names().constLast(), first, second, value);
}

QString readShape(const QCommandLineParser& parser, ConvertSettings& settings)
{
    QString mistake = readFormat(parser, settings);
    if (mistake.isNull()) {
        mistake = readChoice(parser, repeatsOption(), QStringLiteral("columns"),
            QStringLiteral("tables"), settings.options.hasRepeatTables);
    }
    if (mistake.isNull()) {
        mistake = readChoice(parser, missingOption(), QStringLiteral("kind"),
            QStringLiteral("code"), settings.options.keepsMissingCodes);
    }
    if (!mistake.isNull())
        return mistake;
    const ConversionFormat format = settings.options.format;
    if (isSet(parser, missingOption()) && format != ConversionFormat::Stata)
        return QStringLiteral("--missing is for --to stata");
    if (isSet(parser, labelsOption()) && format != ConversionFormat::Csv)
        return QStringLiteral("--labels is for --to csv");
    CsvForm& csv = settings.options.csv;
    csv.hasLabels =
        format == ConversionFormat::Csv && (csv.hasLabels || isSet(parser, labelsOption()));
    settings.options.isMerged = settings.options.isMerged || isSet(parser, mergeOption());
    settings.isStrict = isSet(parser, strictOption());
    settings.replacesFiles = isSet(parser, overwriteOption());
    return QString();
}

QString readTargets(const QCommandLineParser& parser, ConvertSettings& settings)
{
    const QStringList inputs = settings.input.data
        + QStringList { settings.input.first, settings.input.dictionary, settings.config };
    if (isSet(parser, folderOption()))
        settings.folder = FileNames::path(valueOf(parser, folderOption()));
    if (settings.folder.isEmpty() && !isSet(parser, planOption()))
        return QStringLiteral("--output needs the name of a folder");
    settings.problems = FileNames::path(valueOf(parser, problemsOption()));
    if (isSet(parser, problemsOption()) && !ProblemFile::isName(settings.problems)) {
        return QStringLiteral("--problems takes a name that ends in .csv or .json, not '%1'")
            .arg(settings.problems);
    }
    const QString mistake =
        Output::checkPath(QStringLiteral("--problems"), settings.problems, inputs);
    return mistake.isNull() ? readSaveConfig(parser,
               settings.input.data
                   + QStringList { settings.input.first, settings.input.dictionary,
                       settings.problems },
               settings.savedConfig)
                            : mistake;
}

QString readSpreadsheet(const QCommandLineParser& parser, ConvertSettings& settings)
{
    const bool isCsv = settings.options.format == ConversionFormat::Csv;
    const bool writesCsv = isCsv || ProblemFile::isCsvName(settings.problems);
    const QString mistake = readSpreadsheetOption(
        parser, "--to csv or --problems FILE.csv", writesCsv, settings.forSpreadsheet);
    CsvForm& csv = settings.options.csv;
    settings.forSpreadsheet = settings.forSpreadsheet || (isCsv && csv.forSpreadsheet);
    csv.forSpreadsheet = isCsv && settings.forSpreadsheet;
    return mistake;
}

QString readSettings(const QCommandLineParser& parser, ConvertSettings& settings)
{
    QString mistake = readSource(parser, settings.input);
    if (mistake.isNull())
        mistake = readShape(parser, settings);
    if (mistake.isNull())
        mistake = readTargets(parser, settings);
    if (mistake.isNull())
        mistake = readSpreadsheet(parser, settings);
    return mistake.isNull() ? readSelectionOptions(parser, settings.selected) : mistake;
}

struct ConvertCommandLine {
    ConvertSettings settings;
    bool hasConfig = true; // that of --config was read, where one is wanted
};

// Options of the command line go before what the file says.
QString readOptions(const QCommandLineParser& parser, ConvertCommandLine& line)
{
    line.settings.config = FileNames::path(valueOf(parser, configOption()));
    line.hasConfig =
        !isSet(parser, configOption()) || readConfig(line.settings.config, line.settings);
    return line.hasConfig ? readSettings(parser, line.settings) : QString();
}

} // namespace

int runConvert(const QStringList& arguments)
{
    QCommandLineParser parser;
    ConvertCommandLine line;
    if (const auto status = readCommandLine(arguments, parser, describe, readOptions, line))
        return *status;
    if (!line.hasConfig)
        return InputFailed;
    return isSet(parser, planOption()) ? printConversionPlan(line.settings)
                                       : convert(line.settings);
}
