#include "checking/CountsText.h"

#include "text/ShownText.h"

using namespace tessel;

namespace {

// Ends a line of counts.
QString leftOut(qint64 count)
{
    return count > 0 ? QStringLiteral(" + %1 left out\n").arg(count) : QStringLiteral("\n");
}

} // namespace

QString countsText(const DataSource& source, const SourceCounts& read, qint64 rejects)
{
    const QString unit =
        source.countsRows() && !source.hasCases() ? QStringLiteral("row") : QStringLiteral("line");
    QString text = QStringLiteral("%1 read = %2 + %3 + %4 deleted + %5 blank")
                       .arg(plural(read.lines, unit), plural(read.records, QStringLiteral("row")),
                           plural(rejects, QStringLiteral("reject")),
                           QString::number(read.deletedLines), QString::number(read.blankLines))
        + leftOut(read.leftOutLines);
    if (source.hasCases()) {
        text +=
            QStringLiteral("%1 read = %2 + %3 deleted")
                .arg(plural(read.casesRead, QStringLiteral("case")),
                    plural(read.cases, QStringLiteral("case")), QString::number(read.deletedCases))
            + leftOut(read.leftOutCases);
    }
    return text;
}
