#include "lookups/LookupReport.h"

#include "lookups/LookupWriters.h"
#include "text/ShownText.h"
#include "writers/HtmlPage.h"

#include <model_Tessel/ReportLookup.h>

namespace {

constexpr char styleSheet[] = R"(
table { width: 100%; }
td { white-space: pre-wrap; } .number { width: 4rem; }
.facts th { width: 14rem; font-weight: normal; color: var(--quiet); }
.bar { width: 35%; } .bar svg { display: block; width: 100%; height: 1.2rem; }
.bar rect { fill: var(--bar); }
.verdict { font-weight: bold; padding: 0.5rem 0.8rem; border-inline-start: 0.4rem solid var(--good); }
.bad { border-color: var(--bad); }
@media (max-width: 32rem) { .facts th, .facts td { display: block; width: auto; }
  .facts th { border-bottom: 0; padding-bottom: 0; } .bar { width: 25%; } }
@media print { .bar rect { print-color-adjust: exact; -webkit-print-color-adjust: exact; } }
)";

QString cell(const QString& text)
{
    return QStringLiteral("<td dir=\"auto\">") + htmlText(text) + QStringLiteral("</td>");
}

QString numberCell(int number)
{
    return QStringLiteral("<td class=\"number\">%1</td>").arg(number);
}

// A text of its own: appended piece by piece to a long page it would have the page copied each
// time.
QString row(const QString& cells)
{
    return QStringLiteral("<tr>") + cells + QStringLiteral("</tr>\n");
}

QString fact(const QString& caption, const QString& text)
{
    return QStringLiteral("<tr><th scope=\"row\">") + htmlText(caption) + QStringLiteral("</th>")
        + cell(text) + QStringLiteral("</tr>\n");
}

QString fact(const QString& caption, int number)
{
    return fact(caption, QString::number(number));
}

struct Heading {
    const char* text;
    bool isNumber;
};

QString tableStart(const QVector<Heading>& headings)
{
    QString text = QStringLiteral("<table>\n<thead><tr>");
    for (const Heading& heading : headings) {
        text += QStringLiteral("<th scope=\"col\"%1>%2</th>")
                    .arg(heading.isNumber ? QStringLiteral(" class=\"number\"") : QString(),
                        QLatin1String(heading.text));
    }
    return text + QStringLiteral("</tr></thead>\n<tbody>\n");
}

QString tableEnd()
{
    return QStringLiteral("</tbody>\n</table>\n");
}

QString heading(const QString& text)
{
    return QStringLiteral("<h2>%1</h2>\n").arg(text);
}

QString identification(const ReportLookup& report)
{
    return QStringLiteral("<table class=\"facts\">\n<tbody>\n")
        + fact(report.idLabel(), report.idValue()) + fact(report.labelLabel(), report.labelValue())
        + fact(report.dataFileLabel(), report.dataFileValue()) + tableEnd();
}

struct FoundCount {
    const char* caption;
    int count;
};

// What there may be of what is wrong.
QVector<FoundCount> countsOf(const LookupOutcome& outcome)
{
    QVector<FoundCount> counts { { "Duplicate keys", outcome.duplicateKeys },
        { "Keys of another length", outcome.wrongKeyLengths },
        { "Lines without a separator", outcome.withoutSeparator } };
    if (outcome.comparison) {
        counts += { { "Keys without a label", outcome.comparison->keysWithoutLabel.size() },
            { "Labels without a key", outcome.comparison->labelsWithoutKey.size() },
            { "Texts that differ", outcome.comparison->differentTexts.size() } };
    }
    return counts;
}

QString facts(const QVector<FoundCount>& counts, bool zeros)
{
    QString text;
    for (const FoundCount& found : counts) {
        if ((found.count == 0) == zeros)
            text += fact(QLatin1String(found.caption), found.count);
    }
    return text;
}

QString summary(const LookupOutcome& outcome)
{
    const QString separator = TOxLookup::separatorNames().at(outcome.separator)
        + (outcome.isGuessed ? QStringLiteral(" (guessed)") : QString());
    QString text = heading(QStringLiteral("Summary"));
    text += outcome.isConsistent()
        ? QStringLiteral("<p class=\"verdict\">The lookup is consistent.</p>\n")
        : QStringLiteral("<p class=\"verdict bad\">The lookup is not consistent.</p>\n");
    text += QStringLiteral("<table class=\"facts\">\n<tbody>\n")
        + fact(QStringLiteral("Separator"), separator)
        + fact(QStringLiteral("Encoding"), outcome.encoding)
        + fact(QStringLiteral("Lines"), outcome.lines) + fact(QStringLiteral("Keys"), outcome.keys)
        + facts(countsOf(outcome), false);
    return text + tableEnd();
}

// Below all that was found.
QString notFound(const LookupOutcome& outcome)
{
    const QString zeros = facts(countsOf(outcome), true);
    if (zeros.isEmpty())
        return QString();
    return heading(QStringLiteral("Not found"))
        + QStringLiteral("<table class=\"facts\">\n<tbody>\n") + zeros + tableEnd();
}

QString messages(const QVector<TOxLookupProblem>& problems)
{
    if (problems.isEmpty())
        return QString();
    QString text = heading(QStringLiteral("Messages"))
        + tableStart({ { "Line", true }, { "Message", false } });
    for (const TOxLookupProblem& problem : problems) {
        text += row(numberCell(problem.line) + cell(problem.text));
    }
    return text + tableEnd();
}

QString differences(const QString& title, const QVector<LabelDifference>& differences)
{
    if (differences.isEmpty())
        return QString();
    QString text = QStringLiteral("<h3>%1</h3>\n").arg(title);
    text += tableStart({ { "Key", false }, { "Text", false }, { "Label", false } });
    for (const LabelDifference& difference : differences) {
        text += row(cell(difference.key) + cell(difference.text) + cell(difference.label));
    }
    return text + tableEnd();
}

QString comparison(const LabelComparison& labels)
{
    QString text = heading(QStringLiteral("Value labels"));
    text += QStringLiteral("<p>Compared with variable ") + htmlText(labels.variable)
        + QStringLiteral(" of ") + htmlText(labels.file) + QStringLiteral(".</p>\n");
    if (labels.isEqual())
        return text + QStringLiteral("<p>All keys and texts agree.</p>\n");
    return text + differences(QStringLiteral("Keys without a label"), labels.keysWithoutLabel)
        + differences(QStringLiteral("Labels without a key"), labels.labelsWithoutKey)
        + differences(QStringLiteral("Texts that differ"), labels.differentTexts);
}

// The longest bar is the most frequent value's.
QString bar(int count, int highest)
{
    const QString width = QString::number(100.0 * count / highest, 'f', 2);
    return QStringLiteral("<td class=\"bar\"><svg xmlns=\"http://www.w3.org/2000/svg\" "
                          "viewBox=\"0 0 100 10\" preserveAspectRatio=\"none\" "
                          "aria-hidden=\"true\"><rect width=\"%1\" height=\"10\"/></svg></td>")
        .arg(width);
}

QString frequencies(const QVector<ValueCount>& counts)
{
    const int highest = counts.isEmpty() ? 1 : counts.constFirst().keys;
    QVector<Heading> headings { { "Value", false }, { "Keys", true } };
    if (highest > 1)
        headings.append({ "Share", false });
    QString text = heading(QStringLiteral("Frequencies"))
        + QStringLiteral("<p>%1; how many keys carry each.</p>\n")
              .arg(plural(counts.size(), QStringLiteral("different value")))
        + tableStart(headings);
    for (const ValueCount& count : counts) {
        const QString cells = cell(count.value) + numberCell(count.keys);
        text += row(highest > 1 ? cells + bar(count.keys, highest) : cells);
    }
    return text + tableEnd();
}

} // namespace

QByteArray lookupPage(const ReportLookup& report, const LookupOutcome& outcome)
{
    const QString title = QStringLiteral("Lookup check");
    QString page =
        pageHead(title + QLatin1String(": ") + report.idValue(), QLatin1String(styleSheet))
        + QStringLiteral("<body>\n<main>\n<h1>") + title + QStringLiteral("</h1>\n");
    page += identification(report) + summary(outcome);
    if (outcome.comparison)
        page += comparison(*outcome.comparison);
    page += messages(outcome.problems) + notFound(outcome);
    if (outcome.frequencies)
        page += frequencies(*outcome.frequencies);
    return (page + QStringLiteral("</main>\n</body>\n</html>\n")).toUtf8();
}
