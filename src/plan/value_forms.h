#pragma once

#include <cstdint>
#include <string_view>

namespace velmora {

/// What a column can be. Dates and times of day are one type to the database; what they are written like tells them
/// apart.
enum class ColumnType : std::uint8_t { Text, Memo, YesNo, Long, Double, Date, Time };

/// As people know it: "Date/Time".
[[nodiscard]] std::string_view NameOf(ColumnType type);
/// Is it none of the texts?
[[nodiscard]] constexpr bool IsTyped(ColumnType type) noexcept
{
    return type != ColumnType::Text && type != ColumnType::Memo;
}

/// The forms in which values are written, each a bit. From a value of each form but Other its text can be made again,
/// up to zeros behind the point and a midnight behind a day.
namespace value_forms {
inline constexpr std::uint8_t kBoolean = 0x01; ///< true, false
inline constexpr std::uint8_t kWhole = 0x02;   ///< -?(0|[1-9][0-9]*), 32 bits, not -0
inline constexpr std::uint8_t kPoint = 0x04;   ///< -?(0|[1-9][0-9]*)\.[0-9]+, at most 15 significant digits
inline constexpr std::uint8_t kDay = 0x08;     ///< XML Schema's date, or dateTime with neither zone nor fraction
inline constexpr std::uint8_t kTime = 0x10;    ///< XML Schema's time, likewise
inline constexpr std::uint8_t kOther = 0x20;
} // namespace value_forms

/// The form of a value, which is not empty.
[[nodiscard]] std::uint8_t ValueFormOf(std::string_view value) noexcept;

/// Is a value of this form no other one when it has become one of the type and is read back?
[[nodiscard]] bool Fits(ColumnType type, std::string_view value) noexcept;

/// What the values of one column are like, all over a document.
struct ValuesSeen {
    std::uint8_t forms = 0;
    std::int64_t count = 0;

    void Add(std::string_view value) noexcept
    {
        ++count;
        if ((forms & value_forms::kOther) == 0)
            forms |= ValueFormOf(value);
    }
    void Add(const ValuesSeen& others) noexcept
    {
        forms |= others.forms;
        count += others.count;
    }
    /// The narrowest type that all of them fit. `records`: so many records could have one; a Yes/No column cannot tell
    /// which have none.
    [[nodiscard]] ColumnType NarrowestType(std::int64_t records) const noexcept;
};

} // namespace velmora
