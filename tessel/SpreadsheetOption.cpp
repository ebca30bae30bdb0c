#include "SpreadsheetOption.h"

#include <QCommandLineParser>

const QCommandLineOption& spreadsheetOption()
{
    static const QCommandLineOption option(QStringLiteral("spreadsheet"),
        QStringLiteral("CSV to open in a spreadsheet: with a byte-order mark, and an apostrophe "
                       "before cells that would run as formulas."));
    return option;
}

QString readSpreadsheetOption(
    const QCommandLineParser& parser, const char* csv, bool writesCsv, bool& forSpreadsheet)
{
    forSpreadsheet = parser.isSet(spreadsheetOption());
    if (forSpreadsheet && !writesCsv)
        return QStringLiteral("--spreadsheet goes with %1 only").arg(QLatin1String(csv));
    return QString();
}
