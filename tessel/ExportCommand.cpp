#include "ExportCommand.h"

#include "CommandLine.h"
#include "process/Console.h"
#include "process/FileNames.h"
#include "writers/ExportWriters.h"
#include "writers/FieldWriters.h"
#include "writers/HtmlBook.h"
#include "writers/SetupWriters.h"
#include "InputOptions.h"
#include "reading/LabelledValues.h"
#include "reading/ReadDataDictionary.h"
#include "process/Output.h"
#include "process/Supervisor.h"
#include "SpreadsheetOption.h"

#include <QCommandLineParser>

#include <iterator>
#include <optional>

namespace {

enum class Target { Ddi, Sql, Csv, Json, Html, StataDo, SpssSyntax, RScript, Sas };

struct TargetName {
    Target target;
    const char* name;
};

constexpr TargetName targetNames[] = { { Target::Ddi, "ddi" }, { Target::Sql, "sql" },
    { Target::Csv, "csv" }, { Target::Json, "json" }, { Target::Html, "html" },
    { Target::StataDo, "stata-do" }, { Target::SpssSyntax, "spss-syntax" },
    { Target::RScript, "r-script" }, { Target::Sas, "sas" } };

// All of them, as the help or a sentence has them.
QString allTargets(const QString& separator, const QString& lastSeparator)
{
    QString text;
    for (const TargetName& entry : targetNames) {
        const bool isLast = &entry == std::end(targetNames) - 1;
        if (!text.isEmpty())
            text += isLast ? lastSeparator : separator;
        text += QLatin1String(entry.name);
    }
    return text;
}

QString targetList()
{
    return allTargets(QStringLiteral(", "), QStringLiteral(" or "));
}

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
        QStringLiteral("What to write: ddi (DDI-Codebook 2.5 XML), sql (statements that make "
                       "tables), a codebook as csv, json or html, or a program that reads the text "
                       "data of a CSPro dictionary: stata-do, spss-syntax, r-script or sas."),
        QStringLiteral("form"));
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
        "other programs read, or as a program that reads its data.\n\n"
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
    for (const TargetName& entry : targetNames) {
        if (text == QLatin1String(entry.name)) {
            target = entry.target;
            return true;
        }
    }
    return false;
}

// Null for what is no program that reads data.
std::optional<tessel::StatProgram> programOf(Target target)
{
    switch (target) {
    case Target::StataDo:
        return tessel::StatProgram::Stata;
    case Target::SpssSyntax:
        return tessel::StatProgram::Spss;
    case Target::RScript:
        return tessel::StatProgram::R;
    case Target::Sas:
        return tessel::StatProgram::Sas;
    default:
        return std::nullopt;
    }
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
        return QStringLiteral("--to is missing; give %1").arg(targetList());
    const QString target = parser.value(targetOption());
    if (!readTarget(target, options.target))
        return QStringLiteral("--to takes %1, not '%2'").arg(targetList(), target);
    QString mistake = readSqlOptions(parser, options);
    if (mistake.isNull()) {
        mistake = readSpreadsheetOption(
            parser, "--to csv", options.target == Target::Csv, options.forSpreadsheet);
    }
    if (mistake.isNull())
        mistake = readInputOptions(parser, options.input);
    if (mistake.isNull() && programOf(options.target) && !options.input.dictionary.asWritten)
        mistake = QStringLiteral("--to %1 reads dictionaries as they are written").arg(target);
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

// All of them for DDI, which has texts of several languages; else there is one.
void write(const QVector<Listing>& languages, const ExportOptions& options, const ByteSink& sink)
{
    const Listing& listing = languages.constFirst();
    switch (options.target) {
    case Target::Ddi:
        return sink(writeDdi(languages));
    case Target::Sql:
        return sink(makeSql(listing, options));
    case Target::Html:
        return sink(writeBook({ Book({ listing }) }, { false, {} }));
    case Target::Csv:
        return writeCodebook(listing, ListingFormat::Kind::Csv, options.forSpreadsheet, sink);
    case Target::Json:
        return writeCodebook(listing, ListingFormat::Kind::Json, false, sink);
    default:
        return; // a program, which is made of no listing
    }
}

QByteArray makeProgram(const tessel::DataDictionary& dictionary, const ExportOptions& options,
    tessel::StatProgram program)
{
    const SetupPlan plan(dictionary, options.file, program);
    for (const SetupNote& note : plan.notes) {
        Console::tell(
            options.file, 0, Console::Severity::Note, noteText(note, plan.program), groupOf(note));
    }
    switch (plan.program) {
    case tessel::StatProgram::Stata:
        return writeStataDo(plan);
    case tessel::StatProgram::Spss:
        return writeSpssSyntax(plan);
    case tessel::StatProgram::Sas:
        return writeSas(plan);
    case tessel::StatProgram::R:
        break;
    }
    return writeRScript(plan);
}

// False, and told, when nothing can be exported.
bool readExported(const ExportOptions& options, QVector<Listing>& languages)
{
    if (options.target == Target::Ddi)
        return readLanguages(options.file, options.input, languages);
    languages.resize(1);
    Listing& listing = languages.first();
    if (!readListing(options.file, options.input, listing))
        return false;
    if (options.target == Target::Sql && !findListedValues(listing)) {
        Console::tell(options.file, 0, Console::Severity::Note,
            QStringLiteral(
                "not all rows were read, so no column refers to a table of value labels"));
    }
    return true;
}

int exportProgram(const ExportOptions& options, tessel::StatProgram program, Supervisor& supervisor)
{
    if (!supervisor.beginFile(0))
        return InputFailed;
    tessel::DataDictionary dictionary;
    const bool isRead = readDataDictionary(options.file, options.input, dictionary);
    supervisor.endFile();
    return isRead && Output(options.output).write(makeProgram(dictionary, options, program))
        ? AllRead
        : InputFailed;
}

int exportFile(const ExportOptions& options, Supervisor& supervisor)
{
    if (!supervisor.beginFile(0))
        return InputFailed;
    QVector<Listing> languages;
    const bool isRead = readExported(options, languages);
    supervisor.endFile();
    if (!isRead)
        return InputFailed;
    Output output(options.output);
    write(languages, options, output.sink());
    return output.finish() && !languages.constFirst().isPartial ? AllRead : InputFailed;
}

} // namespace

int runExport(const QStringList& arguments)
{
    QCommandLineParser parser;
    ExportOptions options;
    if (const auto status = readCommandLine(arguments, parser, describe, readOptions, options))
        return *status;
    return Supervisor({ options.file }).run([&](Supervisor& supervisor) {
        const auto program = programOf(options.target);
        return program ? exportProgram(options, *program, supervisor)
                       : exportFile(options, supervisor);
    });
}
