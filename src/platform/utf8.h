#pragma once

#include <cstddef>
#include <string_view>

namespace velmora {

/// The longest beginning of `text` that has at most `maxBytes` bytes and ends with a whole character.
[[nodiscard]] std::string_view CutUtf8(std::string_view text, std::size_t maxBytes) noexcept;

/// Number of characters (code points) in `text`.
[[nodiscard]] std::size_t CountCharacters(std::string_view text) noexcept;

/// `text` without a UTF-8 byte order mark at its beginning.
[[nodiscard]] std::string_view WithoutByteOrderMark(std::string_view text) noexcept;

} // namespace velmora
