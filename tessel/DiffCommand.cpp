#include "DiffCommand.h"

#include "process/Console.h"
#include "process/FileNames.h"
#include "InputOptions.h"
#include "text/JsonWriter.h"
#include "listing/ListingDiff.h"
#include "process/Output.h"
#include "text/ShownText.h"
#include "process/Supervisor.h"

#include <QCommandLineParser>
#include <QHash>

#include <algorithm>
#include <exception>

namespace {

// Changes only when a reader of the JSON has to change.
constexpr int JsonVersion = 1;

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

const QCommandLineOption& formatOption()
{
    static const QCommandLineOption option({ QStringLiteral("f"), QStringLiteral("format") },
        QStringLiteral("How to tell: text (for people) or json."), QStringLiteral("format"),
        QStringLiteral("text"));
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
    parser.addOption(Console::helpOption());
    parser.addOptions({ formatOption(), Output::option() });
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
    const QString format = parser.value(formatOption());
    options.asJson = format == QLatin1String("json");
    if (!options.asJson && format != QLatin1String("text"))
        return QStringLiteral("unknown format '%1'; give text or json").arg(format);
    const QString mistake = readInputOptions(parser, options.input);
    return mistake.isNull() ? Output::readOption(parser, options.files, options.output) : mistake;
}

// ---- text

QString quoted(const QString& text)
{
    return text.isNull() ? QStringLiteral("none") : QLatin1Char('"') + text + QLatin1Char('"');
}

QString orNone(const QString& text)
{
    return text.isNull() ? QStringLiteral("none") : text;
}

QString propertyName(const QString& property)
{
    static const QHash<QString, QString> names {
        { QStringLiteral("recordTypeStart"), QStringLiteral("first column of the record type") },
        { QStringLiteral("recordTypeLength"), QStringLiteral("length of the record type") },
        { QStringLiteral("recordType"), QStringLiteral("record type") },
        { QStringLiteral("start"), QStringLiteral("first column") },
        { QStringLiteral("decimalChar"), QStringLiteral("decimal point in the data") },
        { QStringLiteral("occurrenceLabel"), QStringLiteral("label of the occurrence") },
        { QStringLiteral("missing"), QStringLiteral("missing codes") },
        { QStringLiteral("notApplicable"), QStringLiteral("not-applicable code") },
    };
    return names.value(property, property);
}

QString subjectOf(const Difference& difference)
{
    if (difference.variable.isNull()) {
        return difference.record.isNull() ? QStringLiteral("dictionary")
                                          : QStringLiteral("record ") + difference.record;
    }
    return difference.record.isNull() ? difference.variable
                                      : difference.record + QLatin1Char('.') + difference.variable;
}

QString codeOf(const Difference& difference)
{
    return difference.highCode.isNull() ? shownCode(difference.code)
                                        : difference.code + QLatin1Char(':') + difference.highCode;
}

QString changeText(const Difference& difference)
{
    const bool isLabel = difference.property == QLatin1String("label")
        || difference.property == QLatin1String("occurrenceLabel");
    const bool isCode = difference.property == QLatin1String("missing")
        || difference.property == QLatin1String("notApplicable");
    const auto shown = [&](const QString& text) {
        if (isLabel)
            return quoted(text);
        return isCode && !text.isNull() && text.trimmed().isEmpty()
            ? QLatin1Char('\'') + text + QLatin1Char('\'')
            : orNone(text);
    };
    return QStringLiteral("%1 %2 -> %3")
        .arg(propertyName(difference.property), shown(difference.before), shown(difference.after));
}

QString eventText(const Difference& difference)
{
    switch (difference.kind) {
    case DifferenceKind::RecordAdded:
    case DifferenceKind::VariableAdded:
        return QStringLiteral("added");
    case DifferenceKind::RecordRemoved:
    case DifferenceKind::VariableRemoved:
        return QStringLiteral("removed");
    case DifferenceKind::ValueAdded:
        return QStringLiteral("value %1 %2 added")
            .arg(codeOf(difference), quoted(difference.after));
    case DifferenceKind::ValueRemoved:
        return QStringLiteral("value %1 %2 removed")
            .arg(codeOf(difference), quoted(difference.before));
    case DifferenceKind::ValueChanged:
        return QStringLiteral("value %1: %2").arg(codeOf(difference), changeText(difference));
    case DifferenceKind::Moved:
        if (difference.property == QLatin1String("record")) {
            return QStringLiteral("moved from %1 to %2")
                .arg(difference.before.isNull() ? QStringLiteral("the identification items")
                                                : difference.before,
                    difference.after.isNull() ? QStringLiteral("the identification items")
                                              : difference.after);
        }
        return QStringLiteral("moved, ") + changeText(difference);
    default:
        return changeText(difference);
    }
}

int breakingIn(const QVector<Difference>& differences)
{
    return int(std::count_if(differences.cbegin(), differences.cend(),
        [](const Difference& difference) { return difference.breaks; }));
}

QByteArray asText(
    const Listing& before, const Listing& after, const QVector<Difference>& differences)
{
    QString text;
    for (const Difference& difference : differences) {
        const QString mark =
            difference.breaks ? QStringLiteral("breaks  ") : QStringLiteral("fits    ");
        text +=
            printable(mark + subjectOf(difference) + QLatin1String(": ") + eventText(difference))
            + QLatin1Char('\n');
    }
    if (differences.isEmpty()) {
        text += printable(
            QStringLiteral("No differences between %1 and %2.").arg(before.file, after.file));
    } else {
        text += printable(
            QStringLiteral("%1 from %2 to %3; %4 data that fits %2.")
                .arg(plural(differences.size(), QStringLiteral("difference")), before.file,
                    after.file,
                    breakingIn(differences) == 0
                        ? QStringLiteral("none breaks")
                        : QStringLiteral("%1 of them can break").arg(breakingIn(differences))));
    }
    return (text + QLatin1Char('\n')).toUtf8();
}

// ---- JSON

QJsonObject jsonOf(const Listing& listing)
{
    return { { QStringLiteral("file"), listing.file }, { QStringLiteral("kind"), listing.kind } };
}

QJsonObject jsonOf(const Difference& difference)
{
    return { { QStringLiteral("kind"), differenceName(difference.kind) },
        { QStringLiteral("breaks"), difference.breaks },
        { QStringLiteral("record"), textOrNull(difference.record) },
        { QStringLiteral("variable"), textOrNull(difference.variable) },
        { QStringLiteral("valueSet"), textOrNull(difference.valueSet) },
        { QStringLiteral("code"), textOrNull(difference.code) },
        { QStringLiteral("to"), textOrNull(difference.highCode) },
        { QStringLiteral("property"), textOrNull(difference.property) },
        { QStringLiteral("before"), textOrNull(difference.before) },
        { QStringLiteral("after"), textOrNull(difference.after) } };
}

void writeJson(const Listing& before, const Listing& after, const QVector<Difference>& differences,
    const ByteSink& sink)
{
    JsonWriter json(sink);
    json.beginObject({ { QStringLiteral("tesselDiff"), JsonVersion },
        { QStringLiteral("before"), jsonOf(before) }, { QStringLiteral("after"), jsonOf(after) },
        { QStringLiteral("breaking"), breakingIn(differences) } });
    json.beginList("differences");
    for (const Difference& difference : differences)
        json.add(jsonOf(difference));
    json.endList();
    json.endObject();
    json.finish();
}

// ---- work

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
    if (options.asJson)
        writeJson(before, after, differences, output.sink());
    else
        output.add(asText(before, after, differences));
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
    describe(parser);
    if (const auto status = Console::parseArguments(parser, arguments))
        return *status;
    DiffOptions options;
    const QString mistake = readOptions(parser, options);
    return mistake.isNull() ? compareSupervised(options) : Console::wrongUsage(mistake);
}
