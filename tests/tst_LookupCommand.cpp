// "tessel lookup" on files of every shape, and the page it writes, as a browser shows it where one
// is installed.
#include "CsvRows.h"
#include "RunTessel.h"

#include <QDir>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QXmlStreamReader>
#include <QtTest>

#include <sys/stat.h>

namespace {

Outcome runLookup(const QStringList& arguments)
{
    return runTessel(QStringList { "lookup" } + arguments);
}

QJsonObject jsonOf(const QStringList& arguments)
{
    const Outcome outcome = runLookup(arguments + QStringList { "--format", "json" });
    return QJsonDocument::fromJson(outcome.output).object();
}

/* What a page holds, by its XML. */
struct Page {
    QString error;
    QStringList cells;
    QMap<QString, int> elements;
    QStringList references; // addresses of other resources
};

Page parsePage(const QByteArray& bytes)
{
    Page page;
    QXmlStreamReader reader(bytes);
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        const QString name = reader.name().toString();
        ++page.elements[name];
        for (const QXmlStreamAttribute& attribute : reader.attributes()) {
            const QString key = attribute.name().toString();
            if (key == "src" || key == "href" || key.startsWith("on"))
                page.references.append(key);
        }
        if (name == "td" && !reader.attributes().hasAttribute("class"))
            page.cells.append(reader.readElementText());
    }
    if (reader.hasError())
        page.error = reader.errorString();
    return page;
}

const QString injection = QStringLiteral("<script>document.title=\"injected\"</script>");

} // namespace

class tst_LookupCommand : public QObject {
    Q_OBJECT

private slots:
    void separatorsAgree_data();
    void separatorsAgree();
    void guessing_data();
    void guessing();
    void fifo();
    void csvAndJsonAgree();
    void csvQuotes();
    void exampleLookup();
    void againstCodes_data();
    void againstCodes();
    void againstEncoding();
    void encodingsAgree();
    void byteOrderMarkWinsOverEncoding();
    void onlyAByteOrderMark();
    void outputFileIsWholeOrAbsent();
    void reportIsWellFormed();
    void reportEscapesMarkup();
    void reportShowsComparison();
    void reportPutsDifferencesFirst();
    void reportHasNoBarsOfOnes();
    void reportThatCannotBeWritten();
    void reportInABrowser();
    void manyMessages();
    void longKeys();
    void longFile();
    void progressOnATerminal();

private:
    QString fileOf(const QByteArray& bytes);

    QTemporaryDir m_folder;
    int m_files = 0;
};

QString tst_LookupCommand::fileOf(const QByteArray& bytes)
{
    const QString path = m_folder.filePath(QString::number(++m_files) + ".txt");
    return writeFile(path, bytes) ? path : QString();
}

void tst_LookupCommand::separatorsAgree_data()
{
    QTest::addColumn<QString>("separator");
    for (const char* name : { "space", "tab", "comma", "semicolon", "colon" })
        QTest::newRow(name) << name;
}

void tst_LookupCommand::separatorsAgree()
{
    QFETCH(QString, separator);
    const QString file = "lookup_" + separator + ".txt";
    const QJsonObject named = jsonOf({ "--separator", separator, "--frequencies", file });
    const QJsonObject guessed = jsonOf({ "--frequencies", file });
    for (const QJsonObject& json : { named, guessed }) {
        QCOMPARE(json.value("separator").toString(), separator);
        QCOMPARE(json.value("keys").toInt(), 4);
        QVERIFY(json.value("consistent").toBool());
        const QJsonArray frequencies = json.value("frequencies").toArray();
        QCOMPARE(frequencies.size(), 3);
        QCOMPARE(frequencies.at(0).toObject().value("value").toString(), QString("North"));
        QCOMPARE(frequencies.at(0).toObject().value("keys").toInt(), 2);
    }
    QVERIFY(!named.value("separatorGuessed").toBool());
    QVERIFY(guessed.value("separatorGuessed").toBool());
    QVERIFY(runLookup({ file }).errors.contains("taken to be " + separator.toUtf8()));
}

void tst_LookupCommand::guessing_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("separator");
    QTest::newRow("values with blanks") << QByteArray("01,New Alder\n02,Lower Jasper\n") << "comma";
    QTest::newRow("values with commas")
        << QByteArray("01 Alder, New\n02 Jasper, Lower\n") << "space";
    QTest::newRow("values with colons")
        << QByteArray("01;from 1:20\n02;from 2:30\n") << "semicolon";
    QTest::newRow("blank lines") << QByteArray("\n\n01\tA b\n\n02\tC, d\n") << "tab";
    QTest::newRow("keys of several lengths") << QByteArray("1:A\n22:B\n333:C\n") << "colon";
    QByteArray dirty;
    for (int i = 1; i <= 1000; ++i) {
        dirty += QByteArray::number(i).rightJustified(8, '0') + (i % 100 == 0 ? ' ' : ',')
            + "Place name\n";
    }
    QTest::newRow("one line in a hundred without") << dirty << "comma";
    const QByteArray others = QByteArray("1;2\n").repeated(100'000);
    QTest::newRow("others at the start, and at the end")
        << others + QByteArray("0001,Place\n").repeated(400'000) + others << "comma";
    QTest::newRow("one bad line") << QByteArray("a heading\n01;A\n02;B\n") << "semicolon";
}

void tst_LookupCommand::guessing()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, separator);
    QCOMPARE(jsonOf({ fileOf(bytes) }).value("separator").toString(), separator);
}

// A pipe cannot be read twice, and one that nobody writes to would be waited for.
void tst_LookupCommand::fifo()
{
    const QString path = m_folder.filePath("fifo");
    QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    for (const QStringList& arguments : { QStringList { path }, { "-s", "comma", path } }) {
        const Outcome outcome = runLookup(arguments);
        QCOMPARE(outcome.status, 1);
        QVERIFY(outcome.errors.startsWith(path.toUtf8() + ": error: is a "));
        QCOMPARE(outcome.errors.count('\n'), 1);
        QVERIFY(outcome.output.isEmpty());
    }
}

void tst_LookupCommand::csvAndJsonAgree()
{
    const QStringList arguments { "-s", "semicolon", "--frequencies", "lookup_problems.txt" };
    const QJsonObject json = jsonOf(arguments);
    const QVector<QStringList> lines =
        csvRows(QString::fromUtf8(runLookup(arguments + QStringList { "-f", "csv" }).output));
    const auto summary = [&](const QString& name) {
        for (const QStringList& line : lines) {
            if (line.at(0) == "summary" && line.at(1) == name)
                return line.at(6).toInt();
        }
        return -1;
    };
    QCOMPARE(summary("keys"), json.value("keys").toInt());
    QCOMPARE(summary("lines"), json.value("lines").toInt());
    QCOMPARE(summary("duplicate-key"), json.value("duplicateKeys").toInt());
    QCOMPARE(summary("wrong-key-length"), json.value("wrongKeyLengths").toInt());
    QCOMPARE(summary("no-separator"), json.value("withoutSeparator").toInt());
    QStringList csvMessages;
    for (const QStringList& line : lines) {
        QCOMPARE(line.size(), 7);
        if (line.at(0) == "message")
            csvMessages.append(line.at(2) + line.at(1) + line.at(4));
    }
    QStringList jsonMessages;
    for (const QJsonValue& value : json.value("messages").toArray()) {
        const QJsonObject message = value.toObject();
        jsonMessages.append(QString::number(message.value("line").toInt())
            + message.value("kind").toString() + message.value("text").toString());
    }
    QCOMPARE(csvMessages, jsonMessages);
    QCOMPARE(csvMessages.size(), 4);
}

void tst_LookupCommand::csvQuotes()
{
    const QString file = fileOf("01;a \"b\", c\n02;plain\n");
    const QVector<QStringList> lines = csvRows(QString::fromUtf8(
        runLookup({ "-s", "semicolon", "-f", "csv", "--frequencies", file }).output));
    QCOMPARE(lines.at(lines.size() - 2).at(4), QString("a \"b\", c"));
}

void tst_LookupCommand::exampleLookup()
{
    const QJsonObject json = jsonOf({ QStringLiteral(TESSEL_EXAMPLES "/places.csv") });
    QCOMPARE(json.value("keys").toInt(), 64);
    QCOMPARE(json.value("separator").toString(), QString("comma"));
    QVERIFY(json.value("consistent").toBool());
}

void tst_LookupCommand::againstCodes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("variable");
    QTest::addColumn<QString>("part");
    QTest::addColumn<QStringList>("keys");
    const QByteArray provinces("011;Alta R\u00eda\n12.0;Bassemer\n21;x\n99;None\nA;Letter\n");
    QTest::newRow("numbers compare as numbers") << provinces << "PROVINCE"
                                                << "keysWithoutLabel" << QStringList { "99", "A" };
    QTest::newRow("labels without a key") << provinces << "province"
                                          << "labelsWithoutKey" << QStringList { "22", "31", "40" };
    QTest::newRow("texts that differ") << provinces << "Province"
                                       << "differentTexts" << QStringList { "21" };
    QTest::newRow("within a range") << QByteArray("1;One\n9;Nine\n10;Ten\n") << "DISTRICT"
                                    << "keysWithoutLabel" << QStringList { "10" };
    QTest::newRow("range without a key") << QByteArray("10;Ten\n") << "DISTRICT"
                                         << "labelsWithoutKey" << QStringList { "1:9" };
}

void tst_LookupCommand::againstCodes()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, variable);
    QFETCH(QString, part);
    QFETCH(QStringList, keys);
    const QJsonObject json = jsonOf({ "-s", "semicolon", "--against",
        QStringLiteral(TESSEL_EXAMPLES "/census.dcf:") + variable, fileOf(bytes) });
    QStringList found;
    for (const QJsonValue& value : json.value("against").toObject().value(part).toArray())
        found.append(value.toObject().value("key").toString());
    QCOMPARE(found, keys);
    QVERIFY(!json.value("consistent").toBool());
}

// The advice that is given on the dictionary can be followed.
void tst_LookupCommand::againstEncoding()
{
    const QString dictionary = m_folder.filePath("greek.dcf");
    QVERIFY(writeFile(dictionary,
        "[Dictionary]\nVersion=CSPro 7.7\nName=D\n\n[Level]\nName=L\n\n[Record]\nName=R\n\n[Item]\n"
        "Name=V\nStart=1\nLen=1\n\n[ValueSet]\nName=S\nValue=1;\xC5ge\n"));
    const QString lookup = fileOf(QStringLiteral("1;\u0395ge\n").toUtf8());
    const QStringList arguments { "--separator", "semicolon", "--against", dictionary + ":V",
        lookup };
    const Outcome found = runLookup(arguments);
    QCOMPARE(found.status, 1);
    QVERIFY2(found.errors.contains("name its encoding with --against-encoding\n"),
        found.errors.constData());
    const Outcome named = runLookup(QStringList { "--against-encoding", "ISO-8859-7" } + arguments);
    QVERIFY2(named.errors.isEmpty(), named.errors.constData());
    QCOMPARE(named.status, 0);
    QVERIFY(runLookup({ "--against-encoding", "none", "--against", dictionary + ":V", lookup })
                .errors.contains("unknown encoding 'none'"));
    const Outcome alone = runLookup({ "--against-encoding", "UTF-8", lookup });
    QCOMPARE(alone.status, 2);
    QVERIFY(alone.errors.contains("--against-encoding is for --against"));
}

void tst_LookupCommand::encodingsAgree()
{
    const QString text = QString::fromUtf8("01;\u00c9tang\r\n02;C\u00f4te, \u0d2e\u010d\r\n");
    const QJsonArray expected =
        jsonOf({ "--frequencies", fileOf(text.toUtf8()) }).value("frequencies").toArray();
    QCOMPARE(expected.size(), 2);
    QCOMPARE(expected.at(1).toObject().value("value").toString(), QString::fromUtf8("\u00c9tang"));
    for (const char* name : { "UTF-16LE", "UTF-16BE", "UTF-32LE" }) {
        QTextCodec* const codec = QTextCodec::codecForName(name);
        QTextCodec::ConverterState plain(QTextCodec::IgnoreHeader);
        const QByteArray bytes = codec->fromUnicode(text.constData(), text.size(), &plain);
        QCOMPARE(
            jsonOf({ "--frequencies", "--encoding", name, fileOf(bytes) }).value("frequencies"),
            QJsonValue(expected));
        QTextCodec::ConverterState marked;
        const QByteArray withMark = codec->fromUnicode(text.constData(), text.size(), &marked);
        QCOMPARE(jsonOf({ "--frequencies", fileOf(withMark) }).value("frequencies"),
            QJsonValue(expected));
    }
}

void tst_LookupCommand::byteOrderMarkWinsOverEncoding()
{
    const QJsonObject json =
        jsonOf({ "--encoding", "windows-1252", "--frequencies", "lookup_bom_crlf.txt" });
    QCOMPARE(json.value("encoding").toString(), QString("UTF-8"));
    QCOMPARE(json.value("frequencies").toArray().at(1).toObject().value("value").toString(),
        QString::fromUtf8("\u00c9tang"));
}

void tst_LookupCommand::onlyAByteOrderMark()
{
    const QString file = fileOf("\xef\xbb\xbf");
    const Outcome outcome = runLookup({ file });
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.errors.startsWith(file.toUtf8() + ":1: error: no separator"));
    QVERIFY(outcome.output.isEmpty());
}

void tst_LookupCommand::outputFileIsWholeOrAbsent()
{
    const QString path = m_folder.filePath("result.json");
    const QStringList arguments { "-f", "json", "lookup_comma.txt" };
    const Outcome written = runLookup(arguments + QStringList { "-o", path });
    QCOMPARE(written.status, 0);
    QVERIFY(written.output.isEmpty());
    QCOMPARE(readFile(path), runLookup(arguments).output);
    QCOMPARE(runLookup({ "lookup_empty.txt", "-o", path }).status, 1);
    QCOMPARE(readFile(path), runLookup(arguments).output);
}

void tst_LookupCommand::reportIsWellFormed()
{
    const QString path = m_folder.filePath("report.html");
    const Outcome outcome = runLookup({ "--report", path, "--id", "AREAS", "--label",
        "Areas & places", "-s", "semicolon", "lookup_problems.txt" });
    QCOMPARE(outcome.status, 1);
    QVERIFY(!outcome.output.contains("how many keys carry each"));
    const QByteArray bytes = readFile(path);
    const Page page = parsePage(bytes);
    QVERIFY2(page.error.isEmpty(), qPrintable(page.error));
    for (const char* text : { "AREAS", "Areas & places", "lookup_problems.txt", "semicolon",
             "Key [02] already exists", "North" })
        QVERIFY2(page.cells.contains(text), text);
    for (const char* caption : { "<h1>Lookup check</h1>", "<title>Lookup check: AREAS</title>",
             "Lookup Identification", "Lookup Label", "Lookup File" })
        QVERIFY2(bytes.contains(caption), caption);
    QVERIFY(bytes.contains("is not consistent"));
    QCOMPARE(page.elements.value("svg"), 3);
    QVERIFY(bytes.contains("<rect width=\"100.00\""));
    QVERIFY(bytes.contains("<rect width=\"50.00\""));
    QVERIFY(bytes.contains("@media print"));
    QVERIFY(bytes.contains("name=\"viewport\""));
    QCOMPARE(page.references, QStringList());
    QVERIFY(!bytes.contains("url("));
    QVERIFY(!bytes.contains("@import"));
}

void tst_LookupCommand::reportEscapesMarkup()
{
    const QString path = m_folder.filePath("markup.html");
    runLookup({ "--report", path, "--id", injection, "--label", "'\"><img/>", "-s", "semicolon",
        "lookup_markup.txt" });
    const QByteArray bytes = readFile(path);
    const Page page = parsePage(bytes);
    QVERIFY2(page.error.isEmpty(), qPrintable(page.error));
    QCOMPARE(page.elements.value("script"), 0);
    QCOMPARE(page.elements.value("img"), 0);
    QCOMPARE(page.elements.value("b"), 0);
    QCOMPARE(page.elements.value("style"), 1);
    QCOMPARE(page.references, QStringList());
    QVERIFY(page.cells.contains(injection));
    QVERIFY(page.cells.contains("A & B 'quoted' </td></table>"));
    QVERIFY(bytes.contains("&lt;script&gt;document.title=&quot;injected&quot;&lt;/script&gt;"));
    QVERIFY(!bytes.contains('\x1b'));
}

void tst_LookupCommand::reportShowsComparison()
{
    const QString path = m_folder.filePath("against.html");
    runLookup({ "--report", path, "--against",
        QStringLiteral(TESSEL_EXAMPLES "/household.sav:province"), "lookup_provinces.txt" });
    const Page page = parsePage(readFile(path));
    QVERIFY2(page.error.isEmpty(), qPrintable(page.error));
    QVERIFY(page.cells.contains("Nowhere"));
    QVERIFY(page.cells.contains("Isles of Fenn"));
    QVERIFY(page.cells.contains("Côte-d'Ivry"));
}

void tst_LookupCommand::reportPutsDifferencesFirst()
{
    const QString path = m_folder.filePath("order.html");
    runLookup({ "--report", path, "--against",
        QStringLiteral(TESSEL_EXAMPLES "/household.sav:province"), "lookup_provinces.txt" });
    const QByteArray page = readFile(path);
    const int zeros = page.indexOf("<h2>Not found</h2>");
    QVERIFY(zeros > 0);
    QVERIFY(page.indexOf("<h3>Texts that differ</h3>") < zeros);
    QVERIFY(page.indexOf("Texts that differ</th>") < page.indexOf("<h3>Texts that differ</h3>"));
    QVERIFY(page.indexOf("Duplicate keys</th><td dir=\"auto\">0</td>") > zeros);
    QVERIFY(page.indexOf("<h2>Messages</h2>") < zeros);
    QCOMPARE(
        page.indexOf("<td dir=\"auto\">0</td>"), page.indexOf("<td dir=\"auto\">0</td>", zeros));

    runLookup({ "--report", path, "-s", "semicolon", "lookup_problems.txt" });
    const QByteArray problems = readFile(path);
    QVERIFY(problems.contains("<h2>Messages</h2>"));
    QVERIFY(problems.indexOf("Duplicate keys</th>") < problems.indexOf("<h2>Messages</h2>"));
}

void tst_LookupCommand::reportHasNoBarsOfOnes()
{
    const QString path = m_folder.filePath("ones.html");
    runLookup({ "--report", path, "-s", "semicolon", fileOf("1;one\n2;two\n") });
    const QByteArray ones = readFile(path);
    QVERIFY(ones.contains("<th scope=\"col\" class=\"number\">Keys</th></tr>"));
    QVERIFY(!ones.contains("<svg"));
    runLookup({ "--report", path, "-s", "semicolon", fileOf("1;one\n2;two\n3;one\n") });
    const QByteArray twos = readFile(path);
    QCOMPARE(twos.count("<svg"), 2);
    QVERIFY(twos.contains("<th scope=\"col\">Share</th>"));
    QVERIFY(!twos.contains("<th scope=\"col\"></th>"));
}

void tst_LookupCommand::reportThatCannotBeWritten()
{
    const Outcome outcome =
        runLookup({ "--report", m_folder.filePath("missing/report.html"), "lookup_comma.txt" });
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.errors.contains("report.html: error: cannot be written"));
}

void tst_LookupCommand::reportInABrowser()
{
    const QString browser = QStandardPaths::findExecutable("chromium");
    if (browser.isEmpty())
        QSKIP("chromium is not installed, so the page is not looked at in a browser");
    const QString path = m_folder.filePath("shown.html");
    runLookup({ "--report", path, "--id", "MARKUP", "-s", "semicolon", "lookup_markup.txt" });
    QProcess process;
    process.start(browser,
        { "--headless", "--no-sandbox", "--disable-gpu",
            "--user-data-dir=" + m_folder.filePath("profile"), "--dump-dom", "file://" + path });
    QVERIFY(process.waitForFinished(120000));
    const QString shown = QString::fromUtf8(process.readAllStandardOutput());
    QVERIFY(!shown.isEmpty());
    // Markup of a value that came to life would have changed the title and added elements.
    QVERIFY(shown.contains("Lookup check: MARKUP</title>"));
    QVERIFY(!shown.contains("<script"));
    QVERIFY(!shown.contains("<img"));
    QVERIFY(shown.contains("&lt;script&gt;document.title=\"injected\"&lt;/script&gt;</td>"));
    QVERIFY(shown.contains("Key [&lt;b&gt;4] has a different key size [4]"));
    QVERIFY(shown.contains("is not consistent"));
    QCOMPARE(shown.count("<svg"), 5);
    QCOMPARE(shown.count("</svg>"), 5);
}

void tst_LookupCommand::manyMessages()
{
    constexpr int Count = 100000;
    QByteArray bytes("0;first\n");
    for (int i = 0; i < Count; ++i)
        bytes += "0;again\n";
    const QString report = m_folder.filePath("many.html");
    const QString file = fileOf(bytes);
    const QJsonObject json = jsonOf({ "-s", "semicolon", "--report", report, file });
    QCOMPARE(json.value("duplicateKeys").toInt(), Count);
    const QJsonArray messages = json.value("messages").toArray();
    QCOMPARE(messages.size(), Count);
    for (const int index : { 0, 1, Count - 1 }) {
        const QJsonObject message = messages.at(index).toObject();
        QCOMPARE(message.value("text").toString(), QString("Key [0] already exists"));
        QCOMPARE(message.value("line").toInt(), index + 2);
    }
    QCOMPARE(parsePage(readFile(report)).error, QString());
    const Outcome table = runLookup({ "-s", "semicolon", file });
    QCOMPARE(table.status, 1);
    QCOMPARE(table.output.count("already exists"), Count);
    QVERIFY(!table.output.contains("Too many"));
}

// A message quotes what fits a line, and names the line.
void tst_LookupCommand::longKeys()
{
    const QByteArray key(100'000, 'k');
    const QString file = fileOf("01,a\n" + key + ",b\n" + key + ",c\n");
    const QString quote = QString(80, 'k') + "...";
    const QStringList expected { "Key [" + quote
            + "] has a different key size [100000] from the first record [2]",
        "Key [" + quote + "] has a different key size [100000] from the first record [2]",
        "Key [" + quote + "] already exists" };
    QStringList texts;
    const QJsonArray messages = jsonOf({ file }).value("messages").toArray();
    for (const QJsonValue& message : messages)
        texts.append(message.toObject().value("text").toString());
    std::sort(texts.begin(), texts.end(), std::greater<>());
    QCOMPARE(texts, expected);
    QVERIFY(runLookup({ file }).output.size() < 2000);
}

void tst_LookupCommand::longFile()
{
    constexpr int Count = 200000;
    QByteArray bytes;
    bytes.reserve(Count * 32);
    for (int i = 0; i < Count; ++i) {
        bytes += QByteArray::number((i * 7919LL) % Count + Count) + "\tvalue "
            + QByteArray::number(i % 1000) + '\n';
    }
    const Outcome outcome = runLookup({ "--frequencies", "-f", "json", fileOf(bytes) });
    QCOMPARE(outcome.status, 0);
    QVERIFY(!outcome.errors.contains('\r'));
    const QJsonObject json = QJsonDocument::fromJson(outcome.output).object();
    QCOMPARE(json.value("keys").toInt(), Count);
    const QJsonArray frequencies = json.value("frequencies").toArray();
    QCOMPARE(frequencies.size(), 1000);
    QCOMPARE(frequencies.at(999).toObject().value("keys").toInt(), 200);
}

void tst_LookupCommand::progressOnATerminal()
{
    // "script" gives the program a terminal of its own.
    if (QProcess::execute("script", { "-qec", "true", "/dev/null" }) != 0)
        QSKIP("no terminal can be had here");
    // The faster the machine, the longer a file has to be for the bar to be due.
    constexpr int LongEnough = 2000; // milliseconds, within which the bar has to appear
    QByteArray shown;
    QElapsedTimer time;
    int lines = 1'000'000;
    do {
        QByteArray bytes;
        for (int i = 0; i < lines; ++i)
            bytes += QByteArray::number(10'000'000 + i) + ",some value\n";
        const QString file = fileOf(bytes);
        QProcess process;
        time.start();
        process.start("script",
            { "-qec",
                QStringLiteral("'%1' lookup -s comma -o %3 '%2'")
                    .arg(TESSEL_PROGRAM, file, m_folder.filePath("progress.txt")),
                "/dev/null" });
        QVERIFY(process.waitForFinished(120000));
        shown = process.readAll();
        lines *= 2;
    } while (!shown.contains("\rreading ") && time.elapsed() < LongEnough);
    QVERIFY2(shown.contains("\rreading "), shown.constData());
    QVERIFY(shown.contains("###"));
    QVERIFY(shown.contains("%"));
    QVERIFY(shown.endsWith(" \r"));
}

QTEST_GUILESS_MAIN(tst_LookupCommand)
#include "tst_LookupCommand.moc"
