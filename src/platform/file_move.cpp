#include "platform/file_move.h"

#include "platform/paths.h"

#include <cerrno>
#include <filesystem>

#ifdef _WIN32
#include <windows.h>
#else
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace velmora {

namespace {

namespace fs = std::filesystem;

#ifdef _WIN32

std::error_code MoveOnOneVolume(const fs::path& from, const fs::path& to)
{
    if (MoveFileExW(from.c_str(), to.c_str(), 0))
        return {};
    const DWORD error = GetLastError();
    if (error == ERROR_NOT_SAME_DEVICE)
        return std::make_error_code(std::errc::cross_device_link);
    return {static_cast<int>(error), std::system_category()};
}

#else

std::error_code LastError() noexcept
{
    return {errno, std::generic_category()};
}

std::error_code MoveOnOneVolume(const fs::path& from, const fs::path& to)
{
#ifdef RENAME_NOREPLACE
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return {};
    if (errno != EINVAL && errno != ENOSYS)
        return LastError();
#endif
    // A file system that does not know that call may know hard links, whose making replaces nothing either.
    if (linkat(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), 0) == 0) {
        if (unlink(from.c_str()) == 0)
            return {};
        const std::error_code error = LastError();
        unlink(to.c_str());
        return error;
    }
    if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS && errno != EMLINK)
        return LastError();
    // Here nothing better is left than to look first.
    std::error_code error;
    if (fs::exists(fs::symlink_status(to, error)))
        return std::make_error_code(std::errc::file_exists);
    fs::rename(from, to, error);
    return error;
}

#endif

std::error_code CopyAndDelete(const fs::path& from, const fs::path& to)
{
    std::error_code error;
    if (fs::exists(fs::symlink_status(to, error)))
        return std::make_error_code(std::errc::file_exists);
    std::error_code ignored;
    if (!fs::copy_file(from, to, error)) {
        if (error != std::errc::file_exists)
            fs::remove(to, ignored);
        return error;
    }
    fs::last_write_time(to, fs::last_write_time(from, ignored), ignored);
    if (!fs::remove(from, error))
        fs::remove(to, ignored);
    return error;
}

} // namespace

std::error_code MoveWithoutReplacing(const std::string& from, const std::string& to)
{
    const fs::path source = PathFromUtf8(from);
    const fs::path target = PathFromUtf8(to);
    const std::error_code error = MoveOnOneVolume(source, target);
    return error == std::errc::cross_device_link ? CopyAndDelete(source, target) : error;
}

} // namespace velmora
