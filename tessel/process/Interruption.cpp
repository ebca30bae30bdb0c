#include "process/Interruption.h"

#include <csignal>

namespace {

volatile std::sig_atomic_t wanted = 0;

constexpr int endings[] = { SIGINT, SIGTERM, SIGHUP };

// A second time the program ends at once.
void note(int signal)
{
    if (wanted != 0)
        std::signal(signal, SIG_DFL);
    wanted = 1;
}

// What was ignored, as under nohup, stays so.
void listen(void (*handler)(int))
{
    for (const int signal : endings) {
        struct sigaction action { };
        if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_IGN)
            continue;
        action = {};
        action.sa_handler = handler;
        action.sa_flags = SA_RESTART;
        sigaction(signal, &action, nullptr);
    }
}

} // namespace

Interruption::Interruption()
{
    wanted = 0;
    listen(note);
}

Interruption::~Interruption()
{
    listen(SIG_DFL);
}

bool Interruption::isWanted()
{
    return wanted != 0;
}
