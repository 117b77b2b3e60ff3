#include "platform/terminal.h"

#include "platform/windows/windows.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <io.h>

namespace velmora {

namespace {

constexpr std::size_t kUsualColumns = 80;
constexpr std::size_t kBufferBytes = std::size_t{64} * 1024; ///< whoever writes says when it is to be seen

// The one mutable global: a handler can reach nothing else.
volatile std::sig_atomic_t interrupted = 0;

HANDLE HandleOf(std::FILE* stream) noexcept
{
    return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

/// Runs in a thread of its own.
BOOL WINAPI NoteInterrupt(DWORD event) noexcept
{
    const bool isFirst = interrupted == 0;
    interrupted = 1;
    // When this returns from a closed window or the end of a session, the process ends at once, as it does anyway when
    // the system's patience is over.
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        Sleep(INFINITE);
    return isFirst;
}

/// A code page outlives the program that has set it, in the window of who started it.
UINT& CodePageBefore() noexcept
{
    static UINT codePage = 0;
    return codePage;
}

void RestoreCodePage() noexcept
{
    SetConsoleOutputCP(CodePageBefore());
}

} // namespace

bool IsTerminal(std::FILE* stream) noexcept
{
    DWORD mode = 0;
    return GetConsoleMode(HandleOf(stream), &mode) != 0; // _isatty takes NUL for a terminal
}

bool TakesEscapes(std::FILE* stream) noexcept
{
    constexpr DWORD kEscapes = 0x0004; // ENABLE_VIRTUAL_TERMINAL_PROCESSING, since Windows 10
    DWORD mode = 0;
    return GetConsoleMode(HandleOf(stream), &mode) && SetConsoleMode(HandleOf(stream), mode | kEscapes);
}

std::size_t TerminalColumns(std::FILE* stream) noexcept
{
    CONSOLE_SCREEN_BUFFER_INFO info;
    return GetConsoleScreenBufferInfo(HandleOf(stream), &info) && info.srWindow.Right >= info.srWindow.Left
               ? static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1)
               : kUsualColumns;
}

void PrepareStreams()
{
    // The system's library would write byte by byte to a terminal, which shows the parts of a character for themselves.
    for (std::FILE* stream : {stdout, stderr})
        std::setvbuf(stream, nullptr, _IOFBF, kBufferBytes);
    for (std::FILE* stream : {stdin, stdout, stderr})
        _setmode(_fileno(stream), _O_BINARY);
    CodePageBefore() = GetConsoleOutputCP();
    if (CodePageBefore() != 0 && CodePageBefore() != CP_UTF8 && SetConsoleOutputCP(CP_UTF8))
        std::atexit(RestoreCodePage);
}

void CatchInterrupts()
{
    SetConsoleCtrlHandler(NoteInterrupt, TRUE);
}

bool WasInterrupted() noexcept
{
    return interrupted != 0;
}

} // namespace velmora
