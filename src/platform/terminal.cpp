#include "platform/terminal.h"

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

} // namespace velmora
