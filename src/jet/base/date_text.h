#pragma once

#include "jet/base/value.h"

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace jet {

/// The day that dates count from.
inline constexpr std::chrono::sys_days kDayZero{std::chrono::year{1899} / 12 / 30};
/// What the engine allows, as numbers of days.
inline constexpr double kFirstDay = -657'434; ///< 0100-01-01
inline constexpr double kEndDay = 2'958'466;  ///< 10000-01-01

/// A time after the first day.
[[nodiscard]] inline DateTime DateOf(std::chrono::sys_days day, std::chrono::milliseconds timeOfDay)
{
    using DoubleDays = std::chrono::duration<double, std::chrono::days::period>;
    return {DoubleDays(day - kDayZero + timeOfDay).count()};
}

/// "2024-03-05 14:07:09", to the nearest second. Days outside the years 100 to 9999 (what the engine allows) are shown
/// as their number.
[[nodiscard]] std::string DateText(DateTime date);

/// The same as ISO 8601 writes it: "2024-03-05", with a time of day "2024-03-05T14:07:09". A value of a column that
/// holds times of day is "14:07:09" as long as it has no day.
[[nodiscard]] std::string IsoDateText(DateTime date, bool isTimeOfDay);

struct ParsedDate {
    DateTime date;
    bool hasZone = false; ///< a time zone was named, and left out: the time is the one that was written
};

/// A date, a time, or both with a blank or "T" between them; blanks around them are passed over. nullopt when it is
/// none of these.
///
/// Dates and times are those of ISO 8601: calendar, ordinal (2024-065) and week dates (2024-W10-2) and times, in their
/// extended and basic forms; a fraction of the last part of a time; 24:00 for the end of a day; "Z" or an offset
/// behind. What is not a whole day (2024-03) is no date. Besides, as people write them: 3/5/2024, month first, a year
/// of two digits lying between 1930 and 2029, and 2:07 PM.
[[nodiscard]] std::optional<ParsedDate> ParseDate(std::string_view text);

} // namespace jet
