// The files that "tessel diff" writes beside its text, and dictionaries of real rounds.
#include "RunTessel.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSet>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtTest>

#include <algorithm>

namespace {

const QStringList rounds { "diff_before.dcf", "diff_after.dcf" };

QStringList linesOf(const QByteArray& text)
{
    return QString::fromUtf8(text).split('\n', Qt::SkipEmptyParts);
}

// Two rounds of a census; empty: there are none here.
QStringList corpusRounds()
{
    const QDir corpus(qEnvironmentVariable("TESSEL_CORPUS") + "/cspro");
    const QStringList files { corpus.filePath("ethiopia-census2017-household.dcf"),
        corpus.filePath("ethiopia-household.dcf") };
    return QFile::exists(files.constFirst()) && QFile::exists(files.constLast()) ? files
                                                                                 : QStringList();
}

// The report of two dictionaries; empty when the program made none.
QByteArray reportOf(const QStringList& files, const QStringList& more = {})
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("report.html");
    runTessel(QStringList { "diff", "--report", path } + more + files);
    return QFile::exists(path) ? readFile(path) : QByteArray();
}

// What a page shows, by its XML.
struct Page {
    QString error;
    QString text; // blanks at the ends of pieces left out
    QMap<QString, int> elements;
    QStringList references; // addresses of other resources, and handlers
    int headCellsWithoutScope = 0;
};

Page parsePage(const QByteArray& bytes)
{
    Page page;
    QXmlStreamReader reader(bytes);
    QStringList pieces;
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        if (token == QXmlStreamReader::Characters && !reader.isWhitespace())
            pieces.append(reader.text().toString().trimmed());
        if (token != QXmlStreamReader::StartElement)
            continue;
        const QString name = reader.name().toString();
        ++page.elements[name];
        const QXmlStreamAttributes attributes = reader.attributes();
        for (const QXmlStreamAttribute& attribute : attributes) {
            const QString key = attribute.name().toString();
            if (key == "src" || key == "href" || key.startsWith("on"))
                page.references.append(key);
        }
        if (name == "th" && !attributes.hasAttribute("scope"))
            ++page.headCellsWithoutScope;
    }
    page.error = reader.hasError() ? reader.errorString() : QString();
    page.text = pieces.join('|');
    return page;
}

const QByteArray injection = "<script>document.title='injected'</script>";

// Two rounds whose labels and codes are hostile.
QStringList hostileRounds(const QTemporaryDir& folder)
{
    const QByteArray text = readFile(dataFolder() + "/diff_before.dcf");
    QByteArray before = text;
    before.replace("Label=Rooms", "Label=" + injection);
    before.replace("Label=Household", "Label=\"'><b>&amp;]]>\x01");
    QByteArray after = before;
    after.replace("Value=10;Ten or more",
        "Value=10;" + injection + "\nValue=21;" + injection
            + "\nValue=22;&lt;\nValue=23;\x1b[31m\n"
              "Value=24;"
            + QByteArray(400, 'W'));
    after.replace("Start=7\nLen=3", "Start=7\nLen=4");
    const QStringList files { folder.filePath("before.dcf"), folder.filePath("after<b>.dcf") };
    return writeFile(files.at(0), before) && writeFile(files.at(1), after) ? files : QStringList();
}

// What chromium says of a page, by a script beside it; null without chromium.
QString askBrowser(const QByteArray& page, int width, const QByteArray& question)
{
    const QString browser = QStandardPaths::findExecutable("chromium");
    const QTemporaryDir folder;
    writeFile(folder.filePath("page.html"), page);
    writeFile(folder.filePath("ask.html"),
        "<!DOCTYPE html><html><body><iframe src='page.html' style='border:0;height:900px;width:"
            + QByteArray::number(width)
            + "px'></iframe><script>onload = () => { const page = "
              "document.querySelector('iframe').contentDocument; document.body.textContent = '[' + "
              "("
            + question + ") + ']'; };</script></body></html>");
    QProcess process;
    process.start(browser,
        { "--headless", "--no-sandbox", "--disable-gpu", "--allow-file-access-from-files",
            "--user-data-dir=" + folder.filePath("profile"), "--virtual-time-budget=20000",
            "--dump-dom", "file://" + folder.filePath("ask.html") });
    if (browser.isEmpty() || !process.waitForFinished(120'000))
        return QString();
    const QString shown = QString::fromUtf8(process.readAllStandardOutput());
    const int start = shown.indexOf("<body>[") + 7;
    return start < 7 ? QString() : shown.mid(start, shown.indexOf(']', start) - start);
}

} // namespace

class tst_DiffCommand : public QObject {
    Q_OBJECT

private slots:
    void statusIsThatOfAllDifferences();
    void breakingLeavesOthersOut();
    void crosswalkOfRounds();
    void targetsReplaceNothing_data();
    void targetsReplaceNothing();
    void failedTargetIsTrouble();
    void reportShowsAll();
    void reportOfBreakingOnly();
    void reportKeepsHostileTexts();
    void reportInABrowser();
    void corpusRoundsAreFolded();
    void corpusCrosswalk();
};

void tst_DiffCommand::statusIsThatOfAllDifferences()
{
    // A label alone differs, so that nothing breaks.
    QTemporaryDir folder;
    const QString other = folder.filePath("other.dcf");
    QByteArray text = readFile(dataFolder() + "/diff_before.dcf");
    QVERIFY(writeFile(other, text.replace("Label=Rooms", "Label=All rooms")));
    for (const char* format : { "text", "csv", "json" }) {
        const QStringList options { "diff", "--breaking", "-f", format, "diff_before.dcf" };
        QCOMPARE(runTessel(options + QStringList(other)).status, 1);
        QCOMPARE(runTessel(options + QStringList("diff_before.dcf")).status, 0);
        QCOMPARE(runTessel(options + QStringList("missing.dcf")).status, 2);
    }
}

void tst_DiffCommand::breakingLeavesOthersOut()
{
    const QByteArray all = runTessel(QStringList { "diff", "-f", "csv" } + rounds).output;
    const QStringList lines = linesOf(all);
    const QStringList breaking =
        linesOf(runTessel(QStringList { "diff", "--breaking", "-f", "csv" } + rounds).output);
    QStringList expected = lines.filter(QLatin1String(",yes,"));
    expected.prepend(lines.constFirst());
    QCOMPARE(breaking, expected);
    QVERIFY(breaking.size() > 1 && breaking.size() < lines.size());
    const QByteArray json =
        runTessel(QStringList { "diff", "--breaking", "-f", "json" } + rounds).output;
    QCOMPARE(json.count("\"breaks\":true"), breaking.size() - 1);
    QVERIFY(!json.contains("\"breaks\":false"));
    QVERIFY(json.contains(QString("\"fitting\":%1").arg(lines.size() - breaking.size()).toUtf8()));
}

void tst_DiffCommand::crosswalkOfRounds()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("crosswalk.csv");
    const Outcome outcome = runTessel(QStringList { "diff", "--crosswalk", path } + rounds);
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.output, runTessel(QStringList("diff") + rounds).output);
    const QStringList lines = QString::fromUtf8(readFile(path)).split("\r\n");
    QVERIFY(lines.contains(
        "LANGUAGE,,LANGUAGE,,variable,Language spoken,Language spoken,PERSON,PERSON,"));
    QVERIFY(lines.contains("SEX,1,SEX,1,value,Male,Male,PERSON,PERSON,"));
    QVERIFY(lines.contains(",,SEX,3,value,,Other,,PERSON,"));
    QCOMPARE(lines.filter("LANGUAGE").size(), 1);
    QVERIFY(!QString::fromUtf8(readFile(path)).startsWith(QChar(QChar::ByteOrderMark)));
    QCOMPARE(
        runTessel(QStringList { "diff", "--spreadsheet", "--crosswalk", path } + rounds).status, 1);
    QVERIFY(readFile(path).startsWith("\xEF\xBB\xBF"));
}

void tst_DiffCommand::targetsReplaceNothing_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("error");
    QTest::newRow("crosswalk over an input")
        << QStringList { "--crosswalk", "diff_after.dcf" } << QByteArray("would replace an input");
    QTest::newRow("crosswalk over the output") << QStringList { "--crosswalk", "x.csv", "-o",
        "x.csv" } << QByteArray("--crosswalk names the file of another option");
    QTest::newRow("report over an input")
        << QStringList { "--report", "diff_after.dcf" } << QByteArray("would replace an input");
    QTest::newRow("report over the crosswalk") << QStringList { "--crosswalk", "x.csv", "--report",
        "x.csv" } << QByteArray("--crosswalk names the file of another option");
    QTest::newRow("crosswalk without a name")
        << QStringList { "--crosswalk", "" } << QByteArray("--crosswalk needs the name of a file");
    QTest::newRow("spreadsheet without CSV")
        << QStringList { "--spreadsheet" }
        << QByteArray("--spreadsheet goes with --format csv or --crosswalk only");
}

void tst_DiffCommand::targetsReplaceNothing()
{
    QFETCH(QStringList, options);
    QFETCH(QByteArray, error);
    const QByteArray input = readFile(dataFolder() + "/diff_after.dcf");
    const Outcome outcome = runTessel(QStringList("diff") + options + rounds);
    QCOMPARE(outcome.status, 2);
    QVERIFY2(outcome.errors.contains(error), outcome.errors.constData());
    QCOMPARE(readFile(dataFolder() + "/diff_after.dcf"), input);
    QVERIFY(!QFile::exists(dataFolder() + "/x.csv"));
}

void tst_DiffCommand::failedTargetIsTrouble()
{
    QTemporaryDir folder;
    const QString nowhere = folder.filePath("missing/file");
    for (const char* option : { "--crosswalk", "--report" }) {
        const Outcome outcome = runTessel(QStringList { "diff", option, nowhere } + rounds);
        QCOMPARE(outcome.status, 2);
        QVERIFY(outcome.errors.contains("cannot be written"));
    }
}

void tst_DiffCommand::reportShowsAll()
{
    const QByteArray bytes = reportOf(rounds);
    const Page page = parsePage(bytes);
    QCOMPARE(page.error, QString());
    QVERIFY(bytes.contains(" lang=\"en\""));
    QCOMPARE(page.references, QStringList());
    QCOMPARE(page.headCellsWithoutScope, 0);
    QCOMPARE(page.elements.value("main"), 1);
    QCOMPARE(page.elements.value("script"), 0);
    QVERIFY2(
        page.text.contains("|What can break data|HOUSEHOLD: Household|Variable|What differs|ROOMS|"
                           "Rooms|missing codes 99 -> 98|value 99 \"Not stated\" removed|RENT|"),
        qPrintable(page.text));
    QVERIFY(page.text.contains("|Whole record|record type 2 -> 3|maximum 30 -> 20|"));
    QVERIFY(page.text.contains("7 of them can break data that fits diff_before.dcf."));
    QVERIFY(bytes.indexOf("What can break data") < bytes.indexOf("What breaks none"));
    QCOMPARE(parsePage(reportOf({ "diff_before.dcf", "diff_before.dcf" })).elements.value("h2"), 0);
    // Each difference, of short runs, is a line.
    const QStringList lines =
        linesOf(runTessel(QStringList { "diff", "-f", "csv" } + rounds).output);
    QCOMPARE(page.elements.value("li"), lines.size() - 1);
}

void tst_DiffCommand::reportOfBreakingOnly()
{
    const Page page = parsePage(reportOf(rounds, { "--breaking" }));
    QCOMPARE(page.error, QString());
    QCOMPARE(page.elements.value("h2"), 1);
    QCOMPARE(page.elements.value("li"), 7);
}

void tst_DiffCommand::reportKeepsHostileTexts()
{
    const QTemporaryDir folder;
    const QStringList files = hostileRounds(folder);
    QCOMPARE(files.size(), 2);
    const QByteArray bytes = reportOf(files);
    const Page page = parsePage(bytes);
    QCOMPARE(page.error, QString());
    QCOMPARE(page.elements.value("script"), 0);
    QCOMPARE(page.elements.value("b"), 0);
    QCOMPARE(page.references, QStringList());
    QVERIFY2(page.text.contains(QString::fromUtf8(injection)), qPrintable(page.text));
    QVERIFY(page.text.contains("after<b>.dcf"));
    QVERIFY(page.text.contains("&lt;"));
    QVERIFY(page.text.contains("|21|" + QString::fromUtf8(injection) + "|22|"));
    QVERIFY(!bytes.contains('\x1b'));
}

// No page is wider than the window, and nothing of a label came to life.
void tst_DiffCommand::reportInABrowser()
{
    if (QStandardPaths::findExecutable("chromium").isEmpty())
        QSKIP("chromium is not installed, so the page is not looked at in a browser");
    const QTemporaryDir folder;
    const QByteArray page = reportOf(hostileRounds(folder));
    QVERIFY(!page.isEmpty());
    for (const int width : { 360, 1440 }) {
        QCOMPARE(
            askBrowser(page, width, "page.documentElement.scrollWidth"), QString::number(width));
    }
    QCOMPARE(askBrowser(page, 800,
                 "[page.title, page.querySelectorAll('script,b').length, "
                 "page.querySelectorAll('details').length].join()"),
        QString("Differences of two dictionaries,0,1"));
}

void tst_DiffCommand::corpusRoundsAreFolded()
{
    if (corpusRounds().isEmpty())
        QSKIP("needs the dictionaries of TESSEL_CORPUS");
    const QStringList text = linesOf(runTessel(QStringList("diff") + corpusRounds()).output);
    const QStringList csv =
        linesOf(runTessel(QStringList { "diff", "-f", "csv" } + corpusRounds()).output);
    QVERIFY2(text.size() < 300, qPrintable(QString::number(text.size())));
    QVERIFY2(csv.size() > 1800, qPrintable(QString::number(csv.size())));
    const Page page = parsePage(reportOf(corpusRounds()));
    QCOMPARE(page.error, QString());
    QVERIFY(page.text.contains("|237 values added: 67, 1 to 66, 68 to 237|Code|Label|67|"));
    QVERIFY(text.contains("    P305       237 values added: 67, 1 to 66, 68 to 237"));
    QVERIFY(text.constLast().startsWith(QString("%1 differences").arg(csv.size() - 1)));
}

// Each old code of a variable once, so that a join multiplies no case.
void tst_DiffCommand::corpusCrosswalk()
{
    if (corpusRounds().isEmpty())
        QSKIP("needs the dictionaries of TESSEL_CORPUS");
    QTemporaryDir folder;
    const QString path = folder.filePath("crosswalk.csv");
    QCOMPARE(runTessel(QStringList { "diff", "--crosswalk", path } + corpusRounds()).status, 1);
    const QStringList lines = QString::fromUtf8(readFile(path)).split("\r\n", Qt::SkipEmptyParts);
    QVERIFY(lines.size() > 2000);
    QVERIFY(lines.contains("P313,3,,,value,Don't know,,INDIVIDUAL,,8"));
    QVERIFY(
        lines.contains("P304A,14,P304A,14,value,Diredawa,Addis Ababa,INDIVIDUAL,INDIVIDUAL,15"));
    QSet<QString> known;
    for (const QString& line : lines) {
        const QStringList cells = line.split(',');
        const bool hasOldCode = !cells.at(0).isEmpty();
        const QString key = cells.at(0) + ',' + cells.at(1);
        QVERIFY2(!hasOldCode || !known.contains(key), qPrintable(line));
        known.insert(key);
    }
}

QTEST_GUILESS_MAIN(tst_DiffCommand)
#include "tst_DiffCommand.moc"
