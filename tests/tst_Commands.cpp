// Runs the program as a user does and compares all that it says with golden files: a folder of
// tests/golden for each case, with the command, and what standard output, standard error and the
// exit status are to be. With TESSEL_REFRESH_GOLDEN set the golden files are written anew instead.
#include "RunTessel.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

class tst_Commands : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void golden_data();
    void golden();
    void tableFollowsColumns();
    void needsNoDisplay();
    void readsAnyLocale();
    void outputFileIsWholeOrAbsent();
    void outputNeverReplacesAnInput();
    void unreadableFile();
    void fieldsOfAllEncodingsAgree();
    void asksOnATerminal();
    void badEncodingIsWrongUsage();
    void diffTellsTroubleFromDifferences();
    void whoReadsNoFurtherHearsNothing();
    void likeProblemsAreCounted();
    void quotesAreCut();
    void readmeShowsRealOutput();
    void readmeShowsARealDatabase();
    void readmeShowsTheExamplePrograms();
};

void tst_Commands::initTestCase()
{
    qunsetenv("COLUMNS");
    qputenv("SOURCE_DATE_EPOCH", "1700000000"); // pages tell their date
}

void tst_Commands::golden_data()
{
    QTest::addColumn<QString>("folder");
    const QDir golden(QStringLiteral(TESSEL_GOLDEN));
    for (const QString& name : golden.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name))
        QTest::newRow(qPrintable(name)) << golden.filePath(name);
}

void tst_Commands::golden()
{
    QFETCH(QString, folder);
    const QString command = QString::fromUtf8(readFile(folder + "/command")).trimmed();
    QVERIFY2(!command.isEmpty(), "the case has no command");
    const Outcome outcome =
        runTessel(command.split(QLatin1Char(' '), Qt::SkipEmptyParts), readFile(folder + "/stdin"));
    const QByteArray status = QByteArray::number(outcome.status) + "\n";
    if (qEnvironmentVariableIsSet("TESSEL_REFRESH_GOLDEN")) {
        QVERIFY(writeFile(folder + "/stdout", outcome.output));
        QVERIFY(writeFile(folder + "/stderr", outcome.errors));
        QVERIFY(writeFile(folder + "/status", status));
        QSKIP("golden files written anew");
    }
    QCOMPARE(QString::fromUtf8(outcome.errors), QString::fromUtf8(readFile(folder + "/stderr")));
    QCOMPARE(QString::fromUtf8(outcome.output), QString::fromUtf8(readFile(folder + "/stdout")));
    QCOMPARE(status, readFile(folder + "/status"));
}

void tst_Commands::tableFollowsColumns()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QStringList arguments { "fields", "basic.dcf" };
    int previousLines = 0;
    for (const int width : { 200, 80 }) {
        environment.insert("COLUMNS", QString::number(width));
        const QString text = QString::fromUtf8(runTessel(arguments, {}, environment).output);
        QVERIFY(!text.isEmpty());
        const QStringList lines = text.split('\n');
        for (const QString& line : lines)
            QVERIFY2(line.size() <= width, qPrintable(line));
        QVERIFY(lines.size() >= previousLines);
        previousLines = lines.size();
    }
}

void tst_Commands::needsNoDisplay()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("QT_QPA_PLATFORM");
    environment.remove("DISPLAY");
    environment.remove("WAYLAND_DISPLAY");
    const Outcome outcome =
        runTessel({ "fields", "--rules", "established", "decimals.dcf", "--decimals", "ask" },
            "n\nn\n", environment);
    QCOMPARE(outcome.status, 0);
    QVERIFY(outcome.output.contains("HOURS"));
}

void tst_Commands::readsAnyLocale()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString& locale : { QStringLiteral("C"), QStringLiteral("C.UTF-8") }) {
        environment.insert("LC_ALL", locale);
        const Outcome outcome = runTessel({ "fields", "basic.dcf" }, {}, environment);
        QCOMPARE(outcome.status, 0);
        QVERIFY(QString::fromUtf8(outcome.output).contains(QString::fromUtf8("\u00c9t\u00e9")));
    }
}

void tst_Commands::outputFileIsWholeOrAbsent()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("fields.csv");
    const QStringList arguments { "fields", "--format", "csv", "basic.dcf" };
    const Outcome printed = runTessel(arguments);
    const Outcome written = runTessel(arguments + QStringList { "--output", path });
    QCOMPARE(written.status, 0);
    QVERIFY(written.output.isEmpty());
    QCOMPARE(readFile(path), printed.output);

    const QString nowhere = folder.filePath("missing/fields.csv");
    const Outcome failed = runTessel(arguments + QStringList { "--output", nowhere });
    QCOMPARE(failed.status, 1);
    QVERIFY(failed.errors.contains("cannot be written"));
    QVERIFY(!QFile::exists(nowhere));

    QVERIFY(writeFile(path, "earlier"));
    QCOMPARE(runTessel({ "fields", "empty.dcf", "--output", path }).status, 1);
    QCOMPARE(readFile(path), QByteArray("earlier"));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList("fields.csv"));
}

void tst_Commands::outputNeverReplacesAnInput()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("own.dcf");
    QVERIFY(QFile::copy(QStringLiteral(TESSEL_TEST_DATA "/basic.dcf"), path));
    const QByteArray before = readFile(path);
    QCOMPARE(runTessel({ "fields", path, "-o", path }).status, 2);
    QCOMPARE(readFile(path), before);
}

void tst_Commands::unreadableFile()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("secret.dcf");
    QVERIFY(QFile::copy(QStringLiteral(TESSEL_TEST_DATA "/basic.dcf"), path));
    QVERIFY(QFile::setPermissions(path, QFileDevice::Permissions()));
    if (QFile(path).open(QIODevice::ReadOnly))
        QSKIP("this user reads every file");
    const Outcome outcome = runTessel({ "fields", path });
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.errors.contains("cannot be read"));
}

void tst_Commands::fieldsOfAllEncodingsAgree()
{
    const QByteArray expected =
        runTessel({ "fields", "--values", "--format", "csv", "basic.dcf" }).output;
    QVERIFY(!expected.isEmpty());
    const QList<QStringList> others { { "basic_bom_crlf.dcf" }, { "basic_utf16.dcf" },
        { "no_final_newline.dcf" }, { "basic_windows1252.dcf", "--encoding", "windows-1252" } };
    for (const QStringList& other : others) {
        const Outcome outcome =
            runTessel(QStringList { "fields", "--values", "--format", "csv" } + other);
        QCOMPARE(outcome.status, 0);
        QCOMPARE(
            QByteArray(outcome.output).replace(other.constFirst().toUtf8(), "basic.dcf"), expected);
    }
}

void tst_Commands::asksOnATerminal()
{
    // "script" gives the program a terminal of its own.
    if (QProcess::execute("script", { "-qec", "true", "/dev/null" }) != 0)
        QSKIP("no terminal can be had here");
    QProcess process;
    process.setWorkingDirectory(dataFolder());
    process.start("script",
        { "-qec",
            QStringLiteral("'%1' fields --rules established --values decimals.dcf")
                .arg(TESSEL_PROGRAM),
            "/dev/null" });
    QVERIFY(process.waitForStarted());
    QByteArray shown;
    const auto waitFor = [&](const QByteArray& text, int count) {
        return QTest::qWaitFor(
            [&] {
                process.waitForReadyRead(50);
                shown += process.readAll();
                return shown.count(text) >= count;
            },
            20000);
    };
    const QByteArray prompt("al[l] (no): ");
    QVERIFY2(waitFor(prompt, 1), shown.constData());
    process.write("maybe\n");
    QVERIFY2(waitFor(prompt, 2), shown.constData());
    process.write("y\n");
    QVERIFY2(waitFor(prompt, 3), shown.constData());
    process.write("n\n");
    QVERIFY(process.waitForFinished());
    shown += process.readAll();
    QCOMPARE(process.exitCode(), 0);
    QVERIFY(shown.contains("value set HOURS_VS1 of item HOURS was converted"));
    QVERIFY(shown.contains("value set SHARE_VS1 of item SHARE was dropped"));
    QVERIFY(shown.contains("Half an hour"));
    QVERIFY(!shown.contains("A quarter"));
}

void tst_Commands::badEncodingIsWrongUsage()
{
    const Outcome outcome = runTessel({ "fields", "--encoding", "klingon", "basic.dcf" });
    QCOMPARE(outcome.status, 2);
    QVERIFY(outcome.errors.contains("unknown encoding 'klingon'"));
}

void tst_Commands::diffTellsTroubleFromDifferences()
{
    QTemporaryDir folder;
    const QStringList arguments { "diff", "diff_before.dcf", "diff_after.dcf" };
    const QString path = folder.filePath("differences.txt");
    const Outcome printed = runTessel(arguments);
    QCOMPARE(printed.status, 1);
    QCOMPARE(runTessel(arguments + QStringList { "-o", path }).status, 1);
    QCOMPARE(readFile(path), printed.output);
    const QString nowhere = folder.filePath("missing/differences.txt");
    QCOMPARE(runTessel(arguments + QStringList { "-o", nowhere }).status, 2);
    QCOMPARE(runTessel(arguments + QStringList { "-o", "diff_after.dcf" }).status, 2);

    // An SPSS file that is cut short.
    const QString damaged = folder.filePath("damaged.sav");
    QVERIFY(
        writeFile(damaged, readFile(QStringLiteral(TESSEL_EXAMPLES "/household.sav")).left(900)));
    QCOMPARE(runTessel({ "diff", "diff_before.dcf", damaged }).status, 2);
}

// More is written than a pipe holds, to a reader that ends without reading.
void tst_Commands::whoReadsNoFurtherHearsNothing()
{
    QProcess process;
    process.setWorkingDirectory(QStringLiteral(TESSEL_EXAMPLES));
    process.start(QStringLiteral("sh"),
        { "-c",
            "{ \"$0\" fields --values -f json census.dcf census.dcf census.dcf; echo $? >&2; } | "
            "true",
            QStringLiteral(TESSEL_PROGRAM) });
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.readAllStandardError(), QByteArray("141\n")); // 128 and SIGPIPE
}

void tst_Commands::likeProblemsAreCounted()
{
    QByteArray dictionary(
        "[Dictionary]\nName=D\n[Level]\nName=L\n[IdItems]\n[Item]\nName=I\nStart=1\n"
        "Len=1\n[Record]\nName=R\n");
    for (int i = 0; i < 3001; ++i)
        dictionary += "[Item]\nName=TWICE\nStart=2\nLen=1\nOdd=1\n";
    QTemporaryDir folder;
    const QString path = folder.filePath("many.dcf");
    QVERIFY(writeFile(path, dictionary));
    const QByteArray repeated = "item TWICE has the name of an earlier item\n";
    const QByteArray unknown = "the key 'Odd' is unknown and was passed over\n";
    const QByteArray file = path.toUtf8();
    const QList<QStringList> commands { { "fields", path }, { "tree", path },
        { "export", "--to", "sql", path }, { "diff", "basic.dcf", path } };
    for (const QStringList& command : commands) {
        const QByteArray errors = runTessel(command).errors;
        QCOMPARE(errors.count(repeated), 3);
        QCOMPARE(errors.count(unknown), 3);
        // At the line of the last one told, so that it is plain what is counted.
        QVERIFY2(errors.contains(
                     file + ":27: warning: 2,997 more like this; --all-warnings shows them\n"),
            errors.constData());
        QVERIFY(errors.contains(
            file + ":26: warning: 2,998 more like this; --all-warnings shows them\n"));
        const QByteArray all = runTessel(command + QStringList { "--all-warnings" }).errors;
        QCOMPARE(all.count(repeated), 3000);
        QCOMPARE(all.count(unknown), 3001);
        QVERIFY(!all.contains("more like this"));
    }
    QCOMPARE(
        runTessel({ "lookup", "lookup_comma.txt", "-s", "comma", "--all-warnings" }).status, 0);
}

void tst_Commands::quotesAreCut()
{
    const QByteArray longText(100'000, 'x');
    QTemporaryDir folder;
    const QString path = folder.filePath("long.dcf");
    QVERIFY(writeFile(path,
        readFile(QStringLiteral(TESSEL_TEST_DATA "/basic.dcf")) + "[" + longText + "]\n" + longText
            + "=1\n[Item]\nName=" + longText + "\nStart=0\nLen=1\nDecimal=2\n"));
    const Outcome outcome = runTessel({ "fields", "-f", "csv", path });
    QVERIFY(outcome.errors.contains("the section [" + longText.left(79) + "... is unknown"));
    for (const QByteArray& line : outcome.errors.split('\n'))
        QVERIFY2(line.size() < 300, line.constData());
    QVERIFY(outcome.output.contains(longText)); // the listing has it whole
}

void tst_Commands::readmeShowsRealOutput()
{
    const QString readme = QString::fromUtf8(readFile(QStringLiteral(TESSEL_SOURCE "/README.md")));
    const int start = readme.indexOf("examples/census.dcf:");
    const int end = readme.indexOf("\n...\n```", start);
    QVERIFY(start > 0 && end > start);
    QProcess process;
    process.setWorkingDirectory(QStringLiteral(TESSEL_SOURCE));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("COLUMNS", "100");
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(TESSEL_PROGRAM), { "fields", "examples/census.dcf" });
    QVERIFY(process.waitForFinished());
    const QString output = QString::fromUtf8(process.readAllStandardOutput());
    QCOMPARE(output.left(end - start), readme.mid(start, end - start));
}

void tst_Commands::readmeShowsARealDatabase()
{
    if (QStandardPaths::findExecutable("sqlite3").isEmpty())
        QSKIP("sqlite3 is not installed");
    const QString readme = QString::fromUtf8(readFile(QStringLiteral(TESSEL_SOURCE "/README.md")));
    const int start = readme.indexOf("$ ./run build ");
    const QStringList lines = readme.mid(start, readme.indexOf("\n```", start) - start).split('\n');
    QTemporaryDir folder;
    QVERIFY(QFile::link(QStringLiteral(TESSEL_SOURCE "/examples"), folder.filePath("examples")));
    QStringList shown;
    for (const QString& line : lines) {
        if (!line.startsWith("$ "))
            continue;
        QString command = line.mid(2);
        QProcess process;
        process.setWorkingDirectory(folder.path());
        process.start(
            "sh", { "-c", command.replace("./run", QStringLiteral("'" TESSEL_PROGRAM "'")) });
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.readAllStandardError(), QByteArray());
        shown += line;
        shown += QString::fromUtf8(process.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
    }
    QCOMPARE(shown, lines);
}

// The test of the package builds and runs them.
void tst_Commands::readmeShowsTheExamplePrograms()
{
    const QByteArray readme = readFile(QStringLiteral(TESSEL_SOURCE "/README.md"));
    for (const char* name : { "list_fields", "open_file" }) {
        const QByteArray program = readFile(
            QStringLiteral(TESSEL_SOURCE "/examples/%1/main.cpp").arg(QLatin1String(name)));
        QVERIFY(!program.isEmpty());
        QVERIFY2(readme.contains("```cpp\n" + program + "```"), name);
    }
}

QTEST_GUILESS_MAIN(tst_Commands)
#include "tst_Commands.moc"
