#include "FieldsCommand.h"

#include "CommandLine.h"
#include "process/FileNames.h"
#include "writers/FieldWriters.h"
#include "FormatOption.h"
#include "InputOptions.h"
#include "process/Output.h"
#include "process/Supervisor.h"
#include "SpreadsheetOption.h"

#include <QCommandLineParser>

namespace {

struct FieldsOptions {
    QStringList files;
    InputOptions input;
    ListingFormat format;
    QString output;
};

const QCommandLineOption& valuesOption()
{
    static const QCommandLineOption option(
        QStringLiteral("values"), QStringLiteral("List the value labels too."));
    return option;
}

void describe(QCommandLineParser& parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "Lists the fields of CSPro dictionaries and the variables of SPSS and Stata\nfiles.\n\n"
        "The listing goes to standard output. What was not read as written is\n"
        "told on standard error, by file and line.\n"
        "Exit status: 0 all was read, 1 an input failed, 2 wrong usage."));
    parser.addOptions(
        { listFormatOption(), valuesOption(), spreadsheetOption(), Output::option() });
    parser.addOptions(inputOptions());
    parser.addPositionalArgument(QStringLiteral("dictionary"),
        QStringLiteral(
            "CSPro dictionary (.dcf, .csdb), SPSS file (.sav, .zsav) or Stata file (.dta)."),
        QStringLiteral("DICTIONARY..."));
}

QString readOptions(const QCommandLineParser& parser, FieldsOptions& options)
{
    options.files = FileNames::paths(parser.positionalArguments());
    if (options.files.isEmpty())
        return QStringLiteral("no dictionary given");
    options.format.withValues = parser.isSet(valuesOption());
    QString mistake = readListOptions(parser, options.format);
    if (mistake.isNull())
        mistake = readInputOptions(parser, options.input);
    return mistake.isNull() ? Output::readOption(parser, options.files, options.output) : mistake;
}

int listFiles(const FieldsOptions& options, Supervisor& supervisor)
{
    int status = AllRead;
    QVector<Listing> listings;
    for (int i = 0; i < options.files.size(); ++i) {
        if (!supervisor.beginFile(i))
            continue;
        Listing listing;
        const bool isListed = readListing(options.files.at(i), options.input, listing);
        if (isListed)
            listings.append(listing);
        if (!isListed || listing.isPartial)
            status = InputFailed;
        supervisor.endFile();
    }
    if (listings.isEmpty())
        return status;
    Output output(options.output);
    writeListings(listings, options.format, output.sink());
    return output.finish() ? status : InputFailed;
}

} // namespace

int runFields(const QStringList& arguments)
{
    QCommandLineParser parser;
    FieldsOptions options;
    if (const auto status = readCommandLine(arguments, parser, describe, readOptions, options))
        return *status;
    return Supervisor(options.files).run([&](Supervisor& supervisor) {
        return listFiles(options, supervisor);
    });
}
