#include "writers/HtmlBookPart.h"

#include "writers/BookFacts.h"
#include "writers/HtmlPage.h"
#include "writers/ListingNames.h"

#include <algorithm>

namespace {

QString linkTo(const QString& id, const QString& html)
{
    return QLatin1String("<a href=#") + id + QLatin1Char('>') + html + QLatin1String("</a>");
}

QString asCode(const QString& text)
{
    return QLatin1String("<code>") + htmlText(text) + QLatin1String("</code>");
}

QString badges(const QStringList& texts)
{
    QStringList badges;
    for (const QString& text : texts)
        badges.append(QLatin1String("<small>") + htmlText(text) + QLatin1String("</small>"));
    return badges.join(QLatin1Char(' '));
}

QString sentence(const QStringList& pieces)
{
    QString text = pieces.join(QLatin1String("; "));
    if (!text.isEmpty())
        text[0] = text.at(0).toUpper();
    return text;
}

} // namespace

HtmlBookPart::HtmlBookPart(const Book& book, PageIds& ids, QString& page)
    : m_book(book)
    , m_listing(book.listing())
    , m_ids(book, ids)
    , m_texts(book.tags(), page)
    , m_page(page)
{
    if (book.figures())
        m_figures.emplace(*book.figures(), book.tags().size(), m_texts, page);
}

void HtmlBookPart::add(const char* html)
{
    m_page += QLatin1String(html);
}

bool HtmlBookPart::isShared(int valueSet) const
{
    return valueSet >= 0 && m_ids.numberOf(valueSet) > 0;
}

// ---- texts

void HtmlBookPart::writeNote(const QString& text)
{
    const BookNote note = noteOf(text);
    if (!note.universe.isEmpty())
        m_page += QLatin1String("<p>Universe: ") + htmlText(note.universe);
    if (!note.text.isEmpty())
        m_page += QLatin1String("<p class=note>") + htmlLines(note.text);
}

QStringList HtmlBookPart::labelsOf(int field) const
{
    return m_book.texts([field](const Listing& listing) { return listing.fields.at(field).label; });
}

// ---- records

void HtmlBookPart::writeGroupTitle(const BookGroup& group)
{
    if (group.record >= 0) {
        m_page += asCode(m_listing.records.at(group.record).name);
        m_texts.writeLabel(m_book.texts(
            [&group](const Listing& listing) { return listing.records.at(group.record).label; }));
    } else if (m_listing.hasRecords()) {
        add("Identification items");
    } else {
        writeTitle();
    }
}

void HtmlBookPart::writeContents()
{
    for (int i = 0; i < m_book.groups().size(); ++i) {
        m_page += QLatin1String("<li><a href=#") + m_ids.ofGroup(i) + QLatin1Char('>');
        writeGroupTitle(m_book.groups().at(i));
        add("</a>\n");
    }
}

void HtmlBookPart::writeTitle()
{
    m_texts.write(
        "<i", m_book.texts([](const Listing& listing) { return titleOf(listing); }), "</i>");
}

// Of several files one without records has its title there.
void HtmlBookPart::writeText(bool isOnly)
{
    if (isOnly || m_listing.hasRecords()) {
        add(isOnly ? "<h1>" : "<h2>");
        writeTitle();
        add(isOnly ? "</h1>\n" : "</h2>\n");
    }
    for (const QString& note : m_listing.notes)
        writeNote(note);
    for (int i = 0; i < m_book.groups().size(); ++i)
        writeGroup(i);
}

void HtmlBookPart::writeGroup(int index)
{
    const BookGroup& group = m_book.groups().at(index);
    m_page += QLatin1String("<section id=") + m_ids.ofGroup(index) + QLatin1String("><h2>");
    writeGroupTitle(group);
    add("</h2>\n");
    if (group.record >= 0) {
        const ListedRecord& record = m_listing.records.at(group.record);
        m_page += QLatin1String("<p>") + htmlText(sentence(recordFacts(m_listing, record)));
        writeNote(record.note);
    }
    if (m_figures && (group.record >= 0 || !m_listing.hasRecords()))
        m_figures->writeRows(
            group.record >= 0 ? m_listing.records.at(group.record).name : QString());
    writeTable(group);
    writeEntries(group.entries);
    add("</section>\n");
}

void HtmlBookPart::writeTable(const BookGroup& group)
{
    if (group.entries.isEmpty())
        return;
    add("<table class=fields><thead><tr><th scope=col>Name<th scope=col>Label");
    if (m_listing.hasRecords())
        add("<th scope=col>Columns");
    add("<th scope=col>Type<th scope=col>Missing<th scope=col>Values<tbody>\n");
    for (const BookEntry& entry : group.entries) {
        writeRow(entry, false);
        for (const BookEntry& part : entry.parts)
            writeRow(part, true);
    }
    add("</table>\n");
}

// All that most variables need. The others have a section, and the row a link to it.
void HtmlBookPart::writeRow(const BookEntry& entry, bool isPart)
{
    const ListedField& field = m_listing.fields.at(entry.first());
    const QString id = m_ids.ofEntry(entry.first());
    const QString name = htmlText(nameOf(m_listing, entry));
    const bool isLinked = hasSection(entry);
    add("<tr");
    if (!isLinked)
        m_page += QLatin1String(" id=") + id;
    add(isPart ? " class=part><th scope=row>" : "><th scope=row>");
    m_page += isLinked ? linkTo(id, name) : name;
    add("<td>");
    m_texts.write("", labelsOf(entry.first()), "");
    if (m_listing.hasRecords())
        m_page += QLatin1String("<td>") + columnsText(m_listing, entry);
    m_page += QLatin1String("<td>") + typeText(m_listing, entry);
    const QString missing = badges(missingTexts(field));
    const QString values = valuesText(entry);
    if (!missing.isEmpty() || !values.isEmpty())
        m_page += QLatin1String("<td>") + missing;
    if (!values.isEmpty())
        m_page += QLatin1String("<td>") + values;
    m_page += QLatin1Char('\n');
}

// The range, and where the values are told that others have, too.
QString HtmlBookPart::valuesText(const BookEntry& entry) const
{
    QStringList texts;
    const ListedField& field = m_listing.fields.at(entry.first());
    if (field.hasRange())
        texts.append(htmlText(rangeText(field)));
    for (const int valueSet : entry.valueSets) {
        if (isShared(valueSet))
            texts.append(linkToValues(valueSet));
    }
    return texts.join(QLatin1String(", "));
}

// On paper the number leads there.
QString HtmlBookPart::linkToValues(int valueSet) const
{
    const QString number = QString::number(m_ids.numberOf(valueSet));
    return linkTo(QLatin1String("v-") + number, QLatin1String("values ") + number);
}

// ---- variables

bool HtmlBookPart::hasSection(const BookEntry& entry) const
{
    const bool hasOwnValues = std::any_of(entry.valueSets.cbegin(), entry.valueSets.cend(),
        [this](int valueSet) { return valueSet >= 0 && !isShared(valueSet); });
    const ListedField& field = m_listing.fields.at(entry.first());
    return hasOwnValues || (m_figures && m_figures->has(field)) || entry.valueSets.size() > 1
        || entry.fields.size() > 1 || !field.note.isNull();
}

void HtmlBookPart::writeEntries(const QVector<BookEntry>& entries)
{
    for (const BookEntry& entry : entries) {
        if (hasSection(entry))
            writeEntry(entry);
        writeEntries(entry.parts);
    }
}

// The label in one language: the row has all.
void HtmlBookPart::writeEntry(const BookEntry& entry)
{
    const ListedField& field = m_listing.fields.at(entry.first());
    m_page += QLatin1String("<h3 id=") + m_ids.ofEntry(entry.first()) + QLatin1Char('>')
        + asCode(nameOf(m_listing, entry)) + QLatin1String(" <i");
    if (!m_book.tags().isEmpty())
        m_page += QLatin1String(" lang=") + m_book.tags().constFirst();
    m_page += QLatin1Char('>') + htmlText(field.label) + QLatin1String("</i></h3>");
    const QString facts = htmlText(sentence(entryFacts(m_listing, entry)));
    if (!facts.isEmpty())
        m_page += QLatin1String("<p>") + facts;
    writeOccurrences(entry);
    writeNote(field.note);
    writeEntryValues(entry);
    m_page += QLatin1Char('\n');
}

void HtmlBookPart::writeOccurrences(const BookEntry& entry)
{
    const auto hasLabel = [this](int field) {
        return !m_listing.fields.at(field).occurrenceLabel.isNull();
    };
    if (std::none_of(entry.fields.cbegin(), entry.fields.cend(), hasLabel))
        return;
    add("<ol>");
    for (const int field : entry.fields) {
        add("<li>");
        m_texts.write("<i", m_book.texts([field](const Listing& listing) {
            return listing.fields.at(field).occurrenceLabel;
        }),
            "</i>");
    }
    add("</ol>");
}

void HtmlBookPart::writeEntryValues(const BookEntry& entry)
{
    const ListedField& field = m_listing.fields.at(entry.first());
    if (m_figures && m_figures->has(field))
        return m_figures->writeField(field);
    for (int i = 0; i < entry.valueSets.size(); ++i) {
        const int place = entry.valueSets.at(i);
        if (entry.valueSets.size() > 1)
            writeSetTitle(entry.first(), i);
        if (isShared(place))
            m_page += QLatin1String("<p>See ") + linkToValues(place);
        else if (place >= 0)
            writeCodes(m_book.valueSets().at(place));
    }
}

// Alternatives have names; a label that is the variable's is not told again.
void HtmlBookPart::writeSetTitle(int field, int index)
{
    m_page += QLatin1String("<h4>") + asCode(m_listing.fields.at(field).valueSets.at(index).name);
    const QStringList labels = m_book.texts([field, index](const Listing& listing) {
        return listing.fields.at(field).valueSets.at(index).label;
    });
    if (labels != labelsOf(field))
        m_texts.writeLabel(labels);
    add("</h4>");
}

// ---- values

void HtmlBookPart::writeCodes(const BookValueSet& valueSet)
{
    const ListedValueSet& listed = m_listing.fields.at(valueSet.field).valueSets.at(valueSet.index);
    writeNote(listed.note);
    if (listed.codes.isEmpty())
        return;
    add("<dl>");
    for (int i = 0; i < listed.codes.size(); ++i)
        writeCode(valueSet, i);
    add("</dl>");
}

void HtmlBookPart::writeCode(const BookValueSet& valueSet, int index)
{
    const auto listedIn = [&valueSet](const Listing& listing) -> const ListedValueSet& {
        return listing.fields.at(valueSet.field).valueSets.at(valueSet.index);
    };
    const ListedValueSet& listed = listedIn(m_listing);
    const ListedCode& code = listed.codes.at(index);
    m_page += QLatin1String("<dt>") + htmlText(codeText(code));
    if (code.isSpecial())
        m_page += QLatin1String(" <small>") + nameOf(code.special) + QLatin1String("</small>");
    m_texts.write("<dd", m_book.texts([&](const Listing& listing) {
        return listedIn(listing).codes.at(index).label;
    }),
        "");
    const ListedDetail detail = listed.details.value(index);
    if (!detail.note.isNull())
        m_page += QLatin1String("<dd class=note>") + htmlLines(detail.note);
    if (!detail.image.isNull())
        m_page += QLatin1String("<dd>Image: ") + htmlText(detail.image);
}

void HtmlBookPart::writeValueSets()
{
    for (int i = 0; i < m_book.valueSets().size(); ++i) {
        if (!isShared(i))
            continue;
        const BookValueSet& valueSet = m_book.valueSets().at(i);
        m_page += QStringLiteral("<h3 id=v-%1>Values %1").arg(m_ids.numberOf(i));
        m_texts.writeLabel(m_book.texts([&valueSet](const Listing& listing) {
            return listing.fields.at(valueSet.field).valueSets.at(valueSet.index).label;
        }));
        add("</h3>");
        writeCodes(valueSet);
        m_page += QLatin1Char('\n');
    }
}

void HtmlBookPart::writeCrosses()
{
    if (m_figures)
        m_figures->writeCrosses();
}

bool HtmlBookPart::hasCrosses() const
{
    return m_book.figures() && !m_book.figures()->report.crosses.empty();
}

void HtmlBookPart::writeSource()
{
    m_page += QLatin1String("<li>") + htmlText(sourceFacts(m_listing).join(QLatin1String("; ")));
    if (m_figures)
        m_page +=
            QLatin1String(". Data: ") + htmlText(m_figures->facts().join(QLatin1String("; ")));
    m_page += QLatin1Char('\n');
}
