#pragma once

#include <string>
#include <system_error>

namespace velmora {

/// Gives the file `from` the path `to` (both UTF-8, native separators). What stands at `to` is never replaced: the
/// result is then std::errc::file_exists. Onto another volume the file is copied first, time of change included, and
/// deleted when the copy is complete; a copy that fails leaves nothing behind.
[[nodiscard]] std::error_code MoveWithoutReplacing(const std::string& from, const std::string& to);

} // namespace velmora
