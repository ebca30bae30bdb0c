#include "writers/DiffPage.h"

#include "text/ShownText.h"
#include "writers/ExportText.h"
#include "writers/HtmlPage.h"

#include <QFileInfo>
#include <QHash>

namespace {

constexpr char styleSheet[] = R"(
table { width: 100%; table-layout: fixed; }
.facts th { width: 8rem; font-weight: normal; color: var(--quiet); }
.changes { margin-bottom: 1.5rem; } .changes > thead th:first-child { width: 35%; }
.changes > tbody > tr > th { font-weight: normal; }
th span { display: block; color: var(--quiet); }
ul { list-style: none; margin: 0; padding: 0; }
summary { cursor: pointer; } details table { width: auto; margin: .3rem 0 .6rem 1rem; }
.verdict { font-weight: bold; padding: .5rem .8rem; border-inline-start: .4rem solid var(--good); }
.bad { border-color: var(--bad); }
@media print { details::details-content { content-visibility: visible; block-size: auto; } }
)";

QString element(const char* name, const QString& content)
{
    return QStringLiteral("<%1>%2</%1>").arg(QLatin1String(name), content);
}

QString cell(const QString& text)
{
    return QStringLiteral("<td dir=\"auto\">") + htmlText(text) + QStringLiteral("</td>");
}

QString tableStart(const char* kind, const QStringList& headings)
{
    QString text = QStringLiteral("<table class=\"%1\">\n<thead><tr>").arg(QLatin1String(kind));
    for (const QString& heading : headings)
        text += QStringLiteral("<th scope=\"col\">") + heading + QStringLiteral("</th>");
    return text + QStringLiteral("</tr></thead>\n<tbody>\n");
}

QString tableEnd()
{
    return QStringLiteral("</tbody>\n</table>\n");
}

QString fileName(const Listing& listing)
{
    return QFileInfo(listing.file).fileName();
}

QString fact(const char* caption, const Listing& listing)
{
    const QString file = fileName(listing);
    const QString title = titleOf(listing);
    return QStringLiteral("<tr><th scope=\"row\">%1</th>").arg(QLatin1String(caption))
        + cell(title == file ? file : file + QLatin1String(": ") + title)
        + QStringLiteral("</tr>\n");
}

class PageWriter {
public:
    PageWriter(const ComparedFiles& files, const ByteSink& sink);

    void write();

private:
    void addLabels(const Listing& listing);
    void writeSection(const QString& title, bool breaking);
    void writeRecord(const RecordDifferences& record);
    QString variableRow(const QString& record, const VariableDifferences& variable) const;
    QString recordTitle(const QString& record) const;

    const ComparedFiles& m_files;
    const ByteSink& m_sink;
    QHash<QPair<QString, QString>, QString> m_labels; // of records and variables
};

PageWriter::PageWriter(const ComparedFiles& files, const ByteSink& sink)
    : m_files(files)
    , m_sink(sink)
{
    addLabels(files.after);
    addLabels(files.before); // as the differences name them
}

void PageWriter::addLabels(const Listing& listing)
{
    for (const ListedRecord& record : listing.records)
        m_labels.insert({ record.name, QString() }, record.label);
    for (const ListedField& field : listing.fields) {
        m_labels.insert({ field.record, field.item }, field.label);
        m_labels.insert({ field.record, field.name }, field.fullLabel());
    }
}

void PageWriter::write()
{
    const QString title = QStringLiteral("Differences of two dictionaries");
    const bool breaks = countBreaking(m_files.differences) > 0;
    m_sink((pageHead(title, QLatin1String(styleSheet)) + QStringLiteral("<body>\n<main>\n")
        + element("h1", title) + QStringLiteral("\n<table class=\"facts\">\n<tbody>\n")
        + fact("Before", m_files.before) + fact("After", m_files.after) + tableEnd()
        + QStringLiteral("<p class=\"verdict%1\">%2</p>\n")
              .arg(breaks ? QLatin1String(" bad") : QLatin1String(),
                  htmlText(summaryOf(
                      m_files.differences, fileName(m_files.before), fileName(m_files.after)))))
               .toUtf8());
    writeSection(QStringLiteral("What can break data"), true);
    if (!m_files.onlyBreaking)
        writeSection(QStringLiteral("What breaks none"), false);
    m_sink("</main>\n</body>\n</html>\n");
}

void PageWriter::writeSection(const QString& title, bool breaking)
{
    const QVector<RecordDifferences> records = groupDifferences(m_files.differences, breaking);
    if (records.isEmpty())
        return;
    m_sink((element("h2", title) + QLatin1Char('\n')).toUtf8());
    for (const RecordDifferences& record : records)
        writeRecord(record);
}

QString PageWriter::recordTitle(const QString& record) const
{
    if (record.isNull()) {
        return m_files.before.hasRecords() ? QStringLiteral("Identification items")
                                           : QStringLiteral("Variables");
    }
    const QString label = m_labels.value({ record, QString() });
    return label.isEmpty() ? record : record + QLatin1String(": ") + label;
}

void PageWriter::writeRecord(const RecordDifferences& record)
{
    m_sink((element("h3", htmlText(recordTitle(record.record))) + QLatin1Char('\n')
        + tableStart("changes", { QStringLiteral("Variable"), QStringLiteral("What differs") }))
               .toUtf8());
    for (const VariableDifferences& variable : record.variables)
        m_sink(variableRow(record.record, variable).toUtf8());
    m_sink(tableEnd().toUtf8());
}

QString codeRow(const Difference& difference)
{
    const QString code = difference.highCode.isNull()
        ? shownCode(difference.code)
        : difference.code + QLatin1Char(':') + difference.highCode;
    const bool isAdded = difference.kind == DifferenceKind::ValueAdded;
    return QStringLiteral("<tr><th scope=\"row\">") + htmlText(code) + QStringLiteral("</th>")
        + cell(textOf(isAdded ? difference.after : difference.before)) + QStringLiteral("</tr>\n");
}

// A folded run opens to its codes and labels.
QString runItem(const DifferenceRun& run, bool tellsSet)
{
    const QString text = htmlText(textOf(run, tellsSet));
    if (run.size() == 1)
        return QStringLiteral("<li dir=\"auto\">") + text + QStringLiteral("</li>\n");
    QString item = QStringLiteral("<li><details><summary>") + text + QStringLiteral("</summary>\n")
        + tableStart("values", { QStringLiteral("Code"), QStringLiteral("Label") });
    for (const Difference* difference : run)
        item += codeRow(*difference);
    return item + tableEnd() + QStringLiteral("</details></li>\n");
}

QString PageWriter::variableRow(const QString& record, const VariableDifferences& variable) const
{
    const QString whole =
        record.isNull() ? QStringLiteral("Whole dictionary") : QStringLiteral("Whole record");
    const QString label = m_labels.value({ record, variable.variable });
    const bool isWhole = variable.variable.isNull();
    QString row = QStringLiteral("<tr><th scope=\"row\">")
        + (isWhole ? whole : element("code", htmlText(variable.variable)));
    if (!isWhole && !label.isEmpty())
        row += QStringLiteral("<span dir=\"auto\">") + htmlText(label) + QStringLiteral("</span>");
    row += QStringLiteral("</th><td><ul>\n");
    const bool tellsSet = variable.haveSeveralSets();
    for (const DifferenceRun& run : variable.runs)
        row += runItem(run, tellsSet);
    return row + QStringLiteral("</ul></td></tr>\n");
}

} // namespace

void writeDiffPage(const ComparedFiles& files, const ByteSink& sink)
{
    PageWriter(files, sink).write();
}
