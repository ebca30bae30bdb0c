#include "FieldsCommand.h"

#include "Console.h"
#include "DictionaryFile.h"
#include "FieldListing.h"
#include "FieldWriters.h"
#include "InputFile.h"
#include "Output.h"
#include "StatListing.h"
#include "Supervisor.h"

#include <model_Tessel/CSProDataImport.h>

#include <QCommandLineParser>
#include <QFileInfo>
#include <QTextCodec>

#include <algorithm>
#include <cstdio>

namespace {

struct FieldsOptions {
    QStringList files;
    FileKind kind = FileKind::Unknown; // Unknown: as the content says
    ListingFormat format;
    DictionaryOptions dictionary;
    QString output;
};

const QCommandLineOption& formatOption()
{
    static const QCommandLineOption option({ QStringLiteral("f"), QStringLiteral("format") },
        QStringLiteral("How to list: table (for people), csv or json."), QStringLiteral("format"),
        QStringLiteral("table"));
    return option;
}

const QCommandLineOption& valuesOption()
{
    static const QCommandLineOption option(
        QStringLiteral("values"), QStringLiteral("List the value labels too."));
    return option;
}

const QCommandLineOption& outputOption()
{
    static const QCommandLineOption option({ QStringLiteral("o"), QStringLiteral("output") },
        QStringLiteral("Write to a file, whole or not at all."), QStringLiteral("file"));
    return option;
}

const QCommandLineOption& typeOption()
{
    static const QCommandLineOption option(QStringLiteral("type"),
        QStringLiteral("Kind of the files; found by their content when not given."),
        QStringLiteral("cspro|spss|stata"));
    return option;
}

const QCommandLineOption& rulesOption()
{
    static const QCommandLineOption option(QStringLiteral("rules"),
        QStringLiteral("How to read: as written, or with the established rules, to see what a "
                       "program sees that uses the library's default."),
        QStringLiteral("written|established"), QStringLiteral("written"));
    return option;
}

const QCommandLineOption& languageOption()
{
    static const QCommandLineOption option(QStringLiteral("language"),
        QStringLiteral("Language of the labels, for example FR, where a dictionary has several."),
        QStringLiteral("name"));
    return option;
}

const QCommandLineOption& decimalsOption()
{
    static const QCommandLineOption option(QStringLiteral("decimals"),
        QStringLiteral("With the established rules, value sets with decimal codes: drop them "
                       "(no), keep them with 0 in place of such codes (yes), or ask. On a "
                       "terminal ask is the default, elsewhere no."),
        QStringLiteral("yes|no|ask"));
    return option;
}

const QCommandLineOption& encodingOption()
{
    static const QCommandLineOption option(QStringLiteral("encoding"),
        QStringLiteral("Encoding of dictionaries without a byte-order mark, for example "
                       "windows-1252; found when not given."),
        QStringLiteral("name"));
    return option;
}

void describe(QCommandLineParser& parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "Lists the fields of CSPro dictionaries and the variables of SPSS and Stata\nfiles.\n\n"
        "The listing goes to standard output. What was not read as written is\n"
        "told on standard error, by file and line.\n"
        "Exit status: 0 all was read, 1 an input failed, 2 wrong usage."));
    parser.addOption(Console::helpOption());
    parser.addOptions({ formatOption(), valuesOption(), outputOption(), typeOption(), rulesOption(),
        languageOption(), decimalsOption(), encodingOption() });
    parser.addPositionalArgument(QStringLiteral("dictionary"),
        QStringLiteral("CSPro dictionary (.dcf), SPSS file (.sav, .zsav) or Stata file (.dta)."),
        QStringLiteral("DICTIONARY..."));
}

bool readFormat(const QString& text, ListingFormat::Kind& kind)
{
    if (text == QLatin1String("table"))
        kind = ListingFormat::Kind::Table;
    else if (text == QLatin1String("csv"))
        kind = ListingFormat::Kind::Csv;
    else if (text == QLatin1String("json"))
        kind = ListingFormat::Kind::Json;
    else
        return false;
    return true;
}

bool readDecimals(const QString& text, DictionaryOptions::Decimals& decimals)
{
    using Decimals = DictionaryOptions::Decimals;
    if (text.isNull())
        decimals = Console::canAsk() ? Decimals::Ask : Decimals::No;
    else if (text == QLatin1String("yes"))
        decimals = Decimals::Yes;
    else if (text == QLatin1String("no"))
        decimals = Decimals::No;
    else if (text == QLatin1String("ask"))
        decimals = Decimals::Ask;
    else
        return false;
    return true;
}

bool isSameFile(const QString& first, const QString& second)
{
    const QString path = QFileInfo(first).canonicalFilePath();
    return !path.isEmpty() && path == QFileInfo(second).canonicalFilePath();
}

// Null when the options make sense, else what is wrong with them.
QString readDictionaryOptions(const QCommandLineParser& parser, DictionaryOptions& options)
{
    const QString rules = parser.value(rulesOption());
    options.asWritten = rules == QLatin1String("written");
    if (!options.asWritten && rules != QLatin1String("established"))
        return QStringLiteral("--rules takes written or established, not '%1'").arg(rules);
    const QString decimals =
        parser.isSet(decimalsOption()) ? parser.value(decimalsOption()) : QString();
    if (!readDecimals(decimals, options.decimals))
        return QStringLiteral("--decimals takes yes, no or ask, not '%1'").arg(decimals);
    options.language = parser.value(languageOption());
    options.encoding = parser.value(encodingOption()).toLatin1();
    if (parser.isSet(encodingOption()) && !QTextCodec::codecForName(options.encoding)) {
        return QStringLiteral("unknown encoding '%1'; names are for example UTF-8, windows-1252, "
                              "ISO-8859-1 and UTF-16")
            .arg(parser.value(encodingOption()));
    }
    return QString();
}

QString readOutput(const QCommandLineParser& parser, FieldsOptions& options)
{
    options.output = parser.value(outputOption());
    if (parser.isSet(outputOption()) && options.output.isEmpty())
        return QStringLiteral("--output needs the name of a file");
    for (const QString& file : qAsConst(options.files)) {
        if (isSameFile(options.output, file))
            return QStringLiteral("--output %1 would replace an input").arg(options.output);
    }
    return QString();
}

QString readOptions(const QCommandLineParser& parser, FieldsOptions& options)
{
    options.files = parser.positionalArguments();
    if (options.files.isEmpty())
        return QStringLiteral("no dictionary given");
    const QString format = parser.value(formatOption());
    if (!readFormat(format, options.format.kind))
        return QStringLiteral("unknown format '%1'; give table, csv or json").arg(format);
    options.format.withValues = parser.isSet(valuesOption());
    options.format.width = Console::tableWidth();
    options.kind = kindOfName(parser.value(typeOption()));
    if (parser.isSet(typeOption()) && options.kind == FileKind::Unknown) {
        return QStringLiteral("--type takes cspro, spss or stata, not '%1'")
            .arg(parser.value(typeOption()));
    }
    const QString mistake = readDictionaryOptions(parser, options.dictionary);
    return mistake.isNull() ? readOutput(parser, options) : mistake;
}

bool listFile(const QString& file, const FieldsOptions& options, Listing& listing)
{
    if (!checkInput(file))
        return false;
    const FileKind kind = options.kind == FileKind::Unknown ? kindOfContent(file) : options.kind;
    if (kind != FileKind::CSPro)
        return listStatFile(file, kind, options.dictionary.asWritten, listing);
    const auto importer = openDictionary(file, options.dictionary);
    if (!importer)
        return false;
    listing = listFields(file, *importer);
    return true;
}

int listFiles(const FieldsOptions& options, Supervisor& supervisor)
{
    int status = AllRead;
    QVector<Listing> listings;
    for (int i = 0; i < options.files.size(); ++i) {
        if (!supervisor.beginFile(i))
            continue;
        Listing listing;
        const bool isListed = listFile(options.files.at(i), options, listing);
        if (isListed)
            listings.append(listing);
        if (!isListed || listing.isPartial)
            status = InputFailed;
        supervisor.endFile();
    }
    if (listings.isEmpty())
        return status;
    if (!Output(options.output).write(writeListings(listings, options.format)))
        return InputFailed;
    return status;
}

} // namespace

int runFields(const QStringList& arguments)
{
    QCommandLineParser parser;
    describe(parser);
    if (!parser.parse(arguments))
        return Console::wrongUsage(parser.errorText());
    if (parser.isSet(Console::helpOption())) {
        std::fputs(qUtf8Printable(parser.helpText()), stdout);
        return AllRead;
    }
    FieldsOptions options;
    const QString mistake = readOptions(parser, options);
    if (!mistake.isNull())
        return Console::wrongUsage(mistake);
    return Supervisor(options.files).run([&](Supervisor& supervisor) {
        return listFiles(options, supervisor);
    });
}
