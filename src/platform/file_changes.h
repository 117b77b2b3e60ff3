#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <system_error>

namespace velmora {

/// Gives the file `from` the path `to` (both UTF-8, native separators). What stands at `to` is never replaced: the
/// result is then std::errc::file_exists. Onto another volume the file is copied first, time of change included, and
/// deleted when the copy is complete; a copy that fails leaves nothing behind.
[[nodiscard]] std::error_code MoveWithoutReplacing(const std::string& from, const std::string& to);

/// Makes `content` the whole of the file at `path` (UTF-8, native separators), or makes the file. It is written under
/// another name beside that place and renamed when it is complete: whatever fails, the old content stays. Permissions
/// are kept, and a link still leads to its file.
[[nodiscard]] std::error_code ReplaceFile(const std::string& path, std::string_view content);

/// Why nothing can be appended to the file at `path` (UTF-8, native separators), which is made when it is missing.
/// Makes and changes nothing.
[[nodiscard]] std::error_code WhyNotAppend(const std::string& path);

/// Brings what was written to `file` to the disk: else a crash of the system could leave a new name with nothing behind
/// it.
[[nodiscard]] std::error_code SyncFile(std::FILE* file);

} // namespace velmora
