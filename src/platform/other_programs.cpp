#include "platform/other_programs.h"

#include "platform/paths.h"
#include "platform/program.h"

#include <algorithm>
#include <filesystem>

#ifdef _WIN32
#include <windows.h>

#include <process.h>
#include <shellapi.h>
#else
#include <unistd.h>
#endif

namespace velmora {

namespace {

namespace fs = std::filesystem;

fs::path SiblingPath(std::string_view name)
{
    return PathFromUtf8(ProgramFolder()) / PathFromUtf8(std::string(name).append(kProgramSuffix));
}

constexpr const char* kFileNotFound = "Error: File Not Found";
constexpr const char* kPathNotFound = "Error: Path Not Found";
constexpr const char* kNoAssociation = "Error: No Association";

#ifdef _WIN32

std::string ErrorText(std::intptr_t code)
{
    switch (code) {
    case 0:
        return "Error: Out of Memory";
    case ERROR_FILE_NOT_FOUND:
        return kFileNotFound;
    case ERROR_PATH_NOT_FOUND:
        return kPathNotFound;
    case ERROR_BAD_FORMAT:
        return "Error: Bad File Format";
    case SE_ERR_NOASSOC:
        return kNoAssociation;
    default:
        return {};
    }
}

#endif

} // namespace

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

#ifdef _WIN32

std::string FindAssociatedProgram(const std::string& filePath)
{
    constexpr std::intptr_t kLargestError = 32;
    wchar_t program[MAX_PATH] = L"";
    const std::wstring name = PathFromUtf8(NamePart(filePath)).wstring();
    const std::wstring folder = PathFromUtf8(FolderPart(filePath)).wstring();
    const auto result = reinterpret_cast<std::intptr_t>(FindExecutableW(name.c_str(), folder.c_str(), program));
    return result > kLargestError ? Utf8FromPath(program) : ErrorText(result);
}

#else

std::string FindAssociatedProgram(const std::string& filePath)
{
    const std::string folder(FolderPart(filePath));
    if (!folder.empty() && !FolderExists(folder))
        return kPathNotFound;
    if (!FileExists(filePath))
        return kFileNotFound;
        // Which program it is depends on the desktop; its opener knows.
#ifdef __APPLE__
    const std::string opener = FindOnPath("open");
#else
    const std::string opener = FindOnPath("xdg-open");
#endif
    return opener.empty() ? kNoAssociation : opener;
}

#endif

std::string FindInstalled(std::string_view name)
{
    std::string sibling = Utf8FromPath(SiblingPath(name));
    return IsProgram(sibling) ? sibling : FindOnPath(name);
}

bool BecomeProgram(const std::string& program, const std::vector<std::string>& arguments)
{
    const fs::path path = PathFromUtf8(program);
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
