// The supervisor runs in the test's own process; the children that it makes crash or hang on
// purpose.
#include "process/Console.h"
#include "process/Supervisor.h"

#include <QTemporaryFile>
#include <QtTest>

#include <csignal>
#include <sys/resource.h>
#include <unistd.h>

namespace {

// What is written to standard error while it lives.
class CapturedErrors {
public:
    CapturedErrors()
    {
        m_opened = m_file.open();
        std::fflush(stderr);
        m_stderr = dup(STDERR_FILENO);
        dup2(m_file.handle(), STDERR_FILENO);
    }

    ~CapturedErrors()
    {
        dup2(m_stderr, STDERR_FILENO);
        close(m_stderr);
    }

    QString text()
    {
        std::fflush(stderr);
        m_file.seek(0);
        return m_opened ? QString::fromUtf8(m_file.readAll()) : QString();
    }

private:
    QTemporaryFile m_file;
    bool m_opened = false;
    int m_stderr = -1;
};

[[noreturn]] void crash()
{
    const rlimit noCore {};
    setrlimit(RLIMIT_CORE, &noCore);
    std::signal(SIGSEGV, SIG_DFL);
    std::raise(SIGSEGV);
    std::abort();
}

[[noreturn]] void loop()
{
    for (volatile unsigned turns = 0;; turns = turns + 1) { }
}

const QStringList files { "one.sav", "two.sav", "three.sav" };

void tellRead(int index)
{
    Console::tell(files.at(index), 0, Console::Severity::Warning, QStringLiteral("read"));
}

// Reads all files, but ends in the bad one as it does.
int readAll(Supervisor& supervisor, int bad, void (*end)())
{
    for (int i = 0; i < files.size(); ++i) {
        if (!supervisor.beginFile(i))
            continue;
        if (i == bad)
            end();
        tellRead(i);
        supervisor.endFile();
    }
    return AllRead;
}

} // namespace

class tst_Supervisor : public QObject {
    Q_OBJECT

private slots:
    void passesTheStatus_data();
    void passesTheStatus();
    void namesTheFileOfACrash_data();
    void namesTheFileOfACrash();
    void endsAnEndlessLoop();
    void survivesSeveralCrashes();
    void tellsOfACrashOutsideFiles();
    void exceptionsAreErrors();
};

void tst_Supervisor::passesTheStatus_data()
{
    QTest::addColumn<int>("status");
    QTest::newRow("all read") << int(AllRead);
    QTest::newRow("an input failed") << int(InputFailed);
    QTest::newRow("wrong usage") << int(WrongUsage);
}

void tst_Supervisor::passesTheStatus()
{
    QFETCH(int, status);
    QCOMPARE(Supervisor(files).run([status](Supervisor&) { return status; }), status);
}

void tst_Supervisor::namesTheFileOfACrash_data()
{
    QTest::addColumn<int>("bad");
    QTest::newRow("in the first file") << 0;
    QTest::newRow("in the middle") << 1;
    QTest::newRow("in the last file") << 2;
}

void tst_Supervisor::namesTheFileOfACrash()
{
    QFETCH(int, bad);
    CapturedErrors errors;
    const int status = Supervisor(files).run(
        [bad](Supervisor& supervisor) { return readAll(supervisor, bad, crash); });
    QCOMPARE(status, int(InputFailed));
    const QStringList lines = errors.text().split('\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), files.size()); // each file once, the others in spite of the crash
    for (int i = 0; i < files.size(); ++i) {
        const QString line = lines.filter(files.at(i)).join('\n');
        if (i == bad)
            QVERIFY2(line.startsWith(files.at(i) + ": error: reading it ended with a crash"),
                qPrintable(line));
        else
            QCOMPARE(line, files.at(i) + ": warning: read");
    }
}

void tst_Supervisor::endsAnEndlessLoop()
{
    CapturedErrors errors;
    const int status = Supervisor(files, 1).run(
        [](Supervisor& supervisor) { return readAll(supervisor, 1, loop); });
    QCOMPARE(status, int(InputFailed));
    const QString text = errors.text();
    QVERIFY2(
        text.contains("two.sav: error: reading it takes more than 1 seconds"), qPrintable(text));
    QVERIFY(text.contains("three.sav: warning: read"));
}

void tst_Supervisor::survivesSeveralCrashes()
{
    CapturedErrors errors;
    const int status = Supervisor(files).run([](Supervisor& supervisor) {
        for (int i = 0; i < files.size(); ++i) {
            if (supervisor.beginFile(i))
                crash();
        }
        return int(AllRead);
    });
    QCOMPARE(status, int(InputFailed));
    QCOMPARE(errors.text().count("ended with a crash"), files.size());
}

void tst_Supervisor::tellsOfACrashOutsideFiles()
{
    CapturedErrors errors;
    QCOMPARE(Supervisor(files).run([](Supervisor&) -> int { crash(); }), int(InputFailed));
    QVERIFY(errors.text().startsWith("tessel: error:"));
}

void tst_Supervisor::exceptionsAreErrors()
{
    CapturedErrors errors;
    const int status = Supervisor(files).run(
        [](Supervisor&) -> int { throw std::runtime_error("no more memory"); });
    QCOMPARE(status, int(InputFailed));
    QVERIFY(errors.text().contains("no more memory"));
}

QTEST_GUILESS_MAIN(tst_Supervisor)
#include "tst_Supervisor.moc"
