#include "writers/ExportWriters.h"

#include "writers/ExportText.h"
#include "writers/HtmlStyle.h"
#include "writers/ListingNames.h"
#include "text/ShownText.h"

#include <QFileInfo>
#include <QXmlStreamWriter>

namespace {

// Paper gets no links' colours; characters that XML escapes are not used.
constexpr char Style[] =
    "body{font:16px/1.45 sans-serif;color:#111;background:#fff;overflow-wrap:anywhere}"
    "h1,h2,h3{line-height:1.2}h2{border-bottom:2px solid #555;margin-top:2.5rem}"
    "h3{margin:1.8rem 0 .3rem}code{font-family:monospace}"
    "nav ul{padding-left:1.2rem}nav ul ul{columns:16rem}"
    "p{margin:.3rem 0}.note{white-space:pre-wrap}"
    "table{margin:.4rem 0}"
    "caption{text-align:left;font-style:italic}"
    "th,td{padding:.15rem .6rem;border-bottom:1px solid #ccc}"
    "td.code{white-space:pre-wrap;font-family:monospace}"
    "@media print{a{color:inherit;text-decoration:none}h2,h3{break-after:avoid}}";

class HtmlWriter {
public:
    explicit HtmlWriter(const Listing& listing);

    QByteArray write();

private:
    void open(const char* name);
    void open(const char* name, const char* attribute, const QString& value);
    void close();
    void text(const QString& text);
    void element(const char* name, const QString& text);
    void row(const char* cell, const QStringList& cells);
    void link(const QString& id, const QString& shown);
    void writeHead();
    void writeSummary();
    void writeNote(const QString& note);
    void writeContents();
    void writeGroup(int index);
    void writeField(int index);
    void writeValueSet(const ListedField& field, const ListedValueSet& valueSet);
    void writeCode(const ListedValueSet& valueSet, int index);
    QString groupTitle(const FieldGroup& group) const;
    QString recordFacts(const ListedRecord& record) const;
    QString fieldFacts(const ListedField& field) const;

    const Listing& m_listing;
    QVector<FieldGroup> m_groups;
    QStringList m_groupIds;
    QStringList m_fieldIds;
    QByteArray m_bytes;
    QXmlStreamWriter m_xml;
};

// Of names, so that links into the page survive another export; ids hold no blanks.
QString idOf(const QString& name)
{
    QString id = name;
    for (QChar& character : id) {
        if (!character.isLetterOrNumber() || character.isSurrogate())
            character = QLatin1Char('_');
    }
    return id.isEmpty() ? QStringLiteral("_") : id;
}

HtmlWriter::HtmlWriter(const Listing& listing)
    : m_listing(listing)
    , m_groups(groupsOf(listing))
    , m_xml(&m_bytes)
{
    UniqueNames ids;
    ids.take(QStringLiteral("contents"));
    for (const FieldGroup& group : qAsConst(m_groups)) {
        const QString name = group.record ? group.record->name : QStringLiteral("fields");
        m_groupIds.append(ids.take(QLatin1String("record-") + idOf(name)));
    }
    for (const ListedField& field : listing.fields)
        m_fieldIds.append(ids.take(idOf(field.name)));
}

void HtmlWriter::open(const char* name)
{
    m_xml.writeStartElement(QLatin1String(name));
}

void HtmlWriter::open(const char* name, const char* attribute, const QString& value)
{
    open(name);
    m_xml.writeAttribute(QLatin1String(attribute), xmlText(value));
}

void HtmlWriter::close()
{
    m_xml.writeEndElement();
}

void HtmlWriter::text(const QString& text)
{
    m_xml.writeCharacters(xmlText(text));
}

void HtmlWriter::element(const char* name, const QString& text)
{
    m_xml.writeTextElement(QLatin1String(name), xmlText(text));
}

void HtmlWriter::link(const QString& id, const QString& shown)
{
    open("a", "href", QLatin1Char('#') + id);
    text(shown);
    close();
}

void HtmlWriter::row(const char* cell, const QStringList& cells)
{
    open("tr");
    for (const QString& content : cells)
        element(cell, content);
    close();
    text(QStringLiteral("\n"));
}

QByteArray HtmlWriter::write()
{
    m_xml.writeDTD(QStringLiteral("<!DOCTYPE html>"));
    text(QStringLiteral("\n"));
    open("html");
    writeHead();
    open("body");
    open("main");
    element("h1", titleOf(m_listing));
    writeSummary();
    writeContents();
    for (int i = 0; i < m_groups.size(); ++i)
        writeGroup(i);
    close();
    close();
    m_xml.writeEndDocument();
    return m_bytes;
}

void HtmlWriter::writeHead()
{
    open("head");
    m_xml.writeEmptyElement(QStringLiteral("meta"));
    m_xml.writeAttribute(QStringLiteral("charset"), QStringLiteral("utf-8"));
    m_xml.writeEmptyElement(QStringLiteral("meta"));
    m_xml.writeAttribute(QStringLiteral("name"), QStringLiteral("viewport"));
    m_xml.writeAttribute(
        QStringLiteral("content"), QStringLiteral("width=device-width, initial-scale=1"));
    element("title", titleOf(m_listing));
    element("style", QLatin1String(Style) + pageStyle());
    close();
}

void HtmlWriter::writeSummary()
{
    QStringList facts { QFileInfo(m_listing.file).fileName(), m_listing.name, m_listing.version };
    facts.append(QStringLiteral("%1 fields").arg(m_listing.fields.size()));
    if (!m_listing.records.isEmpty())
        facts.append(QStringLiteral("%1 records").arg(m_listing.records.size()));
    if (m_listing.rowCount >= 0)
        facts.append(QStringLiteral("%1 rows").arg(m_listing.rowCount));
    if (m_listing.recordTypeLength > 0) {
        facts.append(QStringLiteral("record type at column %1, length %2")
                         .arg(m_listing.recordTypeStart)
                         .arg(m_listing.recordTypeLength));
    }
    facts.removeAll(QString());
    element("p", facts.join(QLatin1String("; ")));
    for (const QString& note : m_listing.notes)
        writeNote(note);
}

void HtmlWriter::writeNote(const QString& note)
{
    if (note.isNull())
        return;
    open("p", "class", QStringLiteral("note"));
    text(note);
    close();
}

void HtmlWriter::writeContents()
{
    open("nav", "id", QStringLiteral("contents"));
    element("h2", QStringLiteral("Contents"));
    open("ul");
    for (int i = 0; i < m_groups.size(); ++i) {
        open("li");
        link(m_groupIds.at(i), groupTitle(m_groups.at(i)));
        if (!m_groups.at(i).fields.isEmpty()) {
            open("ul");
            for (const int field : m_groups.at(i).fields) {
                open("li");
                link(m_fieldIds.at(field), m_listing.fields.at(field).name);
                close();
                text(QStringLiteral("\n"));
            }
            close();
        }
        close();
        text(QStringLiteral("\n"));
    }
    close();
    close();
}

QString HtmlWriter::groupTitle(const FieldGroup& group) const
{
    if (!group.record) {
        return m_listing.records.isEmpty() ? QStringLiteral("Variables")
                                           : QStringLiteral("Identification items");
    }
    const ListedRecord& record = *group.record;
    return record.label.isEmpty() ? record.name
                                  : QStringLiteral("%1: %2").arg(record.name, record.label);
}

QString HtmlWriter::recordFacts(const ListedRecord& record) const
{
    QStringList facts;
    if (!record.recordType.isEmpty())
        facts.append(QStringLiteral("record type %1").arg(record.recordType));
    if (record.level > 0 && m_listing.levels.size() > 1)
        facts.append(QStringLiteral("level %1").arg(record.level));
    facts.append(record.isRequired ? QStringLiteral("required") : QStringLiteral("not required"));
    facts.append(QStringLiteral("at most %1 in a case").arg(record.maxRecords));
    facts.append(QStringLiteral("length %1").arg(record.length));
    return facts.join(QLatin1String("; "));
}

void HtmlWriter::writeGroup(int index)
{
    const FieldGroup& group = m_groups.at(index);
    open("section", "id", m_groupIds.at(index));
    element("h2", groupTitle(group));
    if (group.record) {
        element("p", recordFacts(*group.record));
        writeNote(group.record->note);
    }
    for (const int field : group.fields)
        writeField(field);
    open("p");
    link(QStringLiteral("contents"), QStringLiteral("Contents"));
    close();
    close();
}

QString decimalsText(const ListedField& field)
{
    QString decimals = QStringLiteral("decimals %1").arg(field.decimals);
    if (field.decimalPoint() == DecimalPoint::Untold)
        return decimals;
    return decimals
        + (field.hasDecimalChar ? QLatin1String(", point in the data")
                                : QLatin1String(", point implied"));
}

// Of several value sets one has the range.
QString rangeText(const ListedField& field)
{
    const QString range = QStringLiteral("range %1 to %2").arg(field.min, field.max);
    return field.valueSets.size() > 1 && !field.rangeValueSet.isNull()
        ? QStringLiteral("%1 (%2)").arg(range, field.rangeValueSet)
        : range;
}

QString HtmlWriter::fieldFacts(const ListedField& field) const
{
    QStringList facts { nameOf(field.type) };
    if (field.start > 0) {
        facts.append(QStringLiteral("columns %1 to %2")
                         .arg(field.start)
                         .arg(field.start + field.length - 1));
    } else {
        facts.append(QStringLiteral("length %1").arg(field.length));
    }
    if (field.isIdentification && field.level > 0 && m_listing.levels.size() > 1)
        facts.append(QStringLiteral("level %1").arg(field.level));
    if (field.decimals > 0)
        facts.append(decimalsText(field));
    if (field.isZeroFilled)
        facts.append(QStringLiteral("filled with zeros"));
    if (!field.format.isEmpty())
        facts.append(QStringLiteral("format %1").arg(field.format));
    if (field.measure != Measure::Untold)
        facts.append(nameOf(field.measure));
    if (field.hasRange())
        facts.append(rangeText(field));
    if (!field.missing.isNull())
        facts.append(QStringLiteral("missing %1").arg(shownCodes(field.missing)));
    if (!field.notApplicable.isNull())
        facts.append(QStringLiteral("not applicable %1").arg(shownCodes(field.notApplicable)));
    if (!field.parent.isNull())
        facts.append(QStringLiteral("part of %1").arg(field.parent));
    return facts.join(QLatin1String("; "));
}

void HtmlWriter::writeField(int index)
{
    const ListedField& field = m_listing.fields.at(index);
    open("article", "id", m_fieldIds.at(index));
    open("h3");
    m_xml.writeTextElement(QStringLiteral("code"), xmlText(field.name));
    text(QLatin1Char(' ') + field.fullLabel());
    close();
    element("p", fieldFacts(field));
    writeNote(field.note);
    // The occurrences of an item have the values of the first.
    const int first = m_listing.firstWithValuesOf(index);
    if (first < index && !field.valueSets.isEmpty()) {
        open("p");
        text(QStringLiteral("Values as of "));
        link(m_fieldIds.value(first), m_listing.fields.value(first).name);
        close();
    } else {
        for (const ListedValueSet& valueSet : field.valueSets)
            writeValueSet(field, valueSet);
    }
    close();
    text(QStringLiteral("\n"));
}

void HtmlWriter::writeValueSet(const ListedField& field, const ListedValueSet& valueSet)
{
    writeNote(valueSet.note);
    if (valueSet.codes.isEmpty())
        return;
    open("table");
    if (field.valueSets.size() > 1)
        element("caption", QStringLiteral("%1: %2").arg(valueSet.name, valueSet.label));
    open("tbody");
    QStringList headings { QStringLiteral("Value"), QStringLiteral("Label") };
    if (!valueSet.details.isEmpty())
        headings.append({ QStringLiteral("Note"), QStringLiteral("Image") });
    row("th", headings);
    for (int i = 0; i < valueSet.codes.size(); ++i)
        writeCode(valueSet, i);
    close();
    close();
}

void HtmlWriter::writeCode(const ListedValueSet& valueSet, int index)
{
    const ListedCode& entry = valueSet.codes.at(index);
    open("tr");
    open("td", "class", QStringLiteral("code"));
    text(entry.text());
    close();
    element("td", shownLabel(entry));
    if (!valueSet.details.isEmpty()) {
        const ListedDetail detail = valueSet.details.value(index);
        open("td", "class", QStringLiteral("note"));
        text(detail.note);
        close();
        element("td", detail.image);
    }
    close();
    text(QStringLiteral("\n"));
}

} // namespace

QByteArray writeHtml(const Listing& listing)
{
    return HtmlWriter(listing).write();
}
