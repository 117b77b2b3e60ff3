#include "platform/other_programs.h"

#include "platform/paths.h"
#include "platform/windows/started_program.h"
#include "platform/windows/wide_text.h"
#include "platform/windows/windows.h"

#include <cstdint>
#include <shellapi.h>

namespace velmora {

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

const char kBetweenFolders = ';';

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

} // namespace velmora
