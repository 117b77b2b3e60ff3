#pragma once

#include <string_view>

namespace velmora {

/// `text` (UTF-8) without the white space at both ends: blanks of every kind that Unicode knows, line ends and tabs
/// among them.
[[nodiscard]] std::string_view TrimWhiteSpace(std::string_view text) noexcept;

} // namespace velmora
