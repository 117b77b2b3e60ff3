#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace jet {

/// Decimal numbers of up to 128 bits, exact: what currency and numeric columns hold.
struct Decimal {
    bool negative = false;
    std::array<std::uint32_t, 4> magnitude{}; ///< most significant first; the value is magnitude / 10^scale
    unsigned scale = 0;
};

/// `text` (sign, digits, decimal point, exponent; nothing else) with `scale` digits behind the point, half rounded away
/// from zero. nullopt when it is no number or needs more than 128 bits.
[[nodiscard]] std::optional<Decimal> ParseDecimal(std::string_view text, unsigned scale);

/// Digits with a point where it belongs, without zeros at the end of the fraction.
[[nodiscard]] std::string DecimalText(const Decimal& value);

/// The number of decimal digits of the magnitude; 0 has none.
[[nodiscard]] unsigned DigitCount(const Decimal& value);

} // namespace jet
