#pragma once

#include <string>
#include <string_view>
#include <system_error>

namespace velmora {

/// Makes `content` the whole of the file at `path` (UTF-8, native separators), or makes the file. It is written under
/// another name beside that place and renamed when it is complete: whatever fails, the old content stays. Permissions
/// are kept, and a link still leads to its file.
[[nodiscard]] std::error_code ReplaceFile(const std::string& path, std::string_view content);

} // namespace velmora
