#include "platform/file_operations.h"

#include "platform/windows/windows.h"

#include <io.h>

namespace velmora {

std::error_code MoveOnOneVolume(const std::filesystem::path& from, const std::filesystem::path& to)
{
    if (MoveFileExW(from.c_str(), to.c_str(), 0))
        return {};
    switch (const DWORD error = GetLastError()) {
    case ERROR_NOT_SAME_DEVICE:
        return std::make_error_code(std::errc::cross_device_link);
    case ERROR_ALREADY_EXISTS:
    case ERROR_FILE_EXISTS:
        return std::make_error_code(std::errc::file_exists);
    default:
        return {static_cast<int>(error), std::system_category()};
    }
}

bool SyncToDisk(std::FILE* file)
{
    return _commit(_fileno(file)) == 0;
}

} // namespace velmora
