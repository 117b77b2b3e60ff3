#include "platform/paths.h"

#include "platform/windows/windows.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <io.h>
#include <share.h>
#include <sys/stat.h>

namespace velmora {

namespace {

namespace fs = std::filesystem;

/// Folders must leave room for a name of the old kind, 8.3.
constexpr std::size_t kLongestUsualPath = MAX_PATH - 13;
constexpr std::wstring_view kLong = L"\\\\?\\";
constexpr std::wstring_view kLongShare = L"\\\\?\\UNC\\";

/// `path` absolute, without "." and "..", which the prefix for long paths forbids; empty when that cannot be had.
std::wstring FullPath(const std::wstring& path)
{
    std::wstring full(GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full;
}

} // namespace

const bool kNamesIgnoreCase = true;

fs::path PathFromUtf8(std::string_view text)
{
    std::wstring path = WideFromUtf8(text);
    if (path.starts_with(kLong) || path.find(L'\0') != path.npos)
        return path;
    std::replace(path.begin(), path.end(), L'/', L'\\');
    // What is short as it was typed may be long behind the current folder.
    const std::wstring full = path.empty() ? path : FullPath(path);
    if (full.size() <= kLongestUsualPath)
        return path;
    const bool isShare = full.starts_with(L"\\\\");
    return std::wstring(isShare ? kLongShare : kLong).append(full.substr(isShare ? 2 : 0));
}

std::string Utf8FromPath(const fs::path& path)
{
    const std::wstring_view text = path.native();
    if (text.starts_with(kLongShare))
        return "\\\\" + Utf8FromWide(text.substr(kLongShare.size()));
    return Utf8FromWide(text.starts_with(kLong) ? text.substr(kLong.size()) : text);
}

std::string FileIdentity(const std::string& path)
{
    const HANDLE file =
        CreateFileW(PathFromUtf8(path).c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return path;
    BY_HANDLE_FILE_INFORMATION status{};
    const BOOL isKnown = GetFileInformationByHandle(file, &status);
    CloseHandle(file);
    if (!isKnown)
        return path;
    return std::to_string(status.dwVolumeSerialNumber) + ":" + std::to_string(status.nFileIndexHigh) + ":" +
           std::to_string(status.nFileIndexLow);
}

std::FILE* OpenFileStream(std::string_view path, const char* mode)
{
    std::string known(mode);
    const fs::path name = PathFromUtf8(path);
    const std::size_t mark = known.find('x');
    if (mark == known.npos)
        return _wfopen(name.c_str(), WideFromUtf8(known).c_str());
    // The system's library has no word for "only when it is new".
    known.erase(mark, 1);
    const int file = _wopen(name.c_str(), _O_CREAT | _O_EXCL | _O_BINARY | _O_RDWR, _S_IREAD | _S_IWRITE);
    return file < 0 ? nullptr : _fdopen(file, known.c_str());
}

} // namespace velmora
