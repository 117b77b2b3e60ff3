#pragma once

#include "jet/base/value.h"

#include <chrono>
#include <string>

namespace jet {

/// The day that dates count from.
inline constexpr std::chrono::sys_days kDayZero{std::chrono::year{1899} / 12 / 30};
/// What the engine allows, as numbers of days.
inline constexpr double kFirstDay = -657'434; ///< 0100-01-01
inline constexpr double kEndDay = 2'958'466;  ///< 10000-01-01

/// "2024-03-05 14:07:09", to the nearest second. Days outside the years 100 to 9999 (what the engine allows) are shown
/// as their number.
[[nodiscard]] std::string DateText(DateTime date);

} // namespace jet
