#include "FormatOption.h"

#include "process/Console.h"
#include "SpreadsheetOption.h"

#include <QCommandLineParser>

namespace {

QStringList optionNames()
{
    return { QStringLiteral("f"), QStringLiteral("format") };
}

} // namespace

const QCommandLineOption& listFormatOption()
{
    static const QCommandLineOption option(optionNames(),
        QStringLiteral("How to list: table (for people), csv or json."), QStringLiteral("format"),
        QStringLiteral("table"));
    return option;
}

QString readListFormat(const QCommandLineParser& parser, ListingFormat::Kind& kind)
{
    const QString format = parser.value(listFormatOption());
    if (format == QLatin1String("table"))
        kind = ListingFormat::Kind::Table;
    else if (format == QLatin1String("csv"))
        kind = ListingFormat::Kind::Csv;
    else if (format == QLatin1String("json"))
        kind = ListingFormat::Kind::Json;
    else
        return QStringLiteral("unknown format '%1'; give table, csv or json").arg(format);
    return QString();
}

QString readListOptions(const QCommandLineParser& parser, ListingFormat& format)
{
    format.width = Console::tableWidth();
    QString mistake = readListFormat(parser, format.kind);
    if (!mistake.isNull())
        return mistake;
    const bool writesCsv = format.kind == ListingFormat::Kind::Csv;
    return readSpreadsheetOption(parser, "--format csv", writesCsv, format.forSpreadsheet);
}

QCommandLineOption textFormatOption(const QString& verb)
{
    return { optionNames(), QStringLiteral("How to %1: text (for people) or json.").arg(verb),
        QStringLiteral("format"), QStringLiteral("text") };
}

QString readTextFormat(const QCommandLineParser& parser, bool& asJson)
{
    const QString format = parser.value(QStringLiteral("format"));
    asJson = format == QLatin1String("json");
    if (!asJson && format != QLatin1String("text"))
        return QStringLiteral("unknown format '%1'; give text or json").arg(format);
    return QString();
}
