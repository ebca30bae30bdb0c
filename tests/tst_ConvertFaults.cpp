// What goes wrong while files are made: the error is told, former files stay, and nothing is left
// behind.
#include "RunTessel.h"
#include "StatContents.h"

#include <QStandardPaths>
#include <QtTest>

#include <csignal>
#include <unistd.h>

namespace {

const QByteArray dictionary =
    "[Dictionary]\nVersion=CSPro 7.7\nLabel=D\nName=D\nRecordTypeStart=1\nRecordTypeLen=1\n"
    "Positions=Relative\nZeroFill=No\nDecimalChar=No\n\n[Level]\nLabel=Q\nName=Q\n\n[IdItems]\n\n"
    "[Item]\nLabel=Place\nName=PLACE\nStart=2\nLen=2\nDataType=Numeric\n\n[Record]\nLabel=A\n"
    "Name=A\nRecordTypeValue='1'\nRecordLen=900\n\n[Item]\nLabel=N\nName=N\nStart=4\nLen=2\n"
    "DataType=Numeric\n\n[Item]\nLabel=T\nName=T\nStart=6\nLen=80\nDataType=Alpha\n\n[Record]\n"
    "Label=B\nName=B\nRecordTypeValue='2'\nRecordLen=9\n\n[Item]\nLabel=M\nName=M\nStart=4\nLen=2\n"
    "DataType=Numeric\n";

QByteArray manyLines()
{
    QByteArray lines;
    for (int i = 0; i < 100'000; ++i)
        lines += "101 1abcdefghijklmnopqrstuvwxyz\n";
    return lines;
}

} // namespace

class tst_ConvertFaults : public QObject {
    Q_OBJECT

private slots:
    void init();
    void fullDisk_data();
    void fullDisk();
    void readOnlyFolder();
    void folderIsAFile();
    void cancelled();
    void killed_data();
    void killed();
    void killedInNewFolder();
    void lastNameFails_data();
    void lastNameFails();
    void damagedSource();
    void strictData();
    void problems();

private:
    QString path(const QString& name) const
    {
        return m_folder->filePath(name);
    }
    QStringList made() const
    {
        return QDir(path("out")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    QStringList arguments(const QStringList& more = {}) const
    {
        return QStringList { "convert", path("d.dcf"), path("d.dat"), "--to", "stata", "-o",
            path("out") }
        + more;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_ConvertFaults::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    writeFile(path("d.dcf"), dictionary);
    writeFile(path("d.dat"), "101 1a\n201 2\n");
}

void tst_ConvertFaults::fullDisk_data()
{
    QTest::addColumn<QString>("blocks");
    QTest::addColumn<QString>("format");
    QTest::newRow("while rows are kept") << "500"
                                         << "stata";
    QTest::newRow("while files are written") << "6000"
                                             << "spss";
    QTest::newRow("while rows are written") << "2000"
                                            << "csv";
    QTest::newRow("at the end of the rows") << "6100"
                                            << "csv";
    QTest::newRow("while they are described") << "1"
                                              << "csv";
}

// Rows of 33 bytes are kept in 30 and written in 29.
void tst_ConvertFaults::fullDisk()
{
    QFETCH(QString, blocks);
    QFETCH(QString, format);
    if (blocks != "1")
        QVERIFY(writeFile(path("d.dat"), manyLines() + manyLines()));
    QStringList command = arguments();
    command[4] = format;
    if (format == "spss")
        command.append("--merge");
    const Outcome outcome = runProgram("bash",
        QStringList {
            "-c", "ulimit -f " + blocks + "; exec \"$@\"", "bash", QStringLiteral(TESSEL_PROGRAM) }
            + command);
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("File too large"), outcome.errors.constData());
    QVERIFY(!QFileInfo::exists(path("out")));
}

// The superuser may write everywhere, and becomes nobody for this.
void tst_ConvertFaults::readOnlyFolder()
{
    const bool isRoot = ::geteuid() == 0;
    const QString setpriv = isRoot ? QStandardPaths::findExecutable("setpriv") : QString();
    if (isRoot && setpriv.isEmpty())
        QSKIP("without setpriv the superuser cannot be refused a folder");
    QVERIFY(QDir().mkpath(path("out")));
    const auto all = QFile::ReadOwner | QFile::ExeOwner | QFile::ReadOther | QFile::ExeOther;
    QVERIFY(QFile::setPermissions(m_folder->path(), all));
    QVERIFY(QFile::setPermissions(path("out"), all));
    const QStringList nobody { "--reuid=65534", "--regid=65534", "--clear-groups",
        QStringLiteral(TESSEL_PROGRAM) };
    const Outcome outcome =
        isRoot ? runProgram(setpriv, nobody + arguments()) : runTessel(arguments());
    QFile::setPermissions(m_folder->path(), all | QFile::WriteOwner);
    QFile::setPermissions(path("out"), all | QFile::WriteOwner);
    if (isRoot && outcome.status != 1)
        QSKIP("nobody may not run the program from its folder");
    QVERIFY2(outcome.errors.contains("Permission denied"), outcome.errors.constData());
    QCOMPARE(made(), QStringList());
}

void tst_ConvertFaults::folderIsAFile()
{
    QVERIFY(writeFile(path("out"), "mine"));
    const Outcome outcome = runTessel(arguments({ "--overwrite" }));
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("out: error: is no folder"), outcome.errors.constData());
    QCOMPARE(readFile(path("out")), QByteArray("mine"));
}

void tst_ConvertFaults::cancelled()
{
    QProcess process;
    QStringList command = arguments();
    command[2] = "-";
    process.start(QStringLiteral(TESSEL_PROGRAM), command);
    QVERIFY(process.waitForStarted());
    process.write(manyLines());
    QTRY_VERIFY(process.bytesToWrite() == 0);
    QTRY_COMPARE(made(), (QStringList { ".A.dta.tessel-build", ".B.dta.tessel-build" }));
    ::kill(pid_t(process.processId()), SIGINT); // nothing more comes
    QVERIFY(process.waitForFinished(60'000));
    QCOMPARE(process.exitCode(), 1);
    QVERIFY(process.readAllStandardError().contains("the conversion was stopped"));
    QVERIFY(!QFileInfo::exists(path("out")));
}

void tst_ConvertFaults::killed_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QStringList>("files");
    QTest::newRow("stata") << "stata" << QStringList { "A.dta", "B.dta" };
    QTest::newRow("csv") << "csv" << QStringList { "A.csv", "B.csv", "datapackage.json" };
}

// What a dead one leaves is taken over by the next.
void tst_ConvertFaults::killed()
{
    QFETCH(QString, format);
    QFETCH(QStringList, files);
    QVERIFY(QDir().mkpath(path("out")));
    QVERIFY(writeFile(path("out/" + files.first()), "former"));
    QProcess process;
    QStringList command = arguments({ "--overwrite" });
    command[4] = format;
    const QStringList whole = command;
    command[2] = "-";
    process.start(QStringLiteral(TESSEL_PROGRAM), command);
    QVERIFY(process.waitForStarted());
    process.write(manyLines());
    QTRY_VERIFY(process.bytesToWrite() == 0);
    QTRY_VERIFY(made().contains("." + files.last() + ".tessel-build"));
    ::kill(pid_t(process.processId()), SIGKILL);
    QVERIFY(process.waitForFinished(60'000));
    QCOMPARE(readFile(path("out/" + files.first())), QByteArray("former"));
    QTest::qWait(300); // until the child that worked has ended, too
    const Outcome outcome = runTessel(whole);
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    QCOMPARE(made(), files);
    if (format == "stata")
        QCOMPARE(StatContents::read(path("out/A.dta")).rows.size(), 1);
    else
        QCOMPARE(readFile(path("out/A.csv")), QByteArray("PLACE,N,T\r\n1,1,a\r\n"));
}

// The folder that it made, too; another run may go on only when the dead one has really ended.
void tst_ConvertFaults::killedInNewFolder()
{
    QProcess process;
    QStringList command = arguments();
    command[2] = "-";
    process.start(QStringLiteral(TESSEL_PROGRAM), command);
    QVERIFY(process.waitForStarted());
    QTRY_VERIFY(made().contains(".B.dta.tessel-build"));
    const Outcome refused = runTessel(arguments());
    QCOMPARE(refused.status, 1);
    QVERIFY2(refused.errors.contains("is being made by another build"), refused.errors.constData());
    ::kill(pid_t(process.processId()), SIGKILL);
    QVERIFY(process.waitForFinished(60'000));
    QVERIFY(made().contains(".A.dta.tessel-build"));
    bool isMade = false;
    const auto isMadeNow = [&] {
        isMade = isMade || runTessel(arguments()).status == 0;
        return isMade;
    };
    QTRY_VERIFY_WITH_TIMEOUT(isMadeNow(), 20'000);
    QCOMPARE(made(), (QStringList { "A.dta", "B.dta" }));
    QCOMPARE(StatContents::read(path("out/A.dta")).rows.size(), 1);
}

void tst_ConvertFaults::lastNameFails_data()
{
    QTest::addColumn<bool>("replaces");
    QTest::newRow("a file came meanwhile") << false;
    QTest::newRow("what was made is gone") << true;
}

// The first file has its name already, and loses it.
void tst_ConvertFaults::lastNameFails()
{
    QFETCH(bool, replaces);
    QVERIFY(QDir().mkpath(path("out")));
    if (replaces)
        QVERIFY(writeFile(path("out/A.dta"), "former"));
    QProcess process;
    QStringList command = arguments(replaces ? QStringList { "--overwrite" } : QStringList());
    command[2] = "-";
    process.start(QStringLiteral(TESSEL_PROGRAM), command);
    QVERIFY(process.waitForStarted());
    process.write(manyLines()); // more than a pipe holds, so that rows are read
    QTRY_VERIFY(process.bytesToWrite() == 0);
    QTRY_VERIFY(made().contains(".B.dta.tessel-build"));
    if (replaces)
        QVERIFY(QFile::remove(path("out/.B.dta.tessel-build")));
    else
        QVERIFY(writeFile(path("out/B.dta"), "mine"));
    process.closeWriteChannel();
    QVERIFY(process.waitForFinished(60'000));
    QCOMPARE(process.exitCode(), 1);
    const QByteArray errors = process.readAllStandardError();
    QVERIFY2(errors.contains("B.dta: error:"), errors.constData());
    QCOMPARE(made(), QStringList { replaces ? "A.dta" : "B.dta" });
    QCOMPARE(readFile(path(replaces ? "out/A.dta" : "out/B.dta")),
        QByteArray(replaces ? "former" : "mine"));
}

void tst_ConvertFaults::damagedSource()
{
    const QByteArray whole = readFile(QStringLiteral(TESSEL_EXAMPLES "/person.sav"));
    QVERIFY(writeFile(path("cut.sav"), whole.left(whole.size() / 2)));
    const Outcome outcome =
        runTessel({ "convert", path("cut.sav"), "--to", "stata", "-o", path("out") });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("cut.sav: error:"), outcome.errors.constData());
    QVERIFY(!QFileInfo::exists(path("out")));
}

// What only the data show fails at the end.
void tst_ConvertFaults::strictData()
{
    QVERIFY(writeFile(path("d.dat"), "101 1a\n101xxb\n201 2\n"));
    const Outcome outcome = runTessel(arguments({ "--strict" }));
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("A.dta: error: N: 1 value that is no number became missing"),
        outcome.errors.constData());
    QVERIFY(!QFileInfo::exists(path("out")));
    QCOMPARE(runTessel(arguments()).status, 0);
}

void tst_ConvertFaults::problems()
{
    QVERIFY(writeFile(path("d.dat"), "101 1a\n101xxb\n901 2\n"));
    const Outcome outcome = runTessel(arguments({ "--problems", path("p.csv") }));
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    const QByteArray found = readFile(path("p.csv"));
    QVERIFY2(found.contains("not-a-number"), found.constData());
    QVERIFY2(found.contains("unknown-record-type"), found.constData());
    QVERIFY2(
        outcome.errors.contains("1 line has no place in any file"), outcome.errors.constData());
    QVERIFY2(outcome.output.contains("3 lines read = 2 rows + 1 reject + 0 deleted + 0 blank"),
        outcome.output.constData());
}

QTEST_GUILESS_MAIN(tst_ConvertFaults)
#include "tst_ConvertFaults.moc"
