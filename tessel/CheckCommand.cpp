#include "CheckCommand.h"

#include "CommandLine.h"
#include "checking/CheckRun.h"
#include "checking/CheckWriters.h"
#include "checking/ProblemFile.h"
#include "process/Console.h"
#include "process/FileNames.h"
#include "process/Output.h"
#include "process/Supervisor.h"
#include "FormatOption.h"
#include "InputOptions.h"
#include "SpreadsheetOption.h"

#include <QCommandLineParser>

#include <optional>

namespace {

struct CheckOptions {
    DataInput input;
    ListingFormat format;
    bool isStrict = false;
    QString problems; // empty: none
    QString output;
};

const QCommandLineOption& dictionaryOption()
{
    static const QCommandLineOption option(QStringLiteral("dictionary"),
        QStringLiteral("Check a CSPro DB with this dictionary instead of its own."),
        QStringLiteral("file"));
    return option;
}

const QCommandLineOption& anyValueSetOption()
{
    static const QCommandLineOption option(QStringLiteral("any-value-set"),
        QStringLiteral("Accept a code that any value set of its variable has, not only the "
                       "first."));
    return option;
}

const QCommandLineOption& strictOption()
{
    static const QCommandLineOption option(QStringLiteral("strict"),
        QStringLiteral("Fail also for codes outside their value sets and for blank "
                       "identification items."));
    return option;
}

const QCommandLineOption& problemsOption()
{
    static const QCommandLineOption option(QStringLiteral("problems"),
        QStringLiteral("Write all problems to a file, as CSV or JSON by its name."),
        QStringLiteral("file.csv|file.json"));
    return option;
}

void describe(QCommandLineParser& parser)
{
    parser.setApplicationDescription(
        QStringLiteral("Checks data against their dictionary: CSPro text data (- is standard\n"
                       "input), a CSPro DB, or an SPSS or Stata file, which hold their own.\n\n"
                       "What is found goes to standard output.\n"
                       "Exit status: 0 nothing is wrong, 1 something is, or a file cannot be\n"
                       "read or written, 2 wrong usage."));
    parser.addOptions({ dictionaryOption(), anyValueSetOption(), strictOption(), problemsOption(),
        listFormatOption(), spreadsheetOption() });
    parser.addOptions(dictionaryTextOptions());
    parser.addOption(dataEncodingOption());
    parser.addOption(Output::option());
    parser.addPositionalArgument(QStringLiteral("dictionary"),
        QStringLiteral("CSPro dictionary (.dcf); or one file of .csdb, .sav, .zsav or .dta."),
        QStringLiteral("DICTIONARY"));
    parser.addPositionalArgument(QStringLiteral("data"),
        QStringLiteral("Text files that the dictionary describes."), QStringLiteral("[DATA...]"));
}

QString readInput(const QCommandLineParser& parser, DataInput& input)
{
    input.data = FileNames::paths(parser.positionalArguments());
    if (input.data.isEmpty())
        return QStringLiteral("no file given");
    input.first = input.data.takeFirst();
    input.dictionary = FileNames::path(parser.value(dictionaryOption()));
    if (parser.isSet(dictionaryOption()) && input.dictionary.isEmpty())
        return QStringLiteral("--dictionary needs the name of a file");
    if (parser.isSet(anyValueSetOption()))
        input.valueSets = tessel::ValueSetChoice::Any;
    QString mistake = readDictionaryTextOptions(parser, input.reading);
    if (mistake.isNull())
        mistake = readDataEncoding(parser, input.dataEncoding);
    return mistake.isNull() ? checkDataInput(input) : mistake;
}

QString readTargets(const QCommandLineParser& parser, CheckOptions& options)
{
    const DataInput& input = options.input;
    const QStringList inputs = input.data + QStringList { input.first, input.dictionary };
    QString mistake = Output::readOption(parser, inputs, options.output);
    if (!mistake.isNull())
        return mistake;
    options.problems = parser.value(problemsOption());
    if (parser.isSet(problemsOption()) && !ProblemFile::isName(options.problems)) {
        return QStringLiteral("--problems takes a name that ends in .csv or .json, not '%1'")
            .arg(options.problems);
    }
    if (!Output::checkPath(QString(), options.problems, { options.output }).isNull())
        return QStringLiteral("--problems and --output name the same file");
    return Output::checkPath(QStringLiteral("--problems"), options.problems, inputs);
}

QString readOptions(const QCommandLineParser& parser, CheckOptions& options)
{
    options.format.width = Console::tableWidth();
    options.isStrict = parser.isSet(strictOption());
    QString mistake = readListFormat(parser, options.format.kind);
    if (mistake.isNull())
        mistake = readInput(parser, options.input);
    if (mistake.isNull())
        mistake = readTargets(parser, options);
    if (!mistake.isNull())
        return mistake;
    const bool writesCsv =
        options.format.kind == ListingFormat::Kind::Csv || ProblemFile::isCsvName(options.problems);
    return readSpreadsheetOption(parser, "--format csv", writesCsv, options.format.forSpreadsheet);
}

int check(const CheckOptions& options)
{
    CheckOutcome outcome;
    outcome.isStrict = options.isStrict;
    outcome.source = openData(options.input).source;
    if (!outcome.source)
        return InputFailed;
    std::optional<ProblemFile> problems;
    if (!options.problems.isEmpty())
        problems.emplace(options.problems, options.format.forSpreadsheet);
    if (!checkData(outcome, problems ? &*problems : nullptr))
        return InputFailed;
    tellAssumptions(options.input, outcome.report.files);
    const bool hasProblemFile = !problems || problems->finish();
    Output output(options.output);
    writeCheck(outcome, options.format, output.sink());
    return output.finish() && hasProblemFile && outcome.isClean() ? AllRead : InputFailed;
}

} // namespace

int runCheck(const QStringList& arguments)
{
    QCommandLineParser parser;
    CheckOptions options;
    if (const auto status = readCommandLine(arguments, parser, describe, readOptions, options))
        return *status;
    return Supervisor({ options.input.first }).run([&](Supervisor& supervisor) {
        if (!supervisor.beginFile(0, Supervisor::Time::Unlimited))
            return int(InputFailed);
        const int status = check(options);
        supervisor.endFile();
        return status;
    });
}
