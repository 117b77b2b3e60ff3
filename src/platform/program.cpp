#include "platform/program.h"

#include "platform/paths.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

#ifdef _WIN32
#include <process.h>
#include <windows.h>
#else
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
    fs::path path = ExecutablePath().parent_path() / PathFromUtf8(name);
#ifdef _WIN32
    path += L".exe";
#endif
    return path;
}

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
#ifdef _WIN32
    std::error_code error;
    return fs::is_regular_file(SiblingPath(name), error);
#else
    return access(SiblingPath(name).c_str(), X_OK) == 0;
#endif
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
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    execv(path.c_str(), pointers.data());
    return false;
#endif
}

} // namespace velmora
