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
const char kBetweenFolders = ':';

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

bool IsProgram(const std::string& path)
{
    return FileExists(path) && access(path.c_str(), X_OK) == 0;
}

std::string FindAssociatedProgram(const std::string& filePath)
{
    const std::string folder(FolderPart(filePath));
    if (!folder.empty() && !FolderExists(folder))
        return "Error: Path Not Found";
    if (!FileExists(filePath))
        return "Error: File Not Found";
        // Which program it is depends on the desktop; its opener knows.
#ifdef __APPLE__
    const std::string opener = FindOnPath("open");
#else
    const std::string opener = FindOnPath("xdg-open");
#endif
    return opener.empty() ? "Error: No Association" : opener;
}

bool BecomeProgram(const std::string& program, const std::vector<std::string>& arguments)
{
    std::vector<std::string> texts{program};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    execv(program.c_str(), pointers.data());
    return false;
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
