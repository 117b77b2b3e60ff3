#include "platform/terminal.h"

#include <csignal>

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <sys/ioctl.h>
#include <unistd.h>
#endif

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

#ifdef _WIN32

bool IsTerminal(std::FILE* stream) noexcept
{
    return _isatty(_fileno(stream)) != 0;
}

std::size_t TerminalColumns(std::FILE* stream) noexcept
{
    CONSOLE_SCREEN_BUFFER_INFO info;
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    return GetConsoleScreenBufferInfo(handle, &info) ? static_cast<std::size_t>(info.dwSize.X) : kUsualColumns;
}

#else

bool IsTerminal(std::FILE* stream) noexcept
{
    return isatty(fileno(stream)) == 1;
}

std::size_t TerminalColumns(std::FILE* stream) noexcept
{
    winsize size{};
    return ioctl(fileno(stream), TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualColumns;
}

#endif

std::string Printable(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : '\0');
        if (byte == '\r' && next == '\n')
            continue;
        if (byte == 0xC2 && next >= 0x80 && next <= 0x9F) {
            // U+0080 to U+009F: some terminals take them for escape sequences of one character.
            result += '?';
            ++i;
        } else if ((byte < 0x20 && byte != '\t' && byte != '\n') || byte == 0x7F) {
            result += '?';
        } else {
            result += text[i];
        }
    }
    return result;
}

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
