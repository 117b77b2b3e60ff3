#pragma once

#include <cstdio>
#include <filesystem>
#include <system_error>

namespace velmora {

// What file_changes.h asks the system for.

/// Gives the file `from` the name `to`, which must be free: std::errc::file_exists otherwise, and
/// std::errc::cross_device_link when that is on another volume.
[[nodiscard]] std::error_code MoveOnOneVolume(const std::filesystem::path& from, const std::filesystem::path& to);
/// Brings to the disk what the system holds of `file`. False with errno set.
[[nodiscard]] bool SyncToDisk(std::FILE* file);

} // namespace velmora
