#include "platform/interrupt.h"

#include <csignal>

namespace velmora {

namespace {

// The one mutable global: a signal handler can reach nothing else.
volatile std::sig_atomic_t interrupted = 0;

extern "C" void NoteInterrupt(int)
{
    interrupted = 1;
}

} // namespace

void CatchInterrupts()
{
#ifdef _WIN32
    std::signal(SIGINT, NoteInterrupt);
    std::signal(SIGTERM, NoteInterrupt);
#else
    struct sigaction action = {};
    action.sa_handler = NoteInterrupt;
    action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    // Started under nohup, the program outlives its terminal.
    struct sigaction hangup = {};
    if (sigaction(SIGHUP, nullptr, &hangup) == 0 && hangup.sa_handler != SIG_IGN)
        sigaction(SIGHUP, &action, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
#endif
}

bool WasInterrupted() noexcept
{
    return interrupted != 0;
}

} // namespace velmora
