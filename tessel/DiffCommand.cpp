#include "DiffCommand.h"

#include "CommandLine.h"
#include "process/Console.h"
#include "process/FileNames.h"
#include "FormatOption.h"
#include "InputOptions.h"
#include "listing/ListingDiff.h"
#include "process/Output.h"
#include "process/Supervisor.h"
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
    bool asJson = false;
    QString output;
};

void describe(QCommandLineParser& parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "Compares two dictionaries, also of different kinds, and tells which differences\n"
        "break data that fits the first.\n\n"
        "The differences go to standard output. What was not read as written is\n"
        "told on standard error, by file and line.\n"
        "Exit status: 0 they are equal, 1 they differ, 2 wrong usage or a failure."));
    parser.addOptions({ textFormatOption(QStringLiteral("tell")), Output::option() });
    parser.addOptions(inputOptions());
    parser.addPositionalArgument(QStringLiteral("before"),
        QStringLiteral("Dictionary that the data fits: .dcf, .sav, .zsav or .dta."),
        QStringLiteral("BEFORE"));
    parser.addPositionalArgument(QStringLiteral("after"),
        QStringLiteral("Dictionary to compare it with, of any of these kinds."),
        QStringLiteral("AFTER"));
}

QString readOptions(const QCommandLineParser& parser, DiffOptions& options)
{
    options.files = FileNames::paths(parser.positionalArguments());
    if (options.files.size() != 2)
        return QStringLiteral("give two dictionaries, not %1").arg(options.files.size());
    QString mistake = readTextFormat(parser, options.asJson);
    if (mistake.isNull())
        mistake = readInputOptions(parser, options.input);
    return mistake.isNull() ? Output::readOption(parser, options.files, options.output) : mistake;
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

int compareFiles(const DiffOptions& options, Supervisor& supervisor)
{
    Listing before;
    Listing after;
    const bool isBeforeRead = readWhole(options, 0, supervisor, before);
    const bool isAfterRead = readWhole(options, 1, supervisor, after);
    if (!isBeforeRead || !isAfterRead)
        return Trouble;
    const QVector<Difference> differences = compareListings(before, after);
    Output output(options.output);
    const ComparedFiles files { before, after, differences };
    if (options.asJson)
        writeDiffJson(files, output.sink());
    else
        writeDiffText(files, output.sink());
    if (!output.finish())
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
