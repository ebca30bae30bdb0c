#include "writers/HtmlBook.h"

#include "writers/HtmlBookPart.h"
#include "writers/HtmlPage.h"

#include <QLocale>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

class BookPage {
public:
    BookPage(const QVector<Book>& books, const BookPageOptions& options);

    QByteArray write();

private:
    void add(const char* html)
    {
        m_page += QLatin1String(html);
    }
    void writeContents();
    void writeSearch();
    void writeLanguages();
    void writeCrosses();
    void writeValueSets();
    void writeFooter();

    const QVector<Book>& m_books;
    BookPageOptions m_options;
    PageIds m_ids;
    QString m_page;
    std::vector<std::unique_ptr<HtmlBookPart>> m_parts;
};

BookPage::BookPage(const QVector<Book>& books, const BookPageOptions& options)
    : m_books(books)
    , m_options(options)
{
    for (const char* own : { "contents", "book", "values", "find", "words", "language", "count",
             "found", "records", "menu", "crosses" })
        m_ids.names.take(QLatin1String(own));
    for (const Book& book : books)
        m_parts.push_back(std::make_unique<HtmlBookPart>(book, m_ids, m_page));
}

QByteArray BookPage::write()
{
    const QString script = m_options.withScript ? pagePart(QStringLiteral("book.js")) : QString();
    m_page = pageHead(
        titleOf(m_books.constFirst().listing()), pagePart(QStringLiteral("book.css")), script);
    add("<body>\n<a class=skip href=#book>Skip to the codebook</a>\n");
    writeContents();
    add("<main id=book tabindex=-1>\n");
    if (m_parts.size() > 1)
        add("<h1>Codebook</h1>\n");
    for (const auto& part : m_parts)
        part->writeText(m_parts.size() == 1);
    writeCrosses();
    writeValueSets();
    add("</main>\n");
    writeFooter();
    if (!script.isEmpty())
        m_page += QLatin1String("<script>") + script + QLatin1String("</script>\n");
    add("</body>\n</html>\n");
    return m_page.toUtf8();
}

void BookPage::writeContents()
{
    add("<nav id=contents aria-label=Contents>\n");
    if (m_options.withScript)
        writeSearch();
    add("<ul id=records data-fold=\"Variables of %1\">\n");
    for (const auto& part : m_parts)
        part->writeContents();
    add("</ul>\n</nav>\n");
}

// In sight when the script runs.
void BookPage::writeSearch()
{
    add("<button id=menu type=button aria-expanded=false aria-controls=contents hidden>Contents "
        "and search</button>\n"
        "<form id=find role=search hidden>\n");
    writeLanguages();
    add("<p><label for=words>Search names and labels</label> "
        "<input id=words type=search autocomplete=off spellcheck=false>\n"
        "<p id=count role=status data-found=\"Found: %1\" data-most=\"Found: %1, of which the "
        "first %2 are listed\">\n"
        "<ul id=found></ul>\n</form>\n");
}

void BookPage::writeLanguages()
{
    QStringList tags;
    QString options;
    for (const Book& book : m_books) {
        for (int i = 0; i < book.tags().size(); ++i) {
            const QString tag = book.tags().at(i);
            if (tags.contains(tag))
                continue;
            tags.append(tag);
            const QString label = book.listing().languageLabels.value(i);
            const QString name = label.isEmpty() ? book.listing().languages.at(i) : label;
            options += QStringLiteral("<option value=%1>%2").arg(tag, htmlText(name));
        }
    }
    if (tags.isEmpty())
        return;
    m_page += QLatin1String("<p><label for=language>Language of the labels</label> "
                            "<select id=language>")
        + options + QLatin1String("<option value=\"\">All</select>\n");
}

void BookPage::writeCrosses()
{
    if (std::none_of(m_parts.cbegin(), m_parts.cend(),
            [](const std::unique_ptr<HtmlBookPart>& part) { return part->hasCrosses(); }))
        return;
    add("<section id=crosses><h2>Variables by variables</h2>\n");
    for (const auto& part : m_parts)
        part->writeCrosses();
    add("</section>\n");
}

void BookPage::writeValueSets()
{
    if (m_ids.sharedSets == 0)
        return;
    add("<section id=values><h2>Values that several variables share</h2>\n");
    for (const auto& part : m_parts)
        part->writeValueSets();
    add("</section>\n");
}

void BookPage::writeFooter()
{
    add("<footer><h2>Sources</h2>\n<ul>\n");
    for (const auto& part : m_parts)
        part->writeSource();
    add("</ul>\n<p>Made ");
    if (m_options.date.isValid())
        m_page += QLatin1String("on ") + m_options.date.toString(Qt::ISODate) + QLatin1Char(' ');
    add("with tessel " TESSEL_VERSION "\n</footer>\n");
}

} // namespace

QByteArray writeBook(const QVector<Book>& books, const BookPageOptions& options)
{
    return BookPage(books, options).write();
}
