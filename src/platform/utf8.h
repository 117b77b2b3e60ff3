#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velmora {

/// The longest beginning of `text` that has at most `maxBytes` bytes and ends with a whole character.
[[nodiscard]] std::string_view CutUtf8(std::string_view text, std::size_t maxBytes) noexcept;

/// Number of characters (code points) in `text`.
[[nodiscard]] std::size_t CountCharacters(std::string_view text) noexcept;

inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF"; ///< in UTF-8

/// `text` without a UTF-8 byte order mark at its beginning.
[[nodiscard]] std::string_view WithoutByteOrderMark(std::string_view text) noexcept;

/// `text` (UTF-8) without the white space at both ends: blanks of every kind that Unicode knows, line ends and tabs
/// among them.
[[nodiscard]] std::string_view TrimWhiteSpace(std::string_view text) noexcept;

} // namespace velmora
