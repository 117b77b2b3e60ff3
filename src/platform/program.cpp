#include "platform/program.h"

#include "platform/paths.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#ifdef _WIN32
#include <windows.h>
#else
#include <pwd.h>
#include <unistd.h>
#endif

namespace velmora {

namespace {

namespace fs = std::filesystem;

fs::path ExecutablePath()
{
#ifdef _WIN32
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size())
            return path.substr(0, length);
        path.resize(path.size() * 2);
    }
#else
    std::error_code error;
    fs::path path = fs::read_symlink("/proc/self/exe", error);
    return error ? fs::current_path(error) / "velmora" : path;
#endif
}

#ifdef _WIN32

constexpr const char* kDataVariable = "LOCALAPPDATA";

fs::path HomeFolder()
{
    return PathFromUtf8(EnvironmentVariable("USERPROFILE"));
}

#else

constexpr const char* kDataVariable = "XDG_DATA_HOME";

/// A service may run without the variable.
fs::path HomeFolder()
{
    if (const std::string home = EnvironmentVariable("HOME"); !home.empty())
        return home;
    const passwd* user = getpwuid(getuid());
    return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "";
}

#endif

} // namespace

std::string ProgramFolder()
{
    return Utf8FromPath(ExecutablePath().parent_path());
}

std::string ProgramName()
{
    const fs::path path = ExecutablePath();
    return Utf8FromPath(path.extension() == ".exe" ? path.stem() : path.filename());
}

std::string EnvironmentVariable(const char* name)
{
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

std::string UserDataFolder()
{
    // A relative folder would be another one for each place that the program is started from.
    fs::path base = PathFromUtf8(EnvironmentVariable(kDataVariable));
    if (!base.is_absolute())
        base = HomeFolder() / ".local" / "share";
    return base.is_absolute() ? Utf8FromPath(base / "velmora") : std::string();
}

bool IsWritableFolder(const std::string& folder)
{
#ifdef _WIN32
    // The attributes of a folder do not tell: a file that goes again with its handle does.
    const fs::path probe = PathFromUtf8(folder) / L"velmora-probe.tmp";
    const HANDLE file = CreateFileW(probe.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    CloseHandle(file);
    return true;
#else
    return FolderExists(folder) && access(folder.c_str(), W_OK | X_OK) == 0;
#endif
}

bool HasDisplay()
{
#if defined(_WIN32) || defined(__APPLE__)
    return true;
#else
    return !EnvironmentVariable("DISPLAY").empty() || !EnvironmentVariable("WAYLAND_DISPLAY").empty();
#endif
}

} // namespace velmora
