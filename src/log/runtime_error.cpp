#include "log/runtime_error.h"

#include <cerrno>
#include <cstring>

namespace velmora {

namespace {

int NumberOf(int systemError)
{
    using namespace runtime_errors;
    switch (systemError) {
    case ENOENT:
    case ENOTDIR:
        return kPathNotFound;
    case EACCES:
    case EPERM:
    case EROFS:
        return kPermissionDenied;
    case ENOSPC:
#ifdef EDQUOT // not every system has quotas that it tells apart
    case EDQUOT:
#endif
        return kDiskFull;
    case EIO:
        return kDeviceError;
    default:
        return kPathFileAccess;
    }
}

} // namespace

RuntimeError FileError(std::string_view what, const std::string& path, std::string_view cannot, int systemError)
{
    std::string text(what);
    text.append(" [").append(path).append("] ").append(cannot).append(": ").append(std::strerror(systemError));
    return {NumberOf(systemError), text};
}

} // namespace velmora
