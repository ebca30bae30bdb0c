// The supervisor runs in the test's own process; the children that it makes crash or hang on
// purpose.
#include "process/Console.h"
#include "process/Supervisor.h"

#include <QTemporaryFile>
#include <QtTest>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace {

int forkError = 0; // of the next call; 0: it works
int waitError = 0;

template <typename Function> Function* systemFunction(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

// The system's functions, which fail once when that is wanted.
extern "C" pid_t fork() noexcept
{
    errno = std::exchange(forkError, 0);
    return errno != 0 ? -1 : systemFunction<pid_t()>("fork")();
}

extern "C" pid_t waitpid(pid_t child, int* status, int options)
{
    errno = std::exchange(waitError, 0);
    return errno != 0 ? -1
                      : systemFunction<pid_t(pid_t, int*, int)>("waitpid")(child, status, options);
}

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

// As a program ends by it whose framework does not catch it.
[[noreturn]] void stop(int signal)
{
    const rlimit noCore {};
    setrlimit(RLIMIT_CORE, &noCore);
    std::signal(signal, SIG_DFL);
    std::raise(signal);
    std::abort();
}

[[noreturn]] void crash()
{
    stop(SIGSEGV);
}

[[noreturn]] void loop()
{
    for (volatile unsigned turns = 0;; turns = turns + 1) { }
}

[[noreturn]] void lackMemory()
{
    throw std::bad_alloc();
}

const QStringList files { "one.sav", "two.sav", "three.sav" };

void tellRead(int index)
{
    Console::tell(files.at(index), 0, Console::Severity::Warning, QStringLiteral("read"));
}

// Reads all files, but ends in the bad one as it does.
int readAll(Supervisor& supervisor, int bad, const std::function<void()>& end)
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
    void tooLittleMemoryNamesTheFile();
    void tooLittleMemoryForTheResult();
    void tooLittleMemoryForTheSupervisor();
    void signalsAreTold_data();
    void signalsAreTold();
    void pipeSignalIsPassedOn();
    void unlimitedTime();
    void noProcessCanBeStarted();
    void interruptedWaitGoesOn();
    void lostChildIsAnError();
    void ignoredChildrenAreWaitedFor();
    void countsLikeProblems();
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

void tst_Supervisor::tooLittleMemoryNamesTheFile()
{
    CapturedErrors errors;
    const int status = Supervisor(files).run(
        [](Supervisor& supervisor) { return readAll(supervisor, 1, lackMemory); });
    QCOMPARE(status, int(InputFailed));
    const QString text = errors.text();
    QVERIFY2(text.contains("two.sav: error: reading it takes more memory than there is; end other"),
        qPrintable(text));
    QCOMPARE(text.count("one.sav: warning: read"), 1);
    QCOMPARE(text.count("three.sav: warning: read"), 1);
}

void tst_Supervisor::tooLittleMemoryForTheResult()
{
    CapturedErrors errors;
    const int status = Supervisor({ "one.sav" }).run([](Supervisor&) -> int { lackMemory(); });
    QCOMPARE(status, int(InputFailed));
    const QString text = errors.text();
    QVERIFY2(text.startsWith("one.sav: error: writing the result takes more memory than there is"),
        qPrintable(text));
}

// In a process of its own, whose memory ends.
void tst_Supervisor::tooLittleMemoryForTheSupervisor()
{
    const pid_t child = fork();
    if (child == 0) {
        const rlimit nothing {};
        setrlimit(RLIMIT_AS, &nothing);
        try {
            const Supervisor supervisor(files);
        } catch (const std::bad_alloc&) {
            _exit(42);
        }
        _exit(0);
    }
    int status = 0;
    QCOMPARE(waitpid(child, &status, 0), child);
    QVERIFY(WIFEXITED(status));
    QCOMPARE(WEXITSTATUS(status), 42);
}

void tst_Supervisor::signalsAreTold_data()
{
    QTest::addColumn<int>("signal");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("goesOn");
    QTest::newRow("killed") << SIGKILL << "was stopped (Killed); there may be" << true;
    QTest::newRow("aborted") << SIGABRT << "ended with a crash (Aborted)" << true;
    QTest::newRow("bus error") << SIGBUS << "ended with a crash (Bus error)" << true;
    QTest::newRow("limit of time") << SIGXCPU << "was stopped by the limit" << false;
    QTest::newRow("terminated") << SIGTERM << "was stopped (Terminated)" << false;
    QTest::newRow("hung up") << SIGHUP << "was stopped (Hangup)" << false;
}

void tst_Supervisor::signalsAreTold()
{
    QFETCH(int, signal);
    QFETCH(QString, text);
    QFETCH(bool, goesOn);
    CapturedErrors errors;
    const int status = Supervisor(files).run([signal](Supervisor& supervisor) {
        return readAll(supervisor, 1, [signal] { stop(signal); });
    });
    QCOMPARE(status, int(InputFailed));
    const QString told = errors.text();
    QVERIFY2(told.contains("two.sav: error: reading it " + text), qPrintable(told));
    QVERIFY(!told.contains("the file is damaged"));
    QCOMPARE(told.contains("three.sav: warning: read"), goesOn);
}

// In a process of its own, which ends by it, silently.
void tst_Supervisor::pipeSignalIsPassedOn()
{
    for (const bool isReading : { false, true }) {
        CapturedErrors errors;
        const pid_t child = fork();
        if (child == 0) {
            std::signal(SIGPIPE, SIG_DFL);
            Supervisor(files).run([&](Supervisor& supervisor) -> int {
                if (isReading)
                    supervisor.beginFile(0);
                stop(SIGPIPE);
            });
            _exit(0);
        }
        int status = 0;
        QCOMPARE(waitpid(child, &status, 0), child);
        QVERIFY(WIFSIGNALED(status));
        QCOMPARE(WTERMSIG(status), SIGPIPE);
        QCOMPARE(errors.text(), QString());
    }
}

void tst_Supervisor::unlimitedTime()
{
    CapturedErrors errors;
    const int status = Supervisor(files, 1).run([](Supervisor& supervisor) {
        supervisor.beginFile(0, Supervisor::Time::Unlimited);
        while (std::clock() < CLOCKS_PER_SEC * 6 / 5) { }
        supervisor.endFile();
        return int(AllRead);
    });
    QCOMPARE(errors.text(), QString());
    QCOMPARE(status, int(AllRead));
}

void tst_Supervisor::noProcessCanBeStarted()
{
    CapturedErrors errors;
    forkError = EAGAIN;
    const int status = Supervisor(files).run([](Supervisor&) { return int(AllRead); });
    QCOMPARE(status, int(InputFailed));
    QCOMPARE(errors.text(),
        QString("tessel: no process can be started: Resource temporarily unavailable\n"));
}

void tst_Supervisor::interruptedWaitGoesOn()
{
    CapturedErrors errors;
    waitError = EINTR;
    QCOMPARE(Supervisor(files).run([](Supervisor&) { return 7; }), 7);
    QCOMPARE(errors.text(), QString());
}

void tst_Supervisor::lostChildIsAnError()
{
    CapturedErrors errors;
    waitError = ECHILD;
    QCOMPARE(Supervisor(files).run([](Supervisor&) { return int(AllRead); }), int(InputFailed));
    QVERIFY(errors.text().contains("tessel: lost the process that reads"));
}

void tst_Supervisor::ignoredChildrenAreWaitedFor()
{
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    const int status = Supervisor(files).run([](Supervisor&) { return 7; });
    std::signal(SIGCHLD, before);
    QCOMPARE(status, 7);
}

// Also of a file that an earlier child has told all of, which is not told again.
void tst_Supervisor::countsLikeProblems()
{
    CapturedErrors errors;
    Supervisor(files).run([](Supervisor& supervisor) {
        for (int i = 0; i < files.size(); ++i) {
            if (!supervisor.beginFile(i))
                continue;
            for (int line = 1; line <= 5; ++line) {
                Console::tell(files.at(i), line, Console::Severity::Warning, "odd", "oddity");
                Console::tell(files.at(i), line, Console::Severity::Note, "plain");
            }
            if (i == 1)
                crash();
            supervisor.endFile();
        }
        return int(AllRead);
    });
    const QString text = errors.text();
    for (const QString& file : files)
        QCOMPARE(text.count(file + ":3: warning: odd\n"), 1);
    QCOMPARE(text.count(": warning: odd\n"), 9);
    QCOMPARE(text.count("note: plain"), 15);
    const QString counted = ":3: warning: 2 more like this; --all-warnings shows them\n";
    QCOMPARE(text.count("one.sav" + counted), 1);
    QCOMPARE(text.count("three.sav" + counted), 1);
    QCOMPARE(text.count(counted), 2);
}

QTEST_GUILESS_MAIN(tst_Supervisor)
#include "tst_Supervisor.moc"
