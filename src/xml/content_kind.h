#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace velmora {

/// What one text is.
struct ContentKind {
    std::int32_t dataType = 0; ///< kNumericContent or kTextContent
    double size = 0;           ///< the value of a number, 0 for empty content; the length in characters of a text
};

/// White space around a number does not count, and nothing else is empty; a text's length is that of all of it.
[[nodiscard]] ContentKind ClassifyContent(std::string_view content) noexcept;

/// The value of a number written with digits, a leading sign, a decimal point and an exponent, whatever the locale;
/// nullopt for everything else, numbers beyond the range of a double among them.
[[nodiscard]] std::optional<double> ParseNumber(std::string_view text) noexcept;

/// Length of UTF-8 `text` in UTF-16 code units, as the database counts characters.
[[nodiscard]] std::size_t Utf16Length(std::string_view text) noexcept;

} // namespace velmora
