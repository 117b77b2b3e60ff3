#pragma once

#include <string>
#include <string_view>

namespace velmora {

/// `text` with every control character but tab and line feed replaced by "?": names from a document or a folder must
/// not steer the terminal. Carriage returns in front of line feeds go.
[[nodiscard]] std::string Printable(std::string_view text);

} // namespace velmora
