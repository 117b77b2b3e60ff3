#include "platform/program.h"

#include "platform/paths.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#ifdef _WIN32
#include <process.h>
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

fs::path SiblingPath(std::string_view name)
{
    return ExecutablePath().parent_path() / PathFromUtf8(std::string(name).append(kProgramSuffix));
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

bool IsProgram(const std::string& path)
{
#ifdef _WIN32
    return FileExists(path);
#else
    return FileExists(path) && access(path.c_str(), X_OK) == 0;
#endif
}

std::string FindOnPath(std::string_view name)
{
#ifdef _WIN32
    constexpr char kBetweenFolders = ';';
#else
    constexpr char kBetweenFolders = ':';
#endif
    const std::string folders = EnvironmentVariable("PATH");
    const std::string fileName = std::string(name).append(kProgramSuffix);
    for (std::size_t begin = 0; begin < folders.size();) {
        const std::size_t end = std::min(folders.find(kBetweenFolders, begin), folders.size());
        const fs::path folder = PathFromUtf8(std::string_view(folders).substr(begin, end - begin));
        std::string candidate = Utf8FromPath(folder / PathFromUtf8(fileName));
        // What the current folder holds, possibly downloaded by anybody, must not be taken for a program of the system.
        if (folder.is_absolute() && IsProgram(candidate))
            return candidate;
        begin = end + 1;
    }
    return {};
}

bool HasDisplay()
{
#if defined(_WIN32) || defined(__APPLE__)
    return true;
#else
    return !EnvironmentVariable("DISPLAY").empty() || !EnvironmentVariable("WAYLAND_DISPLAY").empty();
#endif
}

bool HasSiblingProgram(std::string_view name)
{
    return IsProgram(Utf8FromPath(SiblingPath(name)));
}

bool BecomeSiblingProgram(std::string_view name, const std::vector<std::string>& arguments)
{
    const fs::path path = SiblingPath(name);
#ifdef _WIN32
    std::vector<std::wstring> texts{path.wstring()};
    for (const std::string& argument : arguments)
        texts.push_back(PathFromUtf8(argument).wstring());
    std::vector<const wchar_t*> pointers;
    for (const std::wstring& text : texts)
        pointers.push_back(text.c_str());
    pointers.push_back(nullptr);
    return _wspawnv(_P_NOWAIT, path.c_str(), pointers.data()) != -1;
#else
    std::vector<std::string> texts{path.string()};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    execv(path.c_str(), pointers.data());
    return false;
#endif
}

} // namespace velmora
