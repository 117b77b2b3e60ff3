#pragma once

#include "jet/base/value.h"

#include <optional>
#include <string>
#include <string_view>

namespace jet {

/// "2024-03-05 14:07:09", to the nearest second. Days outside the years 100 to 9999 (what the engine allows) are shown
/// as their number.
[[nodiscard]] std::string DateText(DateTime date);

/// A date (2024-03-05 or 3/5/2024, month first; a year of two digits lies between 1930 and 2029), a time (14:07,
/// 14:07:09 or 2:07 PM), or both with a blank or "T" between them. nullopt when it is none of these; a time zone is
/// nothing that a column could hold, so a time with one is none either.
[[nodiscard]] std::optional<DateTime> ParseDate(std::string_view text);

} // namespace jet
