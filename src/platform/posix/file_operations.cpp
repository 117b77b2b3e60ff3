#include "platform/file_operations.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace velmora {

namespace fs = std::filesystem;

std::error_code MoveOnOneVolume(const fs::path& from, const fs::path& to)
{
#ifdef RENAME_NOREPLACE
    if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return {};
    if (errno != EINVAL && errno != ENOSYS)
        return {errno, std::generic_category()};
#endif
    // A file system that does not know that call may know hard links, whose making replaces nothing either.
    if (linkat(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), 0) == 0) {
        if (unlink(from.c_str()) == 0)
            return {};
        const std::error_code error(errno, std::generic_category());
        unlink(to.c_str());
        return error;
    }
    if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS && errno != EMLINK)
        return {errno, std::generic_category()};
    // Here nothing better is left than to look first.
    std::error_code error;
    if (fs::exists(fs::symlink_status(to, error)))
        return std::make_error_code(std::errc::file_exists);
    fs::rename(from, to, error);
    return error;
}

bool SyncToDisk(std::FILE* file)
{
    return fsync(fileno(file)) == 0;
}

} // namespace velmora
