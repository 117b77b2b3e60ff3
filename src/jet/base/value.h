#pragma once

#include "jet/base/bytes.h"

#include <array>
#include <compare>
#include <cstdint>
#include <string>
#include <variant>

namespace jet {

/// Column types; the numbers are those of the file.
enum class ColumnType : std::uint8_t {
    Boolean = 1, ///< has no bytes: its value is its bit of the row's null mask
    Byte = 2,
    Integer = 3,
    Long = 4,
    Currency = 5, ///< 64 bits, in ten-thousandths
    Single = 6,
    Double = 7,
    DateTime = 8, ///< a double, see DateTime
    Binary = 9,   ///< up to 510 bytes
    Text = 10,
    Ole = 11,  ///< a long value of bytes
    Memo = 12, ///< a long value of text
    Guid = 15,
    Numeric = 16,     ///< Jet 4: up to 28 digits
    FixedBinary = 17, ///< in a system table of Access's only
};

[[nodiscard]] constexpr bool IsLongValue(ColumnType type) noexcept
{
    return type == ColumnType::Ole || type == ColumnType::Memo;
}

using Null = std::monostate;

struct Currency {
    std::int64_t tenThousandths = 0;
    auto operator<=>(const Currency&) const = default;
};

/// Days since 1899-12-30; the fraction is the time of day and counts forward also for negative days.
struct DateTime {
    double days = 0;
    auto operator<=>(const DateTime&) const = default;
};

struct Guid {
    std::array<Byte, 16> bytes{}; ///< in the order of the text form
    auto operator<=>(const Guid&) const = default;
};

struct Numeric {
    bool negative = false;
    std::array<std::uint32_t, 4> magnitude{}; ///< most significant first; the value is magnitude / 10^scale
    std::uint8_t scale = 0;
    auto operator<=>(const Numeric&) const = default;
};

/// One field's content. Byte, Integer and Long are std::int32_t; Single is float, Double is double; Text and Memo are
/// UTF-8 (an unpaired surrogate as its three-byte form, so that every value comes back as it was); Binary and Ole are
/// Bytes.
using Value =
    std::variant<Null, bool, std::int32_t, float, double, Currency, DateTime, std::string, Bytes, Guid, Numeric>;

[[nodiscard]] inline bool IsNull(const Value& value) noexcept
{
    return std::holds_alternative<Null>(value);
}

} // namespace jet
