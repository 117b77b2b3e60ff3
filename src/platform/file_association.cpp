#include "platform/file_association.h"

#include "platform/paths.h"
#include "platform/program.h"

#ifdef _WIN32
#include <windows.h>

#include <shellapi.h>
#endif

namespace velmora {

namespace {

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

} // namespace velmora
