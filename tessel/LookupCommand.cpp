#include "LookupCommand.h"

#include "CommandLine.h"
#include "process/Console.h"
#include "process/FileNames.h"
#include "reading/ReadInput.h"
#include "FormatOption.h"
#include "InputOptions.h"
#include "lookups/LookupLabels.h"
#include "lookups/LookupReport.h"
#include "lookups/LookupWriters.h"
#include "lookups/SeparatorGuess.h"
#include "process/Output.h"
#include "process/Supervisor.h"
#include "SpreadsheetOption.h"

#include <model_Tessel/Lookup.h>
#include <model_Tessel/ReportLookup.h>

#include <QCommandLineParser>
#include <QFileInfo>

namespace {

struct LookupOptions {
    QString file;
    int separator = -1; // the library's code for it; -1: guess
    QByteArray encoding;
    ListingFormat format;
    bool withFrequencies = false;
    LabelSource against;
    QString report; // empty: none
    QString id;
    QString label;
    QString output;
};

const QCommandLineOption& separatorOption()
{
    static const QCommandLineOption option({ QStringLiteral("s"), QStringLiteral("separator") },
        QStringLiteral("What stands between key and value; guessed from the lines when not given."),
        TOxLookup::separatorNames().join(QLatin1Char('|')));
    return option;
}

const QCommandLineOption& frequenciesOption()
{
    static const QCommandLineOption option(QStringLiteral("frequencies"),
        QStringLiteral("List the values with how many keys carry each."));
    return option;
}

const QCommandLineOption& againstOption()
{
    static const QCommandLineOption option(QStringLiteral("against"),
        QStringLiteral("Compare the keys with the value labels of a variable of a CSPro "
                       "dictionary, SPSS or Stata file."),
        QStringLiteral("file:variable"));
    return option;
}

const QCommandLineOption& againstEncodingOption()
{
    static const QCommandLineOption option(QStringLiteral("against-encoding"),
        QStringLiteral("Encoding of the CSPro dictionary of --against without a byte-order mark; "
                       "found when not given."),
        QStringLiteral("name"));
    return option;
}

const QCommandLineOption& encodingOption()
{
    static const QCommandLineOption option(QStringLiteral("encoding"),
        QStringLiteral("Encoding of a lookup without a byte-order mark, for example windows-1252; "
                       "found when not given."),
        QStringLiteral("name"));
    return option;
}

const QCommandLineOption& reportOption()
{
    static const QCommandLineOption option(QStringLiteral("report"),
        QStringLiteral("Also write a page to look at in a browser, frequencies included."),
        QStringLiteral("file.html"));
    return option;
}

const QCommandLineOption& idOption()
{
    static const QCommandLineOption option(QStringLiteral("id"),
        QStringLiteral("Identification of the lookup in the report; the file's name when not "
                       "given."),
        QStringLiteral("text"));
    return option;
}

const QCommandLineOption& labelOption()
{
    static const QCommandLineOption option(QStringLiteral("label"),
        QStringLiteral("Label of the lookup in the report."), QStringLiteral("text"));
    return option;
}

void describe(QCommandLineParser& parser)
{
    parser.setApplicationDescription(
        QStringLiteral("Checks a lookup file: a key, a separator and a value on each line, no key\n"
                       "twice, all keys of one length.\n\n"
                       "What is found goes to standard output.\n"
                       "Exit status: 0 the lookup is consistent, 1 it is not or cannot be read,\n"
                       "2 wrong usage."));
    parser.addOptions({ separatorOption(), listFormatOption(), spreadsheetOption(),
        frequenciesOption(), againstOption(), againstEncodingOption(), reportOption(), idOption(),
        labelOption(), encodingOption(), Output::option() });
    parser.addPositionalArgument(
        QStringLiteral("file"), QStringLiteral("Lookup file."), QStringLiteral("FILE"));
}

QString readAgainst(const QCommandLineParser& parser, LookupOptions& options)
{
    if (!parser.isSet(againstOption())) {
        return parser.isSet(againstEncodingOption())
            ? QStringLiteral("--against-encoding is for --against")
            : QString();
    }
    const QString text = parser.value(againstOption());
    const int colon = text.lastIndexOf(QLatin1Char(':'));
    options.against.file = FileNames::path(text.left(qMax(colon, 0)));
    options.against.variable = text.mid(colon + 1).trimmed();
    if (options.against.file.isEmpty() || options.against.variable.isEmpty())
        return QStringLiteral("--against takes FILE:VARIABLE, not '%1'").arg(text);
    return readEncoding(parser, againstEncodingOption(), options.against.encoding);
}

QString readReading(const QCommandLineParser& parser, LookupOptions& options)
{
    const QString separator = parser.value(separatorOption());
    options.separator = TOxLookup::separatorNames().indexOf(separator);
    if (parser.isSet(separatorOption()) && options.separator < 0) {
        return QStringLiteral("--separator takes %1, not '%2'").arg(separatorWords(), separator);
    }
    return readEncoding(parser, encodingOption(), options.encoding);
}

QString readTargets(const QCommandLineParser& parser, LookupOptions& options)
{
    const QStringList inputs { options.file, options.against.file };
    QString mistake = Output::readOption(parser, inputs, options.output);
    if (!mistake.isNull())
        return mistake;
    options.report = FileNames::path(parser.value(reportOption()));
    if (parser.isSet(reportOption()) && options.report.isEmpty())
        return QStringLiteral("--report needs the name of a file");
    options.id = parser.isSet(idOption()) ? parser.value(idOption())
                                          : QFileInfo(options.file).completeBaseName();
    options.label = parser.value(labelOption());
    if (!Output::checkPath(QString(), options.report, { options.output }).isNull())
        return QStringLiteral("--report and --output name the same file");
    return Output::checkPath(QStringLiteral("--report"), options.report, inputs);
}

QString readOptions(const QCommandLineParser& parser, LookupOptions& options)
{
    const QStringList files = FileNames::paths(parser.positionalArguments());
    if (files.size() != 1)
        return files.isEmpty() ? QStringLiteral("no lookup file given")
                               : QStringLiteral("more than one lookup file given");
    options.file = files.constFirst();
    options.withFrequencies = parser.isSet(frequenciesOption());
    QString mistake = readListOptions(parser, options.format);
    if (mistake.isNull())
        mistake = readAgainst(parser, options);
    if (mistake.isNull())
        mistake = readReading(parser, options);
    return mistake.isNull() ? readTargets(parser, options) : mistake;
}

// The separator wanted, or the one that the lines suggest, which is told.
bool chooseSeparator(const LookupOptions& options, LookupTask& task)
{
    task.separator = options.separator;
    if (task.separator >= 0)
        return true;
    task.separator = guessSeparator(task.file.sampleLines);
    if (task.separator < 0) {
        return failInput(options.file, 1,
            QStringLiteral(
                "no separator is found from this line on; a lookup has a key, a %1, and a "
                "value on each line")
                .arg(separatorWords()));
    }
    task.isGuessed = true;
    Console::tell(options.file, 0, Console::Severity::Note,
        QStringLiteral("the separator is taken to be %1; if it is not, name it with --separator")
            .arg(TOxLookup::separatorNames().at(task.separator)));
    return true;
}

bool writeReport(const LookupOptions& options, const LookupOutcome& outcome)
{
    ReportLookup report;
    report.setIdValue(options.id);
    report.setLabelValue(options.label);
    report.setDataFileValue(options.file);
    report.setConsistency(checkAndCount);
    return Output(options.report).write(lookupPage(report, outcome));
}

bool writeAll(const LookupOptions& options, LookupOutcome& outcome)
{
    if (!options.report.isEmpty() && !writeReport(options, outcome))
        return false;
    if (!options.withFrequencies)
        outcome.frequencies.reset();
    Output output(options.output);
    writeLookup(outcome, options.format, output.sink());
    return output.finish();
}

int check(const LookupOptions& options, Supervisor& supervisor)
{
    LookupTask task;
    ListedField variable;
    if (!options.against.file.isEmpty()) {
        if (!supervisor.beginFile(0))
            return InputFailed;
        const bool isRead = readVariable(options.against, variable);
        supervisor.endFile();
        if (!isRead)
            return InputFailed;
        task.variable = &variable;
    }
    if (!supervisor.beginFile(1, Supervisor::Time::Unlimited))
        return InputFailed;
    if (!examineLookup(options.file, options.encoding, task.file)
        || !chooseSeparator(options, task))
        return InputFailed;
    task.countsValues = options.withFrequencies || !options.report.isEmpty();
    // They end with the process: to delete millions of records would take a third of its time.
    static auto* const lookup = new TOxLookup;
    static auto* const kept = new LookupOutcome;
    LookupOutcome& outcome = *kept;
    if (!checkLookup(task, *lookup, outcome))
        return InputFailed;
    supervisor.endFile();
    if (outcome.comparison)
        outcome.comparison->file = options.against.file;
    const bool isConsistent = outcome.isConsistent();
    return writeAll(options, outcome) && isConsistent ? AllRead : InputFailed;
}

} // namespace

int runLookup(const QStringList& arguments)
{
    QCommandLineParser parser;
    LookupOptions options;
    if (const auto status = readCommandLine(arguments, parser, describe, readOptions, options))
        return *status;
    return Supervisor({ options.against.file, options.file }).run([&](Supervisor& supervisor) {
        return check(options, supervisor);
    });
}
