#include "DiffCommand.h"

#include "CommandLine.h"
#include "process/Console.h"
#include "process/FileNames.h"
#include "FormatOption.h"
#include "InputOptions.h"
#include "listing/Crosswalk.h"
#include "listing/ListingDiff.h"
#include "process/Output.h"
#include "process/Supervisor.h"
#include "SpreadsheetOption.h"
#include "writers/CrosswalkWriter.h"
#include "writers/DiffPage.h"
#include "writers/DiffWriters.h"

#include <QCommandLineParser>

#include <exception>

namespace {

// Exit statuses of this command. Shown help and wrong usage have those that all commands have.
enum DiffStatus { Equal = AllRead, Different = 1, Trouble = WrongUsage };

// What the supervised work returns for files that differ: none of its own failures.
constexpr int FoundDifferences = 3;

struct DiffOptions {
    QStringList files; // two
    InputOptions input;
    enum class Format { Text, Csv, Json } format = Format::Text;
    bool forSpreadsheet = false;
    bool onlyBreaking = false;
    QString crosswalk; // empty: none
    QString report; // empty: none
    QString output;
};

const QCommandLineOption& formatOption()
{
    static const QCommandLineOption option({ QStringLiteral("f"), QStringLiteral("format") },
        QStringLiteral("How to tell: text (for people), csv or json."), QStringLiteral("format"),
        QStringLiteral("text"));
    return option;
}

const QCommandLineOption& breakingOption()
{
    static const QCommandLineOption option(QStringLiteral("breaking"),
        QStringLiteral("Tell only what can break data that fits the first dictionary."));
    return option;
}

const QCommandLineOption& reportOption()
{
    static const QCommandLineOption option(QStringLiteral("report"),
        QStringLiteral("Also write a page to look at in a browser."), QStringLiteral("file.html"));
    return option;
}

const QCommandLineOption& crosswalkOption()
{
    static const QCommandLineOption option(QStringLiteral("crosswalk"),
        QStringLiteral("Also write which variable and code of the second dictionary is which of "
                       "the first, for stacking rounds."),
        QStringLiteral("file.csv"));
    return option;
}

void describe(QCommandLineParser& parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "Compares two dictionaries, also of different kinds, and tells which differences\n"
        "break data that fits the first.\n\n"
        "The differences go to standard output. What was not read as written is\n"
        "told on standard error, by file and line.\n"
        "Exit status: 0 they are equal, 1 they differ, 2 wrong usage or a failure."));
    parser.addOptions({ formatOption(), breakingOption(), reportOption(), crosswalkOption(),
        spreadsheetOption(), Output::option() });
    parser.addOptions(inputOptions());
    parser.addPositionalArgument(QStringLiteral("before"),
        QStringLiteral("Dictionary that the data fits: .dcf, .sav, .zsav or .dta."),
        QStringLiteral("BEFORE"));
    parser.addPositionalArgument(QStringLiteral("after"),
        QStringLiteral("Dictionary to compare it with, of any of these kinds."),
        QStringLiteral("AFTER"));
}

QString readFormat(const QCommandLineParser& parser, DiffOptions& options)
{
    using Format = DiffOptions::Format;
    const QString format = parser.value(formatOption());
    if (format == QLatin1String("csv"))
        options.format = Format::Csv;
    else if (format == QLatin1String("json"))
        options.format = Format::Json;
    else if (format != QLatin1String("text"))
        return QStringLiteral("unknown format '%1'; give text, csv or json").arg(format);
    const bool writesCsv = options.format == Format::Csv || parser.isSet(crosswalkOption());
    return readSpreadsheetOption(
        parser, "--format csv or --crosswalk", writesCsv, options.forSpreadsheet);
}

// A further file, which no other is.
QString readTarget(const QCommandLineParser& parser, const QCommandLineOption& option,
    const QStringList& others, const DiffOptions& options, QString& path)
{
    const QString name = QLatin1String("--") + option.names().constLast();
    path = FileNames::path(parser.value(option));
    if (!parser.isSet(option))
        return QString();
    if (path.isEmpty())
        return QStringLiteral("%1 needs the name of a file").arg(name);
    if (!Output::checkPath(name, path, others).isNull())
        return QStringLiteral("%1 names the file of another option").arg(name);
    return Output::checkPath(name, path, options.files);
}

QString readTargets(const QCommandLineParser& parser, DiffOptions& options)
{
    QString mistake = Output::readOption(parser, options.files, options.output);
    if (mistake.isNull()) {
        mistake = readTarget(parser, reportOption(), { options.output }, options, options.report);
    }
    if (mistake.isNull()) {
        mistake = readTarget(parser, crosswalkOption(), { options.output, options.report }, options,
            options.crosswalk);
    }
    return mistake;
}

QString readOptions(const QCommandLineParser& parser, DiffOptions& options)
{
    options.files = FileNames::paths(parser.positionalArguments());
    if (options.files.size() != 2)
        return QStringLiteral("give two dictionaries, not %1").arg(options.files.size());
    options.onlyBreaking = parser.isSet(breakingOption());
    QString mistake = readFormat(parser, options);
    if (mistake.isNull())
        mistake = readInputOptions(parser, options.input);
    return mistake.isNull() ? readTargets(parser, options) : mistake;
}

// A dictionary that was read in part would differ in what was not read.
bool readWhole(const DiffOptions& options, int index, Supervisor& supervisor, Listing& listing)
{
    if (!supervisor.beginFile(index))
        return false;
    const bool isRead = readListing(options.files.at(index), options.input, listing);
    supervisor.endFile();
    return isRead && !listing.isPartial;
}

void writeDifferences(const DiffOptions& options, const ComparedFiles& files, const ByteSink& sink)
{
    switch (options.format) {
    case DiffOptions::Format::Text:
        return writeDiffText(files, sink);
    case DiffOptions::Format::Csv:
        return writeDiffCsv(files, options.forSpreadsheet, sink);
    case DiffOptions::Format::Json:
        break;
    }
    writeDiffJson(files, sink);
}

bool writeReport(const DiffOptions& options, const ComparedFiles& files)
{
    Output output(options.report);
    writeDiffPage(files, output.sink());
    return output.finish();
}

bool writeCrosswalkFile(const DiffOptions& options, const ComparedFiles& files)
{
    Output output(options.crosswalk);
    writeCrosswalk(makeCrosswalk(files.before, files.after), options.forSpreadsheet, output.sink());
    return output.finish();
}

bool writeAll(const DiffOptions& options, const ComparedFiles& files)
{
    if (!options.report.isEmpty() && !writeReport(options, files))
        return false;
    if (!options.crosswalk.isEmpty() && !writeCrosswalkFile(options, files))
        return false;
    Output output(options.output);
    writeDifferences(options, files, output.sink());
    return output.finish();
}

int compareFiles(const DiffOptions& options, Supervisor& supervisor)
{
    Listing before;
    Listing after;
    const bool isBeforeRead = readWhole(options, 0, supervisor, before);
    const bool isAfterRead = readWhole(options, 1, supervisor, after);
    if (!isBeforeRead || !isAfterRead)
        return Trouble;
    const QVector<Difference> differences = compareListings(before, after);
    if (!writeAll(options, { before, after, differences, options.onlyBreaking }))
        return Trouble;
    return differences.isEmpty() ? Equal : FoundDifferences;
}

// Whatever the supervisor reports but the work's own outcomes is trouble.
int compareSupervised(const DiffOptions& options)
{
    try {
        const int status = Supervisor(options.files).run([&](Supervisor& supervisor) {
            return compareFiles(options, supervisor);
        });
        if (status == FoundDifferences)
            return Different;
        return status == Equal ? Equal : Trouble;
    } catch (const std::exception& error) {
        Console::print(QStringLiteral("tessel: stopped: %1\n").arg(QLatin1String(error.what())));
        return Trouble;
    }
}

} // namespace

int runDiff(const QStringList& arguments)
{
    QCommandLineParser parser;
    DiffOptions options;
    if (const auto status = readCommandLine(arguments, parser, describe, readOptions, options))
        return *status;
    return compareSupervised(options);
}
