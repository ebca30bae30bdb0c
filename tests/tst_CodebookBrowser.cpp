// Opens pages of "tessel codebook" in a browser, as a reader does: in all widths, light, dark and
// printed, with keys, without script. With TESSEL_PICTURES set to a folder pictures of them are
// taken there.
#include "Browser.h"
#include "ManyVariables.h"

#include <QTemporaryDir>
#include <QtTest>

namespace {

// Sections out of sight are not laid out otherwise.
const char layOutAll[] = "document.querySelectorAll('section').forEach("
                         "section => section.style.contentVisibility = 'visible'), 0";

} // namespace

class tst_CodebookBrowser : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void fitsAndIsAccessible_data();
    void fitsAndIsAccessible();
    void isPrintedLight();
    void findsByNameAndLabel();
    void goesThroughResultsByKeys();
    void beginsWithASkipLink();
    void unfoldsRecords();
    void showsOneLanguageOrAll();
    void opensItsMenuWhereItIsNarrow();
    void isWholeWithoutScript();
    void runsNoLabel();
    void takesManyVariables();
    void pictures();

private:
    QString make(const QString& name, const QStringList& sources);
    QString text(const QString& expression)
    {
        return m_browser.evaluate(expression).toString();
    }
    int number(const QString& expression)
    {
        return m_browser.evaluate(expression).toInt(-1);
    }
    void search(const QString& words);

    QTemporaryDir m_folder;
    Browser m_browser;
};

QString tst_CodebookBrowser::make(const QString& name, const QStringList& sources)
{
    const QString path = m_folder.filePath(name + ".html");
    return runTessel(QStringList { "codebook", "-o", path } + sources).status == 0 ? path
                                                                                   : QString();
}

void tst_CodebookBrowser::initTestCase()
{
    if (!Browser::isInstalled())
        QSKIP("chromium is not installed, so no page is opened in a browser");
    qputenv("SOURCE_DATE_EPOCH", "1700000000");
    QVERIFY(m_browser.start());
    m_browser.resize(1440);
    const QDir examples(TESSEL_EXAMPLES);
    QVERIFY(!make("census", { examples.filePath("census.dcf") }).isEmpty());
    QVERIFY(!make("languages", { "written_household.dcf" }).isEmpty());
    QVERIFY(!make("figures",
        { examples.filePath("census.dcf"), examples.filePath("census.dat"), "--cross",
            "SEX,RELATIONSHIP", "--weight", "PERSONS", "--suppress", "10" })
                 .isEmpty());
    QVERIFY(!make("files", { examples.filePath("household.sav"), examples.filePath("person.dta") })
                 .isEmpty());
}

void tst_CodebookBrowser::fitsAndIsAccessible_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<int>("width");
    QTest::addColumn<QString>("scheme");
    for (const char* page : { "census", "languages", "files", "figures" }) {
        for (const int width : { 360, 800, 1440 }) {
            for (const char* scheme : { "light", "dark" }) {
                QTest::addRow("%s, %i pixels, %s", page, width, scheme)
                    << QString(page) << width << QString(scheme);
            }
        }
    }
}

void tst_CodebookBrowser::fitsAndIsAccessible()
{
    QFETCH(QString, page);
    QFETCH(int, width);
    QFETCH(QString, scheme);
    m_browser.resize(width);
    m_browser.show("screen", scheme);
    QVERIFY(m_browser.open(m_folder.filePath(page + ".html")));
    m_browser.evaluate(layOutAll);
    QCOMPARE(number("document.documentElement.scrollWidth"), width);
    QCOMPARE(text("getComputedStyle(document.body).backgroundColor"),
        QString(scheme == "dark" ? "rgb(21, 24, 27)" : "rgb(255, 255, 255)"));

    QFile axe(TESSEL_AXE);
    if (!axe.open(QIODevice::ReadOnly))
        QSKIP("axe-core is not installed; ./check installs it where there is a network");
    m_browser.evaluate(QString::fromUtf8(axe.readAll()));
    QCOMPARE(
        text("axe.run().then(result => (result.passes.length > 20) + '\\n' + result.violations.map("
             "violation => violation.id + ': ' + violation.nodes[0].html).join('\\n'))"),
        QString("true\n"));
}

void tst_CodebookBrowser::isPrintedLight()
{
    QVERIFY(m_browser.open(m_folder.filePath("census.html")));
    m_browser.show("print", "dark");
    QCOMPARE(
        text("getComputedStyle(document.body).backgroundColor"), QString("rgb(255, 255, 255)"));
    QCOMPARE(text("getComputedStyle(document.querySelector('nav')).display"), QString("none"));
    QCOMPARE(text("getComputedStyle(document.querySelector('section')).contentVisibility"),
        QString("visible"));
    const QByteArray pages = m_browser.printed();
    QVERIFY(pages.startsWith("%PDF-"));
    QVERIFY(pages.size() > 20'000);
    m_browser.show("screen", "light");
}

void tst_CodebookBrowser::search(const QString& words)
{
    m_browser.evaluate("document.getElementById('words').value = ''; "
                       "document.getElementById('words').focus()");
    m_browser.type(words);
}

void tst_CodebookBrowser::findsByNameAndLabel()
{
    m_browser.resize(1440);
    QVERIFY(m_browser.open(m_folder.filePath("languages.html")));
    const auto found = [this] {
        return text("[...document.querySelectorAll('#found a')].map("
                    "link => link.hash + ' ' + link.textContent).join('|')");
    };
    search("roof");
    QCOMPARE(found(), QString("#ROOF ROOF Roof|#OLD_ROOF OLD_ROOF Old roof"));
    QCOMPARE(text("document.getElementById('count').textContent"), QString("Found: 2"));
    QVERIFY(m_browser.evaluate("document.getElementById('records').hidden").toBool());
    // A label of a language that is not shown is shown where it is what was found.
    search("TOIT");
    QCOMPARE(found(), QString("#ROOF ROOF Toit"));
    QCOMPARE(text("document.querySelector('#found i').lang"), QString("fr"));
    search("year birth");
    QCOMPARE(found(), QString("#BIRTH_YEAR BIRTH_YEAR Year"));
    search("no such thing");
    QCOMPARE(found(), QString());
    QCOMPARE(text("document.getElementById('count').textContent"), QString("Found: 0"));
    QVERIFY(m_browser.open(m_folder.filePath("census.html")));
    search("hours of running");
    QCOMPARE(found(), QString("#WATER_HOURS WATER_HOURS Hours of running water on a usual day"));
}

void tst_CodebookBrowser::goesThroughResultsByKeys()
{
    const QString focus = "document.activeElement.hash || document.activeElement.id";
    QVERIFY(m_browser.open(m_folder.filePath("languages.html")));
    search("roof");
    m_browser.press("ArrowDown", 40);
    QCOMPARE(text(focus), QString("#ROOF"));
    m_browser.press("ArrowDown", 40);
    QCOMPARE(text(focus), QString("#OLD_ROOF"));
    m_browser.press("ArrowUp", 38);
    m_browser.press("ArrowUp", 38);
    QCOMPARE(text(focus), QString("words"));
    m_browser.press("Enter", 13, "\r");
    QCOMPARE(text("location.hash"), QString("#ROOF"));
    QVERIFY(
        number("Math.round(document.getElementById('ROOF').getBoundingClientRect().top)") < 700);
    search("roof");
    m_browser.press("Escape", 27);
    QCOMPARE(text("document.getElementById('words').value"), QString());
    QCOMPARE(number("document.querySelectorAll('#found a').length"), 0);
    QVERIFY(!m_browser.evaluate("document.getElementById('records').hidden").toBool());
}

void tst_CodebookBrowser::beginsWithASkipLink()
{
    QVERIFY(m_browser.open(m_folder.filePath("census.html")));
    m_browser.press("Tab", 9);
    QCOMPARE(text("document.activeElement.className"), QString("skip"));
    QVERIFY(number("document.activeElement.getBoundingClientRect().left") >= 0);
    m_browser.press("Enter", 13, "\r");
    QCOMPARE(text("document.activeElement.id"), QString("book"));
}

void tst_CodebookBrowser::unfoldsRecords()
{
    QVERIFY(m_browser.open(m_folder.filePath("census.html")));
    const QString item = "document.querySelector('#records > li:nth-child(2)')";
    const QString state = item + ".querySelector('button').getAttribute('aria-expanded')";
    QCOMPARE(text(state), QString("false"));
    QCOMPARE(text(item + ".querySelector('button').getAttribute('aria-label')"),
        QString("Variables of HOUSEHOLD Household"));
    m_browser.evaluate(item + ".querySelector('button').click()");
    QCOMPARE(text(state), QString("true"));
    QCOMPARE(number(item + ".querySelectorAll(':scope > ul a').length"),
        number("document.querySelectorAll('#record-HOUSEHOLD tbody tr').length"));
    QCOMPARE(
        text(item + ".querySelector(':scope > ul a').textContent"), QString("AREA_CODE Area code"));
    m_browser.evaluate(item + ".querySelector('button').click()");
    QVERIFY(m_browser.evaluate(item + ".querySelector('ul').hidden").toBool());
}

void tst_CodebookBrowser::showsOneLanguageOrAll()
{
    QVERIFY(m_browser.open(m_folder.filePath("languages.html")));
    const auto choose = [this](const QString& language) {
        m_browser.evaluate(QStringLiteral("language.value = '%1'; "
                                          "language.dispatchEvent(new Event('change'))")
                               .arg(language));
    };
    const QString title = "document.querySelector('h1').innerText";
    const QString cell =
        "document.querySelector('a[href=\"#ROOF\"]').closest('tr').cells[1].innerText";
    const QString heading = "document.querySelector('#ROOF i').innerText";
    m_browser.evaluate(layOutAll);
    QCOMPARE(text(title), QString("Household survey"));
    QCOMPARE(text(cell), QString("Roof"));
    choose("fr");
    QCOMPARE(text(title), QString("Enqu\u00eate m\u00e9nage"));
    QCOMPARE(text(cell), QString("Toit"));
    QCOMPARE(text(heading), QString("Toit"));
    QCOMPARE(text("document.querySelector('#ROOF i').lang"), QString("fr"));
    // What French does not have is told in the first language.
    QCOMPARE(text("document.querySelector('#CLUSTER').cells[1].innerText"), QString("Cluster"));
    choose("");
    QCOMPARE(text(title + ".split(/\\s*\\n\\s*/).join('|')"),
        QString("Household survey|Enqu\u00eate m\u00e9nage"));
    choose("en");
    QCOMPARE(text(heading), QString("Roof"));
}

void tst_CodebookBrowser::opensItsMenuWhereItIsNarrow()
{
    m_browser.resize(360);
    QVERIFY(m_browser.open(m_folder.filePath("census.html")));
    const QString shown = "String(words.checkVisibility())";
    QCOMPARE(text(shown), QString("false"));
    m_browser.evaluate("menu.click()");
    QCOMPARE(text(shown), QString("true"));
    search("sex");
    m_browser.evaluate("document.querySelector('#found a').click()");
    QCOMPARE(text(shown), QString("false"));
    m_browser.resize(1440);
    QCOMPARE(text(shown), QString("true"));
    QCOMPARE(text("String(menu.checkVisibility())"), QString("false"));
}

void tst_CodebookBrowser::isWholeWithoutScript()
{
    m_browser.setScript(false);
    QVERIFY(m_browser.open(m_folder.filePath("languages.html")));
    m_browser.evaluate(layOutAll);
    const QString shown = text("document.body.innerText");
    m_browser.setScript(true);
    for (const char* part : { "Household survey", "Enqu\u00eate m\u00e9nage", "Roof", "Toit",
             "North", "Nord", "PERSON", "Image: ..\\Images\\tin.jpg" })
        QVERIFY2(shown.contains(QString::fromUtf8(part)), part);
    QVERIFY(!shown.contains("Search"));
}

void tst_CodebookBrowser::runsNoLabel()
{
    const QString path = m_folder.filePath("hostile.dcf");
    const QByteArray label = "</script><script>hostile = 1</script><img src=x onerror='hostile=1'>";
    QByteArray dictionary = readFile(QStringLiteral(TESSEL_TEST_DATA "/json_household.dcf"));
    dictionary.replace("\"Household survey\"", "\"" + label + "\"");
    dictionary.replace("\"Province\"", "\"" + label + QByteArray(300, 'w') + "\"");
    QVERIFY(writeFile(path, dictionary));
    m_browser.resize(360);
    QVERIFY(m_browser.open(make("hostile", { path })));
    m_browser.evaluate(layOutAll);
    QCOMPARE(text("typeof hostile"), QString("undefined"));
    QVERIFY(text("document.title").contains("<script>hostile = 1"));
    QCOMPARE(number("document.querySelectorAll('script').length"), 1);
    QCOMPARE(number("document.querySelectorAll('img').length"), 0);
    QCOMPARE(number("document.documentElement.scrollWidth"), 360);
    m_browser.resize(1440);
    search("hostile"); // lists of links are made by script
    QCOMPARE(number("document.querySelectorAll('img').length"), 0);
    QVERIFY(number("document.querySelectorAll('#found a').length") > 0);
}

void tst_CodebookBrowser::takesManyVariables()
{
    const QString path = m_folder.filePath("many.dcf");
    QVERIFY(writeFile(path, manyVariables()));
    m_browser.resize(1440);
    QVERIFY(m_browser.open(make("many", { path })));
    for (const QString& words : { QStringLiteral("v5999"), QStringLiteral("goods 5999"),
             QStringLiteral("biens 5999"), QStringLiteral("bienes 5999"),
             QStringLiteral("bens 5999"), QStringLiteral("\u0633\u0624\u0627\u0644 5999"),
             QStringLiteral("\u1325\u12eb\u1244 5999") }) {
        search(words);
        QCOMPARE(text("[...document.querySelectorAll('#found a')].map(link => link.hash).join()"),
            QString("#V5999"));
    }
    search("v1");
    QCOMPARE(number("document.querySelectorAll('#found a').length"), 200);
    QCOMPARE(text("document.getElementById('count').textContent"),
        QString("Found: 1,111, of which the first 200 are listed"));
    m_browser.evaluate("language.value = 'am'; language.dispatchEvent(new Event('change'))");
    m_browser.evaluate("document.getElementById('V5999').scrollIntoView()");
    QVERIFY(number("scrollY") > 10'000);
    QCOMPARE(text("document.querySelector('#V5999').cells[1].innerText"),
        QString("\u1325\u12eb\u1244 5999"));
}

void tst_CodebookBrowser::pictures()
{
    const QString folder = qEnvironmentVariable("TESSEL_PICTURES");
    if (folder.isEmpty())
        QSKIP("TESSEL_PICTURES names no folder for pictures");
    const auto take = [&](const QString& name, int width, int height, const QString& scheme) {
        m_browser.resize(width, height);
        m_browser.show("screen", scheme);
        m_browser.open(m_folder.filePath("census.html"));
        m_browser.evaluate("document.querySelector('#records > li:nth-child(3) button').click(); "
                           "document.getElementById('record-PERSON').scrollIntoView()");
        QVERIFY(writeFile(QDir(folder).filePath(name), m_browser.picture()));
    };
    take("codebook-wide.png", 1100, 560, "light");
    take("codebook-narrow.png", 360, 640, "dark");
}

QTEST_GUILESS_MAIN(tst_CodebookBrowser)
#include "tst_CodebookBrowser.moc"
