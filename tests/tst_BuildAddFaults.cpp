// What goes wrong while a batch is added: the error is told, the former database stays, and nothing
// is left behind.
#include "AddedTargets.h"

#include <csignal>

class tst_BuildAddFaults : public QObject, private AddedBuilds {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void missingFolder();
    void killed();
    void locked();
    void waitsForOthers();
    void alreadyMade();
    void fullDisk_data();
    void fullDisk();
    void othersRead();
    void stopped();
    void serverOthersRead();
    void serverLocked();
    void serverRights();
    void serverDroppedColumn();
    void serverRefusesAtTheEnd_data();
    void serverRefusesAtTheEnd();
    void serverWaits_data();
    void serverWaits();

private:
    QString target() const
    {
        return path("t.sqlite");
    }
    // Whether another program keeps others from writing.
    bool isLocked() const
    {
        return Database(target()).isLocked();
    }
    QStringList leftBehind() const
    {
        return QDir(folder->path()).entryList({ "*t.sqlite*" }, QDir::Files | QDir::Hidden);
    }
    // Adds what comes through its standard input.
    void beginAddition(QProcess& process) const
    {
        process.start(
            QStringLiteral(TESSEL_PROGRAM), buildArguments({ "--add", path("d.dcf"), "-" }));
        QVERIFY(process.waitForStarted());
    }
    // A client of the server that keeps its transaction open.
    void beginClient(QProcess& process, const QByteArray& statements) const
    {
        process.start("psql", { "-qAtX", m_server.connection() });
        QVERIFY(process.waitForStarted());
        process.write("SET search_path = t; BEGIN; " + statements + "\n\\warn begun\n");
        process.setReadChannel(QProcess::StandardError);
        QTRY_VERIFY(process.peek(100).contains("begun"));
    }
    QByteArray ask(const QByteArray& statement) const
    {
        return m_server.ask(statement).output.trimmed();
    }
};

void tst_BuildAddFaults::initTestCase()
{
    startServer();
}

// On the server, or in a file.
void tst_BuildAddFaults::init()
{
    const QString missing = start(QByteArray(QTest::currentTestFunction()).startsWith("server"));
    if (!missing.isEmpty())
        QSKIP(qPrintable(missing));
}

void tst_BuildAddFaults::missingFolder()
{
    make("101011ann\n");
    const Outcome outcome = runTessel(
        { "build", "--add", path("d.dcf"), path("first.dat"), "--to", path("none/t.sqlite") });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("nor is its folder; correct the name, or make the folder"),
        outcome.errors.constData());
}

// A batch that is killed while it changes the database leaves the former state, and repeated the
// same as without.
void tst_BuildAddFaults::killed()
{
    make("10101 1ann\n20101 30\n");
    QByteArray lines = "101011bob\n";
    for (int i = 0; i < 8100; ++i) {
        const QByteArray id = QByteArray::number(1010 + i / 90 * 100 + i % 90);
        lines += '1' + id + "1abc\n";
        for (int person = 10; person < 14; ++person)
            lines += '2' + id + ' ' + QByteArray::number(person) + '\n';
    }
    writeFile(path("big.dat"), lines);
    const QStringList before = contents();
    QProcess process;
    process.start(QStringLiteral(TESSEL_PROGRAM),
        { "build", "--add", path("d.dcf"), path("big.dat"), "--to", target() });
    QVERIFY(process.waitForStarted());
    const QString journal = target() + "-journal";
    while (QFileInfo(journal).size() == 0 && process.state() == QProcess::Running)
        process.waitForFinished(1);
    process.kill();
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::CrashExit);
    QCOMPARE(leftBehind(), (QStringList { "t.sqlite", "t.sqlite-journal" }));
    for (const char* name : { "copy.sqlite", "other.sqlite" }) {
        QFile::copy(target(), path(name));
        QFile::copy(journal, path(name + QString("-journal")));
    }
    QCOMPARE(contents("PLACE, NUMBER", "copy"), before);
    const Outcome replaced = runTessel(
        { "build", path("d.dcf"), path("first.dat"), "--overwrite", "--to", path("other.sqlite") });
    QVERIFY2(replaced.status == 0, replaced.errors.constData());
    QCOMPARE(contents("PLACE, NUMBER", "other"), before);
    const Outcome again = build({ "--add", path("d.dcf"), path("big.dat") });
    QVERIFY2(again.status == 0, again.errors.constData());
    QCOMPARE(leftBehind(), QStringList("t.sqlite"));
    const QStringList added = contents();
    QCOMPARE(build({ path("d.dcf"), path("big.dat"), "--overwrite" }).status, 0);
    QCOMPARE(added, contents());
}

void tst_BuildAddFaults::locked()
{
    make("101011ann\n");
    Database other(target());
    other.run("BEGIN IMMEDIATE");
    const Outcome outcome = add("101021bob\n");
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("is in use by another program"), outcome.errors.constData());
    other.run("ROLLBACK");
    QCOMPARE(add("101021bob\n").status, 0);
}

// When they need a moment only.
void tst_BuildAddFaults::waitsForOthers()
{
    constexpr int moment = 500; // milliseconds
    make("101011ann\n");
    Database other(target());
    other.run("BEGIN IMMEDIATE");
    writeFile(path("d.dat"), "101021bob\n");
    QProcess process;
    process.start(
        QStringLiteral(TESSEL_PROGRAM), buildArguments({ "--add", path("d.dcf"), path("d.dat") }));
    QVERIFY(!process.waitForFinished(moment));
    other.run("ROLLBACK");
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(rows("SELECT count(*) FROM cases"), QStringList("2"));
}

// Another build that is about to take its place has the right of way; a dead one has not.
void tst_BuildAddFaults::alreadyMade()
{
    make("101011ann\n");
    QProcess process;
    process.start(QStringLiteral(TESSEL_PROGRAM),
        { "build", "--overwrite", path("d.dcf"), "-", "--to", target() });
    QVERIFY(process.waitForStarted());
    process.write(manyLines());
    QTRY_VERIFY(process.bytesToWrite() == 0); // the data are read
    const Outcome outcome = add("101021bob\n");
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("is being made by another build"), outcome.errors.constData());
    process.kill();
    QVERIFY(process.waitForFinished());
    QCOMPARE(leftBehind(), (QStringList { ".t.sqlite.tessel-build", "t.sqlite" }));
    QCOMPARE(add("101021bob\n").status, 0);
    QCOMPARE(leftBehind(), QStringList("t.sqlite"));
}

void tst_BuildAddFaults::fullDisk_data()
{
    QTest::addColumn<int>("before"); // cases of the first build
    QTest::addColumn<int>("added");
    QTest::newRow("while it is read") << 1000 << 100'000;
    QTest::newRow("while it is merged") << 20'000 << 20'000;
}

// The limit of the size of files stands for the end of the disk.
void tst_BuildAddFaults::fullDisk()
{
    QFETCH(int, before);
    QFETCH(int, added);
    const auto lines = [](int from, int count) {
        QByteArray text;
        for (int i = from; i < from + count; ++i)
            text += "1" + QByteArray::number(100'000'000 + i).mid(1) + "1abcdefghij\n";
        return text;
    };
    QByteArray dictionary = survey(item("ROOF", 10, 1) + item("NAME", 11, 10, "Alpha"));
    dictionary.replace("Start=4\nLen=2", "Start=4\nLen=6");
    make(lines(0, before), dictionary);
    const qint64 size = QFileInfo(target()).size();
    const QStringList formerly = contents();
    writeFile(path("d.dat"), lines(before, added));
    const qint64 limit = (before > added / 2 ? size + size / 4 : 3'000'000) / 1024;
    const Outcome outcome = runProgram("bash",
        { "-c", "ulimit -f " + QString::number(limit) + "; exec \"$@\"", "bash",
            QStringLiteral(TESSEL_PROGRAM), "build", "--add", path("d.dcf"), path("d.dat"), "--to",
            target() });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("cannot be written"), outcome.errors.constData());
    QCOMPARE(contents(), formerly);
    QCOMPARE(leftBehind(), QStringList("t.sqlite"));
    QCOMPARE(build({ "--add", path("d.dcf"), path("d.dat") }).status, 0);
    QCOMPARE(rows("SELECT count(*) FROM cases"), QStringList(QString::number(before + added)));
}

// They see the former state until the batch is whole.
void tst_BuildAddFaults::othersRead()
{
    make("101011ann\n");
    QProcess process;
    beginAddition(process);
    QTRY_VERIFY(isLocked());
    process.write("101021bob\n");
    QCOMPARE(rows("SELECT count(*) FROM cases"), QStringList("1"));
    const Outcome second = add("101031cat\n");
    QCOMPARE(second.status, 1);
    QVERIFY2(second.errors.contains("is in use by another program"), second.errors.constData());
    const Outcome replacing = build({ path("d.dcf"), path("d.dat"), "--overwrite" });
    QCOMPARE(replacing.status, 1);
    QVERIFY2(replacing.errors.contains("is open in another program"), replacing.errors.constData());
    process.closeWriteChannel();
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(rows("SELECT count(*) FROM cases"), QStringList("2"));
    QCOMPARE(leftBehind(), QStringList("t.sqlite"));
}

void tst_BuildAddFaults::stopped()
{
    make("101011ann\n");
    const QStringList before = state();
    QProcess process;
    beginAddition(process);
    process.write(manyLines());
    QTRY_VERIFY(process.bytesToWrite() == 0);
    QTRY_VERIFY(isLocked());
    ::kill(pid_t(process.processId()), SIGINT);
    process.write(manyLines());
    process.closeWriteChannel();
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 1);
    QVERIFY(process.readAllStandardError().contains("is as it was: the build was stopped"));
    QCOMPARE(state(), before);
    QCOMPARE(leftBehind(), QStringList("t.sqlite"));
}

// They see the former state until the batch is whole, and no other addition begins.
void tst_BuildAddFaults::serverOthersRead()
{
    make("101011ann\n");
    QProcess process;
    beginAddition(process);
    process.write(manyLines());
    QTRY_VERIFY(process.bytesToWrite() == 0); // the data are read
    QCOMPARE(rows("SELECT count(*) FROM cases"), QStringList("1"));
    for (const char* option : { "--add", "--overwrite" }) {
        const Outcome second = build({ option, path("d.dcf"), path("first.dat") });
        QCOMPARE(second.status, 1);
        QVERIFY2(second.errors.contains("another build into schema \"t\" is at work"),
            second.errors.constData());
    }
    process.closeWriteChannel();
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(rows("SELECT count(*) FROM cases WHERE NUMBER = 2"), QStringList("1"));
}

void tst_BuildAddFaults::serverLocked()
{
    make("101011ann\n");
    QProcess other;
    beginClient(other, "UPDATE cases SET line = line;");
    const QStringList before = state();
    const Outcome outcome = add("101021bob\n");
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("another program writes to the tables"),
        outcome.errors.constData());
    QCOMPARE(state(), before);
    other.closeWriteChannel();
    QVERIFY(other.waitForFinished());
    QCOMPARE(add("101021bob\n").status, 0);
}

// Who may change the rows may add; definitions are changed by the owner of the tables.
void tst_BuildAddFaults::serverRights()
{
    make("101011ann\n");
    ask("CREATE ROLE other LOGIN;");
    const auto addAsOther = [this](const QByteArray& lines) {
        writeFile(path("d.dat"), lines);
        return runTessel({ "build", "--add", path("d.dcf"), path("d.dat"), "--schema", "t", "--to",
            m_server.connection("postgres", "other") });
    };
    QCOMPARE(addAsOther("101021bob\n").status, 1);
    QVERIFY(changes(addAsOther("101021bob\n")).contains("permission denied for schema \"t\""));
    ask("GRANT USAGE ON SCHEMA t TO other;");
    QVERIFY(changes(addAsOther("101021bob\n")).contains("permission denied for table"));
    ask("GRANT SELECT, INSERT, UPDATE, DELETE ON ALL TABLES IN SCHEMA t TO other;");
    QCOMPARE(changes(addAsOther("101021bob\n")),
        QByteArray("1 new, 0 changed, 0 deleted (0 as they were)"));
    writeFile(path("d.dcf"), plainSurvey().replace("Tiles", "Tile"));
    const QStringList before = state();
    const QByteArray owned = changes(addAsOther("101021bob\n"));
    QVERIFY2(owned.contains("must be owner of"), owned.constData());
    QCOMPARE(state(), before);
}

// What an administrator added and dropped leaves a trace in the catalog.
void tst_BuildAddFaults::serverDroppedColumn()
{
    make("101011ann\n");
    targets->run("t", "ALTER TABLE house ADD mine TEXT; ALTER TABLE house DROP mine");
    QCOMPARE(
        changes(add("101021bob\n")), QByteArray("1 new, 0 changed, 0 deleted (0 as they were)"));
    QCOMPARE(rows("SELECT NUMBER, NAME FROM HOUSE ORDER BY 1"), (QStringList { "1|ann", "2|bob" }));
}

void tst_BuildAddFaults::serverRefusesAtTheEnd_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<QByteArray>("told");
    QTest::newRow("refused") << QStringLiteral("RAISE 'no more cases'")
                             << QByteArray("cannot be written: no more cases");
    QTest::newRow("lost") << QStringLiteral("PERFORM pg_terminate_backend(pg_backend_pid())")
                          << QByteArray("look in its table tessel_builds whether this build is "
                                        "there");
}

// When all is written and is to be committed, as by a constraint of the administrator.
void tst_BuildAddFaults::serverRefusesAtTheEnd()
{
    QFETCH(QString, action);
    QFETCH(QByteArray, told);
    make("101011ann\n");
    targets->run("t",
        "CREATE FUNCTION t.ends() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN " + action
            + "; RETURN NULL; END $$; CREATE CONSTRAINT TRIGGER ends AFTER INSERT ON cases "
              "DEFERRABLE "
              "INITIALLY DEFERRED FOR EACH ROW EXECUTE FUNCTION t.ends()");
    const QStringList before = contents();
    const Outcome outcome = add("101021bob\n");
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains(told), outcome.errors.constData());
    QVERIFY2(!outcome.output.contains("1 new"), outcome.output.constData());
    QCOMPARE(contents(), before);
}

void tst_BuildAddFaults::serverWaits_data()
{
    QTest::addColumn<QString>("end");
    QTest::addColumn<QByteArray>("told");
    QTest::newRow("backend killed")
        << "backend" << QByteArray("the connection to the server was lost");
    QTest::newRow("stopped") << "SIGINT" << QByteArray("is as it was: the build was stopped");
    QTest::newRow("killed") << "SIGKILL" << QByteArray();
}

// In the middle of the changes: new columns wait until others have read.
void tst_BuildAddFaults::serverWaits()
{
    QFETCH(QString, end);
    QFETCH(QByteArray, told);
    make("101011ann\n");
    const QStringList before = contents();
    QProcess reader;
    beginClient(reader, "SELECT * FROM house;");
    writeFile(path("d.dcf"),
        survey(item("ROOF", 6, 1) + roofs + item("NAME", 7, 5, "Alpha") + item("LATER", 12, 2)));
    writeFile(path("d.dat"), "101012ann   7\n101021bob   8\n");
    QProcess process;
    process.start(
        QStringLiteral(TESSEL_PROGRAM), buildArguments({ "--add", path("d.dcf"), path("d.dat") }));
    QVERIFY(process.waitForStarted());
    const QByteArray waiting = "application_name = 'tessel' AND wait_event_type = 'Lock'";
    QTRY_COMPARE(
        ask("SELECT count(*) FROM pg_stat_activity WHERE " + waiting + ";"), QByteArray("1"));
    if (end == "backend")
        ask("SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE " + waiting + ";");
    else
        ::kill(pid_t(process.processId()), end == "SIGINT" ? SIGINT : SIGKILL);
    QVERIFY(process.waitForFinished());
    const QByteArray errors = process.readAllStandardError();
    QVERIFY2(errors.contains(told), errors.constData());
    QVERIFY(process.exitStatus() == QProcess::CrashExit || process.exitCode() == 1);
    reader.closeWriteChannel();
    QVERIFY(reader.waitForFinished());
    QTRY_COMPARE(ask("SELECT count(*) FROM pg_stat_activity WHERE application_name = 'tessel';"),
        QByteArray("0"));
    QCOMPARE(contents(), before);
    QCOMPARE(changes(build({ "--add", path("d.dcf"), path("d.dat") })),
        QByteArray("1 new, 1 changed, 0 deleted (0 as they were)"));
    QCOMPARE(rows("SELECT NUMBER, ROOF, LATER FROM HOUSE_labels ORDER BY 1"),
        (QStringList { "1|Straw|7", "2|Tiles|8" }));
}

QTEST_GUILESS_MAIN(tst_BuildAddFaults)
#include "tst_BuildAddFaults.moc"
