#include "platform/program.h"

#include "platform/paths.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <pwd.h>
#include <system_error>
#include <unistd.h>

namespace velmora {

namespace {

namespace fs = std::filesystem;

/// A service may run without the variable.
fs::path HomeFolder()
{
    if (const std::string home = EnvironmentVariable("HOME"); !home.empty())
        return home;
    const passwd* user = getpwuid(getuid());
    return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "";
}

} // namespace

const std::string_view kProgramSuffix = "";

std::string ExecutablePath()
{
    std::error_code error;
    const fs::path path = fs::read_symlink("/proc/self/exe", error);
    return Utf8FromPath(error ? fs::current_path(error) / "velmora" : path);
}

std::vector<std::string> ProgramArguments(int argc, char* argv[])
{
    return {argv + 1, argv + std::max(argc, 1)};
}

std::string EnvironmentVariable(const char* name)
{
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

std::string UserDataFolder()
{
    // A relative folder would be another one for each place that the program is started from.
    fs::path base = PathFromUtf8(EnvironmentVariable("XDG_DATA_HOME"));
    if (!base.is_absolute())
        base = HomeFolder() / ".local" / "share";
    return base.is_absolute() ? Utf8FromPath(base / "velmora") : std::string();
}

bool IsWritableFolder(const std::string& folder)
{
    return FolderExists(folder) && access(folder.c_str(), W_OK | X_OK) == 0;
}

bool HasDisplay()
{
#ifdef __APPLE__
    return true;
#else
    return !EnvironmentVariable("DISPLAY").empty() || !EnvironmentVariable("WAYLAND_DISPLAY").empty();
#endif
}

} // namespace velmora
