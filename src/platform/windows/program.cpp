#include "platform/program.h"

#include "platform/paths.h"
#include "platform/process.h"
#include "platform/windows/started_program.h"
#include "platform/windows/windows.h"

#include <cstdint>
#include <filesystem>
#include <shellapi.h>

namespace velmora {

namespace fs = std::filesystem;

namespace {

std::string ErrorText(std::intptr_t code)
{
    switch (code) {
    case 0:
        return "Error: Out of Memory";
    case ERROR_FILE_NOT_FOUND:
        return "Error: File Not Found";
    case ERROR_PATH_NOT_FOUND:
        return "Error: Path Not Found";
    case ERROR_BAD_FORMAT:
        return "Error: Bad File Format";
    case SE_ERR_NOASSOC:
        return "Error: No Association";
    default:
        return {};
    }
}

} // namespace

const std::string_view kProgramSuffix = ".exe";
const char kBetweenFolders = ';';

std::string ExecutablePath()
{
    std::wstring path(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size())
            return Utf8FromPath(path.substr(0, length));
        path.resize(path.size() * 2);
    }
}

std::vector<std::string> ProgramArguments(int, char*[])
{
    std::vector<std::string> words = SplitProgramLine(Utf8FromWide(GetCommandLineW()));
    if (!words.empty())
        words.erase(words.begin());
    return words;
}

std::string EnvironmentVariable(const char* name)
{
    const std::wstring wideName = WideFromUtf8(name);
    std::wstring value(GetEnvironmentVariableW(wideName.c_str(), nullptr, 0), L'\0');
    value.resize(GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size())));
    return Utf8FromWide(value);
}

std::string UserDataFolder()
{
    // A relative folder would be another one for each place that the program is started from.
    fs::path base = PathFromUtf8(EnvironmentVariable("LOCALAPPDATA"));
    if (!base.is_absolute())
        base = PathFromUtf8(EnvironmentVariable("USERPROFILE")) / "AppData" / "Local";
    return base.is_absolute() ? Utf8FromPath(base / "velmora") : std::string();
}

/// The attributes of a folder do not tell: a file that goes again with its handle does.
bool IsWritableFolder(const std::string& folder)
{
    const fs::path probe = PathFromUtf8(folder + "\\velmora-probe." + std::to_string(GetCurrentProcessId()));
    const HANDLE file = CreateFileW(probe.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    CloseHandle(file);
    return true;
}

bool IsProgram(const std::string& path)
{
    return FileExists(path);
}

std::string FindAssociatedProgram(const std::string& filePath)
{
    constexpr std::intptr_t kLargestError = 32;
    wchar_t program[MAX_PATH] = L"";
    const std::wstring name = WideFromUtf8(NamePart(filePath));
    const std::wstring folder = WideFromUtf8(FolderPart(filePath));
    const auto result = reinterpret_cast<std::intptr_t>(FindExecutableW(name.c_str(), folder.c_str(), program));
    return result > kLargestError ? Utf8FromWide(program) : ErrorText(result);
}

bool BecomeProgram(const std::string& program, const std::vector<std::string>& arguments)
{
    std::vector<std::string> words{program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    const HANDLE process = StartProgram(words, startup);
    if (process != nullptr)
        CloseHandle(process);
    return process != nullptr;
}

bool HasDisplay()
{
    return true;
}

} // namespace velmora
