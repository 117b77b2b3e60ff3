#include "platform/terminal.h"

#include <csignal>
#include <sys/ioctl.h>
#include <unistd.h>

namespace velmora {

namespace {

constexpr std::size_t kUsualColumns = 80;

// The one mutable global: a signal handler can reach nothing else.
volatile std::sig_atomic_t interrupted = 0;

extern "C" void NoteInterrupt(int)
{
    interrupted = 1;
}

} // namespace

bool IsTerminal(std::FILE* stream) noexcept
{
    return isatty(fileno(stream)) == 1;
}

std::size_t TerminalColumns(std::FILE* stream) noexcept
{
    winsize size{};
    return ioctl(fileno(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualColumns;
}

void PrepareStreams() {}

bool TakesEscapes(std::FILE* stream) noexcept
{
    return IsTerminal(stream);
}

void CatchInterrupts()
{
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
}

bool WasInterrupted() noexcept
{
    return interrupted != 0;
}

} // namespace velmora
