#include "process/Supervisor.h"

#include "process/Console.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr int NoFile = -1;

// Processor time left; the process ends with SIGPROF when it is used up. 0: no limit.
void limitTime(int seconds)
{
    itimerval limit {};
    limit.it_value.tv_sec = seconds;
    setitimer(ITIMER_PROF, &limit, nullptr);
}

[[noreturn]] void runChild(Supervisor& supervisor, const std::function<int(Supervisor&)>& work)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    int status = InputFailed;
    try {
        status = work(supervisor);
    } catch (const std::exception& error) {
        Console::print(QStringLiteral("tessel: stopped: %1\n").arg(QLatin1String(error.what())));
    }
    std::fflush(nullptr);
    _exit(status);
}

} // namespace

Supervisor::Supervisor(const QStringList& files, int limitInSeconds)
    : m_files(files)
    , m_limit(limitInSeconds)
{
    void* shared =
        mmap(nullptr, sizeof(int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED)
        throw std::bad_alloc();
    m_current = static_cast<int*>(shared);
}

Supervisor::~Supervisor()
{
    munmap(const_cast<int*>(m_current), sizeof(int));
}

int Supervisor::run(const std::function<int(Supervisor&)>& work)
{
    while (true) {
        *m_current = NoFile;
        std::fflush(nullptr);
        const pid_t child = fork();
        if (child == 0)
            runChild(*this, work);
        if (child < 0) {
            Console::print(QStringLiteral("tessel: no process can be started: %1\n")
                               .arg(QString::fromLocal8Bit(std::strerror(errno))));
            return InputFailed;
        }
        const int status = waitFor(child);
        if (status >= 0)
            return m_bad.isEmpty() ? status : std::max<int>(status, InputFailed);
        if (*m_current == NoFile)
            return InputFailed;
        m_bad.insert(int(*m_current));
        m_silentFiles = std::max(m_silentFiles, int(*m_current) + 1);
    }
}

// The child's exit status; below 0 when it ended in another way, which is told.
int Supervisor::waitFor(int child)
{
    int status = 0;
    while (waitpid(child, &status, 0) < 0) {
        if (errno != EINTR)
            return InputFailed;
    }
    if (WIFEXITED(status))
        return WEXITSTATUS(status);
    // Who read the output has read enough; the program ends silently then, as any other does.
    if (WTERMSIG(status) == SIGPIPE && *m_current == NoFile)
        std::raise(SIGPIPE);
    Console::setSilent(false);
    Console::tell(m_files.value(int(*m_current), QStringLiteral("tessel")), 0,
        Console::Severity::Error, describeEnd(WTERMSIG(status)));
    return -1;
}

QString Supervisor::describeEnd(int signal) const
{
    const QString name = QString::fromLocal8Bit(strsignal(signal));
    if (*m_current == NoFile)
        return QStringLiteral("ended unexpectedly (%1)").arg(name);
    switch (signal) {
    case SIGPROF:
        return QStringLiteral("reading it takes more than %1 seconds; the file is damaged")
            .arg(m_limit);
    case SIGKILL:
        return QStringLiteral("reading it was stopped (%1); there may be too little memory")
            .arg(name);
    default:
        return QStringLiteral("reading it ended with a crash (%1); the file is damaged").arg(name);
    }
}

bool Supervisor::beginFile(int index)
{
    if (m_bad.contains(index))
        return false;
    Console::setSilent(index < m_silentFiles);
    *m_current = index;
    limitTime(m_limit);
    return true;
}

void Supervisor::endFile()
{
    limitTime(0);
    Console::setSilent(false);
    *m_current = NoFile;
}
