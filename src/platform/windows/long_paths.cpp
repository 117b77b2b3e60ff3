// What std::filesystem asks of the C library, answered by the system itself: the library's own functions know no folder
// of more than 260 characters, and take the "?" of "\\?\" for a wildcard. The build makes the linker take these first.

#include "platform/windows/windows.h"

#include <cerrno>
#include <cstdint>
#include <cwchar>
#include <dirent.h>
#include <new>
#include <sys/stat.h>

namespace {

int ErrorOf(DWORD error) noexcept
{
    return error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION ? EACCES : ENOENT;
}

std::uint64_t Joined(DWORD high, DWORD low) noexcept
{
    return std::uint64_t{high} << 32 | low;
}

/// Seconds since 1970.
__time64_t Seconds(const FILETIME& time) noexcept
{
    constexpr std::int64_t kTicksPerSecond = 10'000'000;
    constexpr std::int64_t kEpoch = 11'644'473'600; // seconds from 1601 to 1970
    return static_cast<std::int64_t>(Joined(time.dwHighDateTime, time.dwLowDateTime)) / kTicksPerSecond - kEpoch;
}

/// Of the file that a link leads to.
bool GetAttributes(const wchar_t* path, WIN32_FILE_ATTRIBUTE_DATA& found) noexcept
{
    if (!GetFileAttributesExW(path, GetFileExInfoStandard, &found))
        return false;
    if (!(found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT))
        return true;
    const HANDLE file = CreateFileW(path, 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    BY_HANDLE_FILE_INFORMATION target{};
    const BOOL isKnown = GetFileInformationByHandle(file, &target);
    const DWORD error = GetLastError();
    CloseHandle(file);
    SetLastError(error);
    found = {target.dwFileAttributes, target.ftCreationTime, target.ftLastAccessTime,
             target.ftLastWriteTime,  target.nFileSizeHigh,  target.nFileSizeLow};
    return isKnown;
}

int GetStatus(const wchar_t* path, struct _stat64* status) noexcept
{
    WIN32_FILE_ATTRIBUTE_DATA found{};
    if (!GetAttributes(path, found)) {
        errno = ErrorOf(GetLastError());
        return -1;
    }
    const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const bool isReadOnly = (found.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
    *status = {};
    status->st_mode = static_cast<unsigned short>((isFolder ? S_IFDIR | 0111 : S_IFREG) | (isReadOnly ? 0444 : 0666));
    status->st_nlink = 1;
    status->st_size = static_cast<__int64>(Joined(found.nFileSizeHigh, found.nFileSizeLow));
    status->st_atime = Seconds(found.ftLastAccessTime);
    status->st_mtime = Seconds(found.ftLastWriteTime);
    status->st_ctime = Seconds(found.ftCreationTime);
    return 0;
}

struct Listing : _WDIR {
    HANDLE search = INVALID_HANDLE_VALUE;
    WIN32_FIND_DATAW next{};
    bool hasNext = true;
};

} // namespace

extern "C" {

int (*__imp__wstat64)(const wchar_t*, struct _stat64*) = GetStatus; // how a function of another library is called

_WDIR* _wopendir(const wchar_t* folder)
{
    auto* const listing = new (std::nothrow) Listing();
    if (listing == nullptr) {
        errno = ENOMEM;
        return nullptr;
    }
    const std::wstring_view name(folder);
    const bool endsInSeparator = name.ends_with(L'\\') || name.ends_with(L'/');
    listing->search =
        FindFirstFileW(std::wstring(name).append(endsInSeparator ? L"*" : L"\\*").c_str(), &listing->next);
    if (listing->search == INVALID_HANDLE_VALUE) {
        errno = ErrorOf(GetLastError());
        delete listing;
        return nullptr;
    }
    return listing;
}

_wdirent* _wreaddir(_WDIR* opened)
{
    auto* const listing = static_cast<Listing*>(opened);
    if (!listing->hasNext)
        return nullptr;
    std::wcscpy(listing->dd_dir.d_name, listing->next.cFileName); // both have room for MAX_PATH characters
    listing->hasNext = FindNextFileW(listing->search, &listing->next);
    return &listing->dd_dir;
}

int _wclosedir(_WDIR* opened)
{
    const auto* const listing = static_cast<Listing*>(opened);
    FindClose(listing->search);
    delete listing;
    return 0;
}

} // extern "C"
