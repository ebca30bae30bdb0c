#include "process/Supervisor.h"

#include "process/Console.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iterator>
#include <new>

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int NoFile = -1;
constexpr int WorkGoesOn = -1; // no exit status
constexpr int NoMemory = 0; // no signal

// Processor time left; the process ends with SIGPROF when it is used up. 0: no limit.
void limitTime(int seconds)
{
    itimerval limit {};
    limit.it_value.tv_sec = seconds;
    setitimer(ITIMER_PROF, &limit, nullptr);
}

bool isCrash(int signal)
{
    constexpr int crashes[] = { SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS };
    return std::find(std::begin(crashes), std::end(crashes), signal) != std::end(crashes);
}

// False when somebody ended the child, who does not want the other files read either.
bool isWorkGoingOn(int signal)
{
    return signal == NoMemory || signal == SIGPROF || signal == SIGKILL || isCrash(signal);
}

} // namespace

struct Supervisor::Shared {
    volatile int file; // that the child is in; NoFile: none
    volatile bool lacksMemory;
};

Supervisor::Supervisor(const QStringList& files, int limitInSeconds)
    : m_files(files)
    , m_limit(limitInSeconds)
{
    void* shared =
        mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED)
        throw std::bad_alloc();
    m_shared = new (shared) Shared {};
}

Supervisor::~Supervisor()
{
    munmap(m_shared, sizeof(Shared));
}

int Supervisor::run(const std::function<int(Supervisor&)>& work)
{
    std::signal(SIGCHLD, SIG_DFL); // where it was ignored no child could be waited for
    while (true) {
        m_shared->file = NoFile;
        m_shared->lacksMemory = false;
        std::fflush(nullptr);
        const pid_t child = fork();
        if (child == 0)
            runChild(work);
        if (child < 0) {
            Console::print(QStringLiteral("tessel: no process can be started: %1\n")
                               .arg(QString::fromLocal8Bit(std::strerror(errno))));
            return InputFailed;
        }
        const int status = waitFor(child);
        if (status != WorkGoesOn)
            return m_bad.isEmpty() ? status : std::max<int>(status, InputFailed);
        m_bad.insert(int(m_shared->file));
        m_silentFiles = std::max(m_silentFiles, int(m_shared->file) + 1);
    }
}

void Supervisor::runChild(const std::function<int(Supervisor&)>& work)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    int status = InputFailed;
    try {
        status = work(*this);
    } catch (const std::bad_alloc&) {
        m_shared->lacksMemory = true; // the parent, which has some, tells it
        _exit(InputFailed);
    } catch (const std::exception& error) {
        Console::print(QStringLiteral("tessel: stopped: %1\n").arg(QLatin1String(error.what())));
    }
    Console::tellCounts();
    std::fflush(nullptr);
    _exit(status);
}

// The child's exit status; WorkGoesOn when it ended in a file in another way, which is told.
int Supervisor::waitFor(int child)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR) {
            Console::print(QStringLiteral("tessel: lost the process that reads\n"));
            return InputFailed;
        }
    }
    if (WIFEXITED(status) && !m_shared->lacksMemory)
        return WEXITSTATUS(status);
    const int signal = m_shared->lacksMemory ? NoMemory : WTERMSIG(status);
    // Who read the output has read enough; the program ends silently then, as any other does.
    if (signal == SIGPIPE)
        std::raise(SIGPIPE);
    tellEnd(signal);
    return m_shared->file != NoFile && isWorkGoingOn(signal) ? WorkGoesOn : InputFailed;
}

void Supervisor::tellEnd(int signal)
{
    const QString whole = m_files.size() == 1 ? m_files.constFirst() : QStringLiteral("tessel");
    Console::setSilent(false);
    Console::tell(m_files.value(int(m_shared->file), whole), 0, Console::Severity::Error,
        describeEnd(signal));
}

QString Supervisor::describeEnd(int signal) const
{
    const QString what = m_shared->file == NoFile ? QStringLiteral("writing the result")
                                                  : QStringLiteral("reading it");
    const QString name = QString::fromLocal8Bit(strsignal(signal));
    if (isCrash(signal))
        return QStringLiteral("%1 ended with a crash (%2); a damaged file or too little memory may "
                              "cause that")
            .arg(what, name);
    switch (signal) {
    case NoMemory:
        return QStringLiteral("%1 takes more memory than there is; end other programs, raise the "
                              "limit (ulimit -v), or use a machine with more memory")
            .arg(what);
    case SIGPROF:
        return QStringLiteral("%1 takes more than %2 seconds and was stopped")
            .arg(what, QString::number(m_limit));
    case SIGXCPU:
        return QStringLiteral("%1 was stopped by the limit on processor time; raise it (ulimit -t)")
            .arg(what);
    case SIGKILL:
        return QStringLiteral("%1 was stopped (%2); there may be too little memory")
            .arg(what, name);
    default:
        return QStringLiteral("%1 was stopped (%2)").arg(what, name);
    }
}

bool Supervisor::beginFile(int index, Time time)
{
    if (m_bad.contains(index))
        return false;
    Console::setSilent(index < m_silentFiles);
    m_shared->file = index;
    if (time == Time::Limited)
        limitTime(m_limit);
    return true;
}

void Supervisor::endFile()
{
    limitTime(0);
    Console::tellCounts();
    Console::setSilent(false);
    m_shared->file = NoFile;
}
