#include "ExportCommand.h"

#include "CommandLine.h"
#include "process/Console.h"
#include "process/FileNames.h"
#include "writers/ExportWriters.h"
#include "writers/FieldWriters.h"
#include "InputOptions.h"
#include "reading/LabelledValues.h"
#include "process/Output.h"
#include "process/Supervisor.h"
#include "SpreadsheetOption.h"

#include <QCommandLineParser>

namespace {

enum class Target { Ddi, Sql, Csv, Json, Html };

struct ExportOptions {
    QString file;
    InputOptions input;
    Target target = Target::Ddi;
    SqlOptions sql;
    bool forSpreadsheet = false;
    QString output;
};

const QCommandLineOption& targetOption()
{
    static const QCommandLineOption option(QStringLiteral("to"),
        QStringLiteral("What to write: DDI-Codebook 2.5 XML, SQL statements that make tables, or a "
                       "codebook as CSV, JSON or a web page."),
        QStringLiteral("ddi|sql|csv|json|html"));
    return option;
}

const QCommandLineOption& dialectOption()
{
    static const QCommandLineOption option(QStringLiteral("dialect"),
        QStringLiteral("Database that the SQL is for."), QStringLiteral("sqlite|postgresql"),
        QStringLiteral("sqlite"));
    return option;
}

const QCommandLineOption& uniqueKeysOption()
{
    static const QCommandLineOption option(QStringLiteral("unique-keys"),
        QStringLiteral("Let no two rows of a table that has one row for a case have the same "
                       "identification; data that repeats a key, or lacks it, is then refused."));
    return option;
}

void describe(QCommandLineParser& parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "Writes a CSPro dictionary, or the dictionary of an SPSS or Stata file, in a\nform that "
        "other programs read.\n\n"
        "The result goes to standard output. What was not read as written, and names\n"
        "that had to change, are told on standard error.\n"
        "Exit status: 0 all was read, 1 the input failed, 2 wrong usage."));
    parser.addOptions({ targetOption(), dialectOption(), uniqueKeysOption(), spreadsheetOption(),
        Output::option() });
    parser.addOptions(inputOptions());
    parser.addPositionalArgument(QStringLiteral("file"),
        QStringLiteral(
            "CSPro dictionary (.dcf, .csdb), SPSS file (.sav, .zsav) or Stata file (.dta)."),
        QStringLiteral("FILE"));
}

bool readTarget(const QString& text, Target& target)
{
    if (text == QLatin1String("ddi"))
        target = Target::Ddi;
    else if (text == QLatin1String("sql"))
        target = Target::Sql;
    else if (text == QLatin1String("csv"))
        target = Target::Csv;
    else if (text == QLatin1String("json"))
        target = Target::Json;
    else if (text == QLatin1String("html"))
        target = Target::Html;
    else
        return false;
    return true;
}

QString readSqlOptions(const QCommandLineParser& parser, ExportOptions& options)
{
    for (const QCommandLineOption& option : { dialectOption(), uniqueKeysOption() }) {
        if (parser.isSet(option) && options.target != Target::Sql)
            return QStringLiteral("--%1 goes with --to sql only").arg(option.names().constFirst());
    }
    options.sql.hasUniqueKeys = parser.isSet(uniqueKeysOption());
    const QString dialect = parser.value(dialectOption());
    if (dialect == QLatin1String("postgresql"))
        options.sql.dialect = SqlDialect::PostgreSql;
    else if (dialect != QLatin1String("sqlite"))
        return QStringLiteral("--dialect takes sqlite or postgresql, not '%1'").arg(dialect);
    return QString();
}

QString readOptions(const QCommandLineParser& parser, ExportOptions& options)
{
    const QStringList files = FileNames::paths(parser.positionalArguments());
    if (files.isEmpty())
        return QStringLiteral("no file given");
    if (files.size() > 1)
        return QStringLiteral("one file is exported at a time, not %1").arg(files.size());
    options.file = files.constFirst();
    if (!parser.isSet(targetOption()))
        return QStringLiteral("--to is missing; give ddi, sql, csv, json or html");
    const QString target = parser.value(targetOption());
    if (!readTarget(target, options.target))
        return QStringLiteral("--to takes ddi, sql, csv, json or html, not '%1'").arg(target);
    QString mistake = readSqlOptions(parser, options);
    if (mistake.isNull()) {
        mistake = readSpreadsheetOption(
            parser, "--to csv", options.target == Target::Csv, options.forSpreadsheet);
    }
    if (mistake.isNull())
        mistake = readInputOptions(parser, options.input);
    return mistake.isNull() ? Output::readOption(parser, files, options.output) : mistake;
}

// The codebook as CSV and JSON is the listing with its values.
void writeCodebook(
    const Listing& listing, ListingFormat::Kind kind, bool forSpreadsheet, const ByteSink& sink)
{
    ListingFormat format;
    format.kind = kind;
    format.forSpreadsheet = forSpreadsheet;
    format.withValues = true;
    writeListings({ listing }, format, sink);
}

// The notes are told before the result is written, whose reader may end early.
QByteArray makeSql(const Listing& listing, const ExportOptions& options)
{
    tessel::SqlNotes notes;
    const QByteArray bytes = writeSql(listing, options.sql, notes);
    for (const tessel::SqlNote& note : qAsConst(notes)) {
        Console::tell(
            options.file, 0, Console::Severity::Note, noteText(note), reasonText(note.reason));
    }
    return bytes;
}

void write(const Listing& listing, const ExportOptions& options, const ByteSink& sink)
{
    switch (options.target) {
    case Target::Ddi:
        return sink(writeDdi(listing));
    case Target::Sql:
        return sink(makeSql(listing, options));
    case Target::Html:
        return sink(writeHtml(listing));
    case Target::Csv:
        return writeCodebook(listing, ListingFormat::Kind::Csv, options.forSpreadsheet, sink);
    case Target::Json:
        return writeCodebook(listing, ListingFormat::Kind::Json, false, sink);
    }
}

// False, and told, when nothing can be exported.
bool readExported(const ExportOptions& options, Listing& listing)
{
    if (!readListing(options.file, options.input, listing))
        return false;
    if (options.target == Target::Sql && !findListedValues(listing)) {
        Console::tell(options.file, 0, Console::Severity::Note,
            QStringLiteral(
                "not all rows were read, so no column refers to a table of value labels"));
    }
    return true;
}

int exportFile(const ExportOptions& options, Supervisor& supervisor)
{
    if (!supervisor.beginFile(0))
        return InputFailed;
    Listing listing;
    const bool isRead = readExported(options, listing);
    supervisor.endFile();
    if (!isRead)
        return InputFailed;
    Output output(options.output);
    write(listing, options, output.sink());
    return output.finish() && !listing.isPartial ? AllRead : InputFailed;
}

} // namespace

int runExport(const QStringList& arguments)
{
    QCommandLineParser parser;
    ExportOptions options;
    if (const auto status = readCommandLine(arguments, parser, describe, readOptions, options))
        return *status;
    return Supervisor({ options.file }).run([&](Supervisor& supervisor) {
        return exportFile(options, supervisor);
    });
}
