#include "text/CsvText.h"

namespace {

QString csvCell(const QString& text)
{
    const bool needsQuotes = text.contains(QLatin1Char(',')) || text.contains(QLatin1Char('"'))
        || text.contains(QLatin1Char('\n')) || text.contains(QLatin1Char('\r'));
    if (!needsQuotes)
        return text;
    return QLatin1Char('"') + QString(text).replace(QLatin1Char('"'), QLatin1String("\"\""))
        + QLatin1Char('"');
}

} // namespace

QByteArray csvLine(const QStringList& cells)
{
    QStringList quoted;
    quoted.reserve(cells.size());
    for (const QString& cell : cells)
        quoted.append(csvCell(cell));
    return quoted.join(QLatin1Char(',')).toUtf8() + "\r\n";
}
