// tessel check, run as a user runs it, and its outcome compared with what is known of the data.
#include "RunTessel.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <sqlite3.h>

namespace {

const QString dictionary = QStringLiteral("../../examples/census.dcf");
const QString spoilt = QStringLiteral("../../examples/census_problems.dat");

// One record; CODE has two value sets.
QByteArray smallDictionary()
{
    return "[Dictionary]\nVersion=CSPro "
           "7.7\nName=SMALL_DICT\nRecordTypeStart=0\nRecordTypeLen=0\n\n"
           "[Level]\nName=L\n\n[IdItems]\n\n[Item]\nName=NUMBER\nStart=1\nLen=2\n\n"
           "[Record]\nName=R\nRecordTypeValue=''\n\n"
           "[Item]\nName=CODE\nStart=3\nLen=2\n\n[ValueSet]\nName=V1\nValue=1:5\n\n"
           "[ValueSet]\nName=V2\nValue=6:9\n";
}

QStringList sortedLines(const QByteArray& text)
{
    QStringList lines = QString::fromUtf8(text).split(QStringLiteral("\r\n"));
    lines.sort();
    return lines;
}

// For a program whose reads of the file fail behind its first bytes.
QProcessEnvironment failingBehind(const QString& file)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LD_PRELOAD", environment.value("LD_PRELOAD") + " " TESSEL_FAILING_READ);
    environment.insert("ASAN_OPTIONS", "verify_asan_link_order=0");
    environment.insert(
        "FAILING_READ_FILE", QFileInfo(QDir(dataFolder()).filePath(file)).canonicalFilePath());
    environment.insert("FAILING_READ_BYTES", "100000");
    return environment;
}

QJsonObject objectOf(const QByteArray& json)
{
    return QJsonDocument::fromJson(json).object();
}

} // namespace

class tst_CheckCommand : public QObject {
    Q_OBJECT

private slots:
    void init();
    void everyKindOfProblem();
    void problemsAsJson();
    void tooLongLine();
    void strictness_data();
    void strictness();
    void standardInput();
    void pipeAsData();
    void wrongUsage_data();
    void wrongUsage();
    void unreadable_data();
    void unreadable();
    void problemFileIsWholeOrAbsent();
    void databases();
    void noDatabases_data();
    void noDatabases();
    void statFilesAgreeWithTheirSource_data();
    void statFilesAgreeWithTheirSource();
    void failingDisk_data();
    void failingDisk();
    void shrinkingFile();
    void growingFile();
    void assumedEncodingIsTold();
    void dataEncoding();
    void carriageReturnsAreTold();
    void foreignFileIsTold();
    void dictionaryProblemsAreTold();
    void dictionaryOptions_data();
    void dictionaryOptions();
    void uselessOptionsAreTold();
    void progressOnATerminal();

private:
    QString fileOf(const QString& name, const QByteArray& bytes) const;
    QString databaseOf(QByteArray dictionaryText) const;
    QString path(const QString& name) const
    {
        return m_folder->filePath(name);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_CheckCommand::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

QString tst_CheckCommand::fileOf(const QString& name, const QByteArray& bytes) const
{
    QFile file(path(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
    return file.fileName();
}

void tst_CheckCommand::everyKindOfProblem()
{
    const QString all = path("all.csv");
    const Outcome outcome = runTessel({ "check", dictionary, spoilt, "--problems", all });
    QCOMPARE(outcome.status, 1);
    QByteArray found = readFile(all);
    found.replace(spoilt.toUtf8(), "census_problems.dat");
    QCOMPARE(sortedLines(found),
        sortedLines(readFile(QStringLiteral(TESSEL_EXAMPLES "/census_problems.csv"))));
    QVERIFY2(
        outcome.output.contains("47 lines read = 42 records + 1 deleted + 1 blank + 3 rejected"),
        outcome.output.constData());
}

void tst_CheckCommand::problemsAsJson()
{
    const QString all = path("all.json");
    const Outcome outcome =
        runTessel({ "check", "-f", "json", dictionary, spoilt, "--problems", all });
    const QJsonObject file = objectOf(readFile(all));
    QCOMPARE(file.value("tesselProblems").toInt(), 1);
    const QJsonObject check = objectOf(outcome.output);
    QCOMPARE(check.value("tesselCheck").toInt(), 1);
    QCOMPARE(check.value("clean").toBool(), false);
    QHash<QString, int> counts;
    const QJsonArray problems = file.value("problems").toArray();
    for (const QJsonValue& problem : problems)
        ++counts[problem.toObject().value("kind").toString()];
    // A text that is none is null, as where there is no line.
    for (const QJsonValue& problem : problems) {
        const QJsonObject one = problem.toObject();
        QCOMPARE(one.size(), 9);
        QVERIFY(one.value("case").isNull() || !one.value("case").toString().isEmpty());
        QVERIFY(one.value("line").toInt() > 0);
        const bool isRepeated =
            one.value("kind") == "duplicate-case" || one.value("kind") == "scattered-case";
        QCOMPARE(one.value("firstLine").isNull(), !isRepeated);
    }
    const QJsonArray kinds = check.value("problems").toArray();
    for (const QJsonValue& kind : kinds)
        QCOMPARE(kind.toObject().value("count").toInt(),
            counts.take(kind.toObject().value("kind").toString()));
    QVERIFY(counts.isEmpty());
}

void tst_CheckCommand::tooLongLine()
{
    const QString small = fileOf("small.dcf", smallDictionary());
    const QString data = fileOf("d.dat", "01 1\n" + QByteArray(3'000'000, '2') + "\n03 3\n");
    const Outcome outcome = runTessel({ "check", small, data });
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.output.contains("3 lines read = 2 records + 0 deleted + 0 blank + 1 rejected"));
    QVERIFY(outcome.output.contains("Lines that are too long (rejected): 1"));
    QVERIFY(outcome.output.size() < 10'000);
}

void tst_CheckCommand::strictness_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("status");
    QTest::newRow("clean") << QByteArray("01 1\n") << QStringList() << 0;
    QTest::newRow("clean, strict") << QByteArray("01 1\n") << QStringList { "--strict" } << 0;
    QTest::newRow("code") << QByteArray("01 7\n") << QStringList() << 0;
    QTest::newRow("code, strict") << QByteArray("01 7\n") << QStringList { "--strict" } << 1;
    QTest::newRow("code of another set")
        << QByteArray("01 7\n") << QStringList { "--strict", "--any-value-set" } << 0;
    QTest::newRow("code of no set")
        << QByteArray("0110\n") << QStringList { "--strict", "--any-value-set" } << 1;
    QTest::newRow("no number") << QByteArray("01 x\n") << QStringList() << 1;
    QTest::newRow("no identification") << QByteArray("   1\n") << QStringList() << 1;
    QTest::newRow("no lines") << QByteArray() << QStringList { "--strict" } << 0;
}

void tst_CheckCommand::strictness()
{
    QFETCH(QByteArray, data);
    QFETCH(QStringList, options);
    const QString small = fileOf("small.dcf", smallDictionary());
    const Outcome outcome =
        runTessel(QStringList { "check", small, fileOf("d.dat", data) } + options);
    QTEST(outcome.status, "status");
    QCOMPARE(outcome.output.contains("The data fit their dictionary"), outcome.status == 0);
}

void tst_CheckCommand::standardInput()
{
    const QByteArray data = readFile(QStringLiteral(TESSEL_EXAMPLES "/census_problems.dat"));
    const Outcome piped = runTessel({ "check", dictionary, "-" }, data);
    Outcome read = runTessel({ "check", dictionary, spoilt });
    QCOMPARE(piped.status, 1);
    QCOMPARE(piped.output, read.output.replace(spoilt.toUtf8() + ':', "-:"));
}

// A pipe gives its bytes once, and has no size.
void tst_CheckCommand::pipeAsData()
{
    QProcess shell;
    shell.setWorkingDirectory(dataFolder());
    shell.start("bash",
        { "-c",
            QStringLiteral("'%1' check -f json '%2' <(cat ../../examples/census.dat)")
                .arg(QStringLiteral(TESSEL_PROGRAM), dictionary) });
    QVERIFY(shell.waitForFinished(60'000));
    QCOMPARE(shell.exitCode(), 0);
    const QJsonObject counts = objectOf(shell.readAll()).value("counts").toObject();
    QCOMPARE(counts.value("records").toInt(), 5871);
    QCOMPARE(counts.value("cases").toInt(), 1000);
}

void tst_CheckCommand::wrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("message");
    const QString sav = QStringLiteral("../../examples/person.sav");
    QTest::newRow("nothing") << QStringList() << QByteArray("no file given");
    QTest::newRow("dictionary alone") << QStringList { dictionary } << QByteArray("no data file");
    QTest::newRow("data first") << QStringList { "-", spoilt } << QByteArray("cannot be standard");
    QTest::newRow("two standard inputs")
        << QStringList { dictionary, "-", "-" } << QByteArray("only once");
    QTest::newRow("SPSS file and data")
        << QStringList { sav, spoilt } << QByteArray("give it alone");
    QTest::newRow("SPSS file as data")
        << QStringList { dictionary, sav } << QByteArray("give it alone");
    QTest::newRow("--dictionary with text") << QStringList { dictionary, spoilt, "--dictionary",
        dictionary } << QByteArray("--dictionary is for a CSPro DB");
    QTest::newRow("problems in another form") << QStringList { dictionary, spoilt, "--problems",
        "x.txt" } << QByteArray("ends in .csv or .json");
    QTest::newRow("problems over the data") << QStringList { dictionary, "a.csv", "--problems",
        "./a.csv" } << QByteArray("would replace an input");
    QTest::newRow("problems over the output") << QStringList { dictionary, spoilt, "--problems",
        "a.csv", "-o", "a.csv" } << QByteArray("name the same file");
    QTest::newRow("output over the data")
        << QStringList { dictionary, spoilt, "-o", spoilt } << QByteArray("would replace an input");
    QTest::newRow("format") << QStringList { dictionary, spoilt, "-f", "xml" }
                            << QByteArray("unknown format 'xml'");
    QTest::newRow("spreadsheet without CSV")
        << QStringList { dictionary, spoilt, "--spreadsheet" } << QByteArray("--spreadsheet");
}

void tst_CheckCommand::wrongUsage()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, message);
    const Outcome outcome = runTessel(QStringList { "check" } + arguments);
    QCOMPARE(outcome.status, 2);
    QVERIFY(outcome.output.isEmpty());
    QVERIFY2(outcome.errors.contains(message), outcome.errors.constData());
}

void tst_CheckCommand::unreadable_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("no dictionary")
        << QStringList { "none.dcf", spoilt } << QByteArray("none.dcf: error: no such file");
    QTest::newRow("no SPSS file") << QStringList { "none.sav" }
                                  << QByteArray("none.sav: error: no such file");
    QTest::newRow("no data") << QStringList { dictionary, "none.dat" }
                             << QByteArray("none.dat: error: cannot be opened");
    QTest::newRow("folder") << QStringList { dictionary, "." }
                            << QByteArray(".: error: is a folder");
    QTest::newRow("no dictionary text")
        << QStringList { "lookup_provinces.txt", spoilt } << QByteArray("is no CSPro dictionary");
    QTest::newRow("no cases") << QStringList { "basic.csdb" }
                              << QByteArray("without its table of cases");
}

void tst_CheckCommand::unreadable()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, message);
    const Outcome outcome = runTessel(QStringList { "check" } + arguments);
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.output.isEmpty());
    QVERIFY2(outcome.errors.contains(message), outcome.errors.constData());
}

void tst_CheckCommand::problemFileIsWholeOrAbsent()
{
    const Outcome nowhere =
        runTessel({ "check", dictionary, spoilt, "--problems", path("none/p.csv") });
    QCOMPARE(nowhere.status, 1);
    QVERIFY2(
        nowhere.errors.contains("p.csv: error: cannot be written"), nowhere.errors.constData());
    const QString problems = fileOf("p.csv", "as before\n");
    const Outcome failed =
        runTessel({ "check", dictionary, spoilt, "none.dat", "--problems", problems });
    QCOMPARE(failed.status, 1);
    QCOMPARE(readFile(problems), QByteArray("as before\n"));
}

// Three cases as text, the second deleted, the third saved before it was complete.
QString tst_CheckCommand::databaseOf(QByteArray dictionaryText) const
{
    const QString file = path("cases.csdb");
    sqlite3* database = nullptr;
    sqlite3_open(qUtf8Printable(file), &database);
    const QByteArray statements =
        "CREATE TABLE meta (schema_version INTEGER, cspro_version TEXT, dictionary TEXT);"
        "INSERT INTO meta VALUES (2, '7.2.0', '"
        + dictionaryText.replace("'", "''")
        + "');CREATE TABLE cases (id TEXT, key TEXT, label TEXT, questionnaire TEXT,"
          " deleted INTEGER, file_order REAL, partial_save_mode TEXT);"
          "INSERT INTO cases VALUES ('a', '01', '', '01 7', 0, 1.0, NULL),"
          " ('b', '02', '', '02 x', 1, 2.0, NULL), ('c', '03', '', '03 1', 0, 3.0, 'add');";
    if (sqlite3_exec(database, statements.constData(), nullptr, nullptr, nullptr) != SQLITE_OK)
        qFatal("%s", sqlite3_errmsg(database));
    sqlite3_close(database);
    return file;
}

void tst_CheckCommand::noDatabases_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("told");
    const QByteArray unreadable = "is no CSPro DB that can be read: it is encrypted or damaged";
    QTest::newRow("empty") << "empty.csdb" << QByteArray() << QByteArray("is empty: no CSPro DB");
    QTest::newRow("encrypted") << "enc.CSDB" << QByteArray(5000, '\x9D') << unreadable;
    QTest::newRow("a text") << "text.csdb" << QByteArray("01 7\n") << unreadable;
}

// The name says what it should be, and that it is none is told of the file, not of the usage.
void tst_CheckCommand::noDatabases()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, told);
    const QString file = fileOf(name, bytes);
    const QStringList builds { "build", file, "--to", path("x.sqlite") };
    const QStringList dictionaries { "check", file, "--dictionary", dictionary };
    for (const QStringList& arguments : { QStringList { "check", file }, builds, dictionaries }) {
        const Outcome outcome = runTessel(arguments);
        QCOMPARE(outcome.status, 1);
        QVERIFY2(outcome.errors.contains(name.toUtf8() + ": error: " + told),
            outcome.errors.constData());
    }
    const Outcome asData = runTessel({ "check", dictionary, file });
    QCOMPARE(asData.status, 2);
    QVERIFY(asData.errors.contains("holds its own dictionary"));
}

void tst_CheckCommand::databases()
{
    const QString file = databaseOf(smallDictionary());
    const Outcome outcome = runTessel({ "check", file });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.output.contains(
                 "3 cases read = 2 checked, 1 of them saved before complete, + 1 deleted"),
        outcome.output.constData());
    QVERIFY(outcome.output.contains("Cases saved before they were complete: 1"));
    QVERIFY(outcome.output.contains("Values below or above all codes: 1"));
    QByteArray wider = smallDictionary();
    const QString another = fileOf("another.dcf", wider.replace("Value=1:5", "Value=1:9"));
    const Outcome other = runTessel({ "check", file, "--dictionary", another });
    QVERIFY(!other.output.contains("Values below"));
    QCOMPARE(other.status, 1);
    const Outcome none = runTessel({ "check", file, "--dictionary", "../../examples/person.sav" });
    QCOMPARE(none.status, 1);
    QCOMPARE(none.output, QByteArray());
    QVERIFY2(
        none.errors.contains("person.sav: error: is no CSPro dictionary"), none.errors.constData());
}

void tst_CheckCommand::statFilesAgreeWithTheirSource_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("record");
    for (const char* kind : { "sav", "dta" }) {
        for (const char* name : { "household", "person" }) {
            const QString file = QStringLiteral("../../examples/%1.%2").arg(name, kind);
            QTest::newRow(qPrintable(file)) << file << QString(name).toUpper();
        }
    }
}

// The files hold the data of census.dat, so that the sums over each variable are the same.
void tst_CheckCommand::statFilesAgreeWithTheirSource()
{
    QFETCH(QString, file);
    QFETCH(QString, record);
    QHash<QString, QJsonObject> expected;
    const QJsonArray source = objectOf(
        runTessel({ "check", "-f", "json", dictionary, "../../examples/census.dat" }).output)
                                  .value("variables")
                                  .toArray();
    for (const QJsonValue& value : source) {
        if (value.toObject().value("record") == record)
            expected.insert(value.toObject().value("name").toString(), value.toObject());
    }
    const Outcome outcome = runTessel({ "check", "-f", "json", file });
    QCOMPARE(outcome.status, 0);
    const QJsonArray found = objectOf(outcome.output).value("variables").toArray();
    int compared = 0;
    for (const QJsonValue& value : found) {
        const QJsonObject one = value.toObject();
        const QString name = one.value("name").toString();
        if (!expected.contains(name) || name == QLatin1String("VISIT_DATE")) // a date there
            continue;
        const QJsonObject other = expected.value(name);
        // Stata strings have no missing values, so that their codes are values there.
        if (!(file.endsWith("dta") && other.value("min").isNull())) {
            for (const char* count : { "rows", "values", "distinct" })
                QVERIFY2(one.value(count) == other.value(count), qPrintable(name + ' ' + count));
        }
        QCOMPARE(one.value("min").isNull(), other.value("min").isNull());
        for (const char* number : { "min", "max" })
            QCOMPARE(
                one.value(number).toString().toDouble(), other.value(number).toString().toDouble());
        QVERIFY(qAbs(one.value("mean").toDouble() - other.value("mean").toDouble())
            <= 1e-9 * qAbs(other.value("mean").toDouble()));
        ++compared;
    }
    QVERIFY2(compared >= 20, qPrintable(QString::number(compared)));
}

void tst_CheckCommand::failingDisk_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("file");
    QTest::newRow("text") << QStringList { dictionary }
                          << QStringLiteral("../../examples/census.dat");
    QTest::newRow("SPSS") << QStringList() << QStringLiteral("../../examples/person.sav");
    QTest::newRow("Stata") << QStringList() << QStringLiteral("../../examples/person.dta");
}

void tst_CheckCommand::failingDisk()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, file);
    QProcessEnvironment environment = failingBehind(file);
    const Outcome outcome = runTessel(
        QStringList { "check" } + arguments + QStringList { file }, QByteArray(), environment);
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.output.isEmpty());
    QVERIFY2(outcome.errors.contains(file.toUtf8() + ": error: cannot be read"),
        outcome.errors.constData());
}

// A text file that ends early is told of, as its first part may look like a whole one.
void tst_CheckCommand::shrinkingFile()
{
    const QString file = QStringLiteral("../../examples/census.dat");
    QProcessEnvironment environment = failingBehind(file);
    environment.insert("FAILING_READ_ENDS", "1");
    const Outcome outcome = runTessel({ "check", dictionary, file }, QByteArray(), environment);
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.output.contains("Files that changed while they were read: 1"),
        outcome.output.constData());
}

// A file that grows with every read ends where it ended when it was opened.
void tst_CheckCommand::growingFile()
{
    const QString file =
        fileOf("grows.dat", readFile(QStringLiteral(TESSEL_EXAMPLES "/census.dat")));
    const Outcome outcome = runTessel({ "check", dictionary, file }, QByteArray(), [&] {
        QProcessEnvironment environment = failingBehind(file);
        environment.insert("FAILING_READ_GROWS", "1");
        return environment;
    }());
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.output.contains("Files that changed while they were read: 1"),
        outcome.output.constData());
    QVERIFY(outcome.output.contains("5871 records"));
}

void tst_CheckCommand::assumedEncodingIsTold()
{
    const QString small = fileOf("small.dcf", smallDictionary());
    const Outcome outcome = runTessel({ "check", small, fileOf("d.dat", "01 1 \xE9\n") });
    QVERIFY2(outcome.errors.contains("d.dat: note: ") && outcome.errors.contains("windows-1252"),
        outcome.errors.constData());
}

void tst_CheckCommand::dataEncoding()
{
    const QString small = fileOf("small.dcf", smallDictionary());
    const QString data = fileOf("d.dat", "01 1\xC3\xA9\n");
    const auto told = [&](const QString& encoding) {
        return runTessel({ "check", small, data, "--data-encoding", encoding });
    };
    QVERIFY(told("utf-8").output.contains("d.dat: 1 line, UTF-8, LF"));
    const Outcome windows = told("Windows-1252");
    QVERIFY(windows.output.contains("d.dat: 1 line, windows-1252, LF"));
    QVERIFY(!windows.errors.contains("note"));
    QCOMPARE(told("latin1").status, 2);
    QVERIFY(told("latin1").errors.contains("--data-encoding takes utf-8 or windows-1252"));
    const Outcome useless =
        runTessel({ "check", "../../examples/person.sav", "--data-encoding", "utf-8" });
    QVERIFY(useless.errors.contains("note: --data-encoding is for CSPro text data"));
    fileOf("d.dat",
        "\xEF\xBB\xBF"
        "01 1\xC3\xA9\n");
    QVERIFY(told("windows-1252").errors.contains("read as UTF-8, not as --data-encoding says"));
}

// Of a file whose lines end in carriage returns, but for the last.
void tst_CheckCommand::carriageReturnsAreTold()
{
    const QString small = fileOf("small.dcf", smallDictionary());
    const Outcome outcome =
        runTessel({ "check", small, fileOf("d.dat", "01 1\r02 2\r03 3\n04 1\n") });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("d.dat: note: has 1 line with carriage returns"),
        outcome.errors.constData());
}

void tst_CheckCommand::foreignFileIsTold()
{
    const QString small = fileOf("small.dcf", smallDictionary());
    const Outcome outcome =
        runTessel({ "check", small, fileOf("d.dat", QByteArray("\x1F\x8B\x08\0", 4)) });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("d.dat: error: is compressed with gzip; unpack it"),
        outcome.errors.constData());
}

void tst_CheckCommand::dictionaryProblemsAreTold()
{
    const QString odd = fileOf("odd.dcf", smallDictionary() + "Value=abc;no number\n");
    const Outcome outcome = runTessel({ "check", odd, fileOf("d.dat", "01 1\n") });
    QVERIFY2(outcome.errors.contains("odd.dcf:"), outcome.errors.constData());
    QVERIFY2(outcome.errors.contains(": warning: "), outcome.errors.constData());
    // The same of the dictionary that a CSPro DB holds, by its own lines.
    const QByteArray told = outcome.errors.mid(outcome.errors.indexOf("odd.dcf:") + 8);
    const Outcome ofDb = runTessel({ "check", databaseOf(readFile(odd)) });
    QVERIFY2(ofDb.errors.contains("cases.csdb:" + told), ofDb.errors.constData());
}

void tst_CheckCommand::dictionaryOptions_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("label"); // of CODE
    QTest::addColumn<QByteArray>("errors");
    QTest::newRow("none") << QStringList() << 0 << QStringLiteral("Åge") << QByteArray("warning: ");
    QTest::newRow("language") << QStringList { "--language", "fr" } << 0 << QStringLiteral("Être")
                              << QByteArray("warning: ");
    QTest::newRow("no such language")
        << QStringList { "--language", "DE" } << 1 << QString() << QByteArray("small.dcf: error: ");
    QTest::newRow("encoding") << QStringList { "--encoding", "ISO-8859-7" } << 0
                              << QStringLiteral("\u0395ge") << QByteArray();
    QTest::newRow("no such encoding") << QStringList { "--encoding", "none" } << 2 << QString()
                                      << QByteArray("unknown encoding 'none'");
}

void tst_CheckCommand::dictionaryOptions()
{
    QFETCH(QStringList, options);
    QFETCH(QByteArray, errors);
    QByteArray text = smallDictionary();
    text.replace("\n[Level]", "\n[Languages]\nEN=English\nFR=French\n\n[Level]");
    text.replace("[Item]\nName=CODE", "[Item]\nLabel=\xC5ge|\xCAtre\nName=CODE");
    const Outcome outcome = runTessel(
        QStringList { "check", "-f", "json", fileOf("small.dcf", text), fileOf("d.dat", "01 1\n") }
        + options);
    QTEST(outcome.status, "status");
    const QJsonArray variables = objectOf(outcome.output).value("variables").toArray();
    QTEST(variables.last().toObject().value("label").toString(), "label");
    QVERIFY2(errors.isEmpty() ? outcome.errors.isEmpty() : outcome.errors.contains(errors),
        outcome.errors.constData());
}

// They are told where they do nothing.
void tst_CheckCommand::uselessOptionsAreTold()
{
    for (const QString& file :
        { QStringLiteral("../../examples/person.sav"), databaseOf(smallDictionary()) }) {
        const Outcome outcome = runTessel({ "check", "--encoding", "windows-1252", file });
        QVERIFY2(outcome.errors.contains("note: --encoding "), outcome.errors.constData());
    }
    const Outcome outcome = runTessel({ "check", "--language", "FR", "../../examples/person.dta" });
    QVERIFY2(outcome.errors.contains("note: --language "), outcome.errors.constData());
}

void tst_CheckCommand::progressOnATerminal()
{
    if (QProcess::execute("script", { "-qec", "true", "/dev/null" }) != 0)
        QSKIP("no terminal can be had here");
    const QString small = fileOf("small.dcf", smallDictionary());
    constexpr int patience = 4000; // milliseconds, within which the bar has to appear
    QByteArray shown;
    QElapsedTimer time;
    int lines = 2'000'000;
    do {
        const QString data = fileOf("d.dat", QByteArray("0105\n").repeated(lines));
        QProcess process;
        time.start();
        process.start("script",
            { "-qec",
                QStringLiteral("'%1' check -o '%2' '%3' '%4'")
                    .arg(QStringLiteral(TESSEL_PROGRAM), path("out"), small, data),
                "/dev/null" });
        QVERIFY(process.waitForFinished(120'000));
        shown = process.readAll();
        lines *= 2;
    } while (!shown.contains("B/s") && time.elapsed() < patience);
    QVERIFY2(shown.contains("MB/s"), shown.constData());
    QVERIFY(shown.contains(" left"));
    QVERIFY(shown.contains("%"));
    QVERIFY(shown.endsWith(" \r"));
}

QTEST_GUILESS_MAIN(tst_CheckCommand)
#include "tst_CheckCommand.moc"
