// What goes wrong while a database is made: the error is told, the former database stays, and
// nothing is left behind.
#include "RunTessel.h"
#include "SqliteRows.h"

#include <QStandardPaths>
#include <QtTest>

#include <unistd.h>

namespace {

const QByteArray dictionary =
    "[Dictionary]\nVersion=CSPro 7.7\nLabel=D\nName=D\nRecordTypeStart=1\nRecordTypeLen=1\n"
    "Positions=Relative\nZeroFill=No\nDecimalChar=No\n\n[Level]\nLabel=Q\nName=Q\n\n[IdItems]\n\n"
    "[Item]\nLabel=Place\nName=PLACE\nStart=2\nLen=2\nDataType=Numeric\n\n[Record]\nLabel=A\n"
    "Name=A\nRecordTypeValue='1'\nRecordLen=900\n\n[Item]\nLabel=N\nName=N\nStart=4\nLen=2\n"
    "DataType=Numeric\n\n[ValueSet]\nLabel=N\nName=N_VS1\nValue=1;One\n\n[ValueSet]\nLabel=Other\n"
    "Name=N_VS2\nValue=2;Two\n\n[Item]\nLabel=T\nName=T\nStart=6\nLen=800\nDataType=Alpha\n";

} // namespace

class tst_BuildFaults : public QObject {
    Q_OBJECT

private slots:
    void init();
    void readOnlyFolder();
    void lockedTarget_data();
    void lockedTarget();
    void lockedSource();
    void sourceThatFails_data();
    void sourceThatFails();
    void wholeTexts();
    void endlessLine();

private:
    QString path(const QString& name) const
    {
        return m_folder->filePath(name);
    }
    QStringList files() const
    {
        return QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden);
    }
    Outcome build(const QStringList& more = {}, const QString& program = {}) const
    {
        const QStringList arguments =
            QStringList { "build", path("d.dcf"), path("d.dat"), "--to", path("t.sqlite") } + more;
        return program.isEmpty() ? runTessel(arguments)
                                 : runProgram(program,
                                     QStringList { "--reuid=65534", "--regid=65534",
                                         "--clear-groups", QStringLiteral(TESSEL_PROGRAM) }
                                         + arguments);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_BuildFaults::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    writeFile(path("d.dcf"), dictionary);
    writeFile(path("d.dat"), "101 1a\n102 2b\n");
}

// The superuser may write everywhere, and becomes nobody for this.
void tst_BuildFaults::readOnlyFolder()
{
    const bool isRoot = ::geteuid() == 0;
    const QString setpriv = isRoot ? QStandardPaths::findExecutable("setpriv") : QString();
    if (isRoot && setpriv.isEmpty())
        QSKIP("without setpriv the superuser cannot be refused a folder");
    QCOMPARE(build().status, 0);
    const QByteArray before = readFile(path("t.sqlite"));
    QFile folder(m_folder->path());
    const auto all = QFile::ReadOwner | QFile::ExeOwner | QFile::ReadOther | QFile::ExeOther;
    QVERIFY(folder.setPermissions(all));
    if (isRoot
        && runProgram(setpriv,
               { "--reuid=65534", "--regid=65534", "--clear-groups", QStringLiteral(TESSEL_PROGRAM),
                   "fields", path("d.dcf") })
                .status
            != 0)
        QSKIP("nobody may not run the program from its folder");
    const Outcome outcome = build({ "--overwrite" }, setpriv);
    folder.setPermissions(all | QFile::WriteOwner);
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("t.sqlite: error: cannot be written: Permission denied"),
        outcome.errors.constData());
    QCOMPARE(readFile(path("t.sqlite")), before);
    QCOMPARE(files(), (QStringList { "d.dat", "d.dcf", "t.sqlite" }));
}

void tst_BuildFaults::lockedTarget_data()
{
    QTest::addColumn<QByteArray>("sql");
    QTest::newRow("read") << QByteArray("BEGIN; SELECT * FROM A");
    QTest::newRow("written") << QByteArray("BEGIN IMMEDIATE");
    QTest::newRow("log beside it") << QByteArray("PRAGMA journal_mode = WAL; CREATE TABLE x (a)");
}

// A database that another program has open is not replaced under it.
void tst_BuildFaults::lockedTarget()
{
    QFETCH(QByteArray, sql);
    QCOMPARE(build().status, 0);
    const QByteArray before = readFile(path("t.sqlite")); // later it would end the lock
    sqlite3* database = nullptr;
    QCOMPARE(sqlite3_open(path("t.sqlite").toUtf8().constData(), &database), SQLITE_OK);
    QCOMPARE(sqlite3_exec(database, sql.constData(), nullptr, nullptr, nullptr), SQLITE_OK);
    const Outcome outcome = build({ "--overwrite" });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("is open in another program"), outcome.errors.constData());
    QVERIFY(!files().contains(".t.sqlite.tessel-build"));
    sqlite3_close(database);
    QVERIFY(before == readFile(path("t.sqlite")) || sql.contains("CREATE"));
    QCOMPARE(build({ "--overwrite" }).status, 0);
}

// A CSPro DB that another program is writing to is not read half.
void tst_BuildFaults::lockedSource()
{
    const QString source = path("d.csdb");
    sqlite3* database = nullptr;
    QCOMPARE(sqlite3_open(source.toUtf8().constData(), &database), SQLITE_OK);
    QCOMPARE(
        sqlite3_exec(database, "CREATE TABLE meta (a); BEGIN EXCLUSIVE", nullptr, nullptr, nullptr),
        SQLITE_OK);
    const Outcome outcome = runTessel({ "build", source, "--to", path("t.sqlite") });
    sqlite3_close(database);
    QCOMPARE(outcome.status, 1);
    QVERIFY2(
        outcome.errors.contains("is being changed by another program"), outcome.errors.constData());
    QCOMPARE(files(), (QStringList { "d.csdb", "d.dat", "d.dcf" }));
}

void tst_BuildFaults::sourceThatFails_data()
{
    QTest::addColumn<QString>("mode");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("fails") << QString() << QByteArray("cannot be read on: Input/output error");
    QTest::newRow("is cut") << "FAILING_READ_ENDS" << QByteArray("changed while it was read");
    QTest::newRow("grows") << "FAILING_READ_GROWS" << QByteArray("changed while it was read");
}

void tst_BuildFaults::sourceThatFails()
{
    QFETCH(QString, mode);
    QFETCH(QByteArray, text);
    QCOMPARE(build().status, 0);
    const QByteArray before = readFile(path("t.sqlite"));
    QByteArray lines;
    for (int i = 0; i < 100'000; ++i)
        lines += "101 1abcdefghijklmnopqrstuvwxyz\n";
    QVERIFY(writeFile(path("d.dat"), lines));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LD_PRELOAD", environment.value("LD_PRELOAD") + " " TESSEL_FAILING_READ);
    environment.insert("ASAN_OPTIONS", "verify_asan_link_order=0");
    environment.insert("FAILING_READ_FILE", QFileInfo(path("d.dat")).canonicalFilePath());
    environment.insert("FAILING_READ_BYTES", "100000");
    if (!mode.isEmpty())
        environment.insert(mode, "1");
    const Outcome outcome = runTessel(
        { "build", path("d.dcf"), path("d.dat"), "--to", path("t.sqlite"), "--overwrite" },
        QByteArray(), environment);
    QVERIFY2(outcome.status == 1, outcome.errors.constData());
    QVERIFY2(outcome.errors.contains("d.dat: ") && outcome.errors.contains(text),
        outcome.errors.constData());
    QCOMPARE(readFile(path("t.sqlite")), before);
    QCOMPARE(files(), (QStringList { "d.dat", "d.dcf", "t.sqlite" }));
}

// What the console cuts is whole in the database.
void tst_BuildFaults::wholeTexts()
{
    const QByteArray line = "9" + QByteArray("long ").repeated(300) + "end";
    QVERIFY(writeFile(path("d.dat"), "101xx\n" + line + "\n"));
    QCOMPARE(build().status, 0);
    const SqliteRows database(path("t.sqlite"));
    QCOMPARE(database.value("SELECT value FROM tessel_problems WHERE kind = 'unknown-record-type'"),
        QString::fromLatin1(line));
    QCOMPARE(database.rows("SELECT text, is_whole FROM tessel_rejects"),
        (QVector<QStringList> { { QString::fromLatin1(line), "1" } }));
    QCOMPARE(database.rows("SELECT value_set, value_table, code, label FROM tessel_values"),
        (QVector<QStringList> {
            { "N_VS1", "N_VS1", "1", "One" }, { "N_VS2", "N_VS2", "2", "Two" } }));
    const Outcome check = runTessel({ "check", path("d.dcf"), path("d.dat") });
    QVERIFY(!check.output.contains(line));
}

// Of a line without an end the first part is kept, and told to be that.
void tst_BuildFaults::endlessLine()
{
    QVERIFY(
        writeFile(path("d.dat"), "101 1\n" + QByteArray("1 end").repeated(600'000) + "\n102 1\n"));
    const Outcome outcome = build();
    QVERIFY2(
        outcome.output.contains("3 lines read = 2 rows + 1 reject"), outcome.output.constData());
    const SqliteRows database(path("t.sqlite"));
    QCOMPARE(database.rows("SELECT line, reason, is_whole, length(text) BETWEEN 30000 AND 1048576, "
                           "substr(text, 1, 10) FROM tessel_rejects"),
        (QVector<QStringList> { { "2", "too-long-line", "0", "1", "1 end1 end" } }));
}

QTEST_GUILESS_MAIN(tst_BuildFaults)
#include "tst_BuildFaults.moc"
