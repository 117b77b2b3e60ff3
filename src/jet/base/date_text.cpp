#include "jet/base/date_text.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace jet {

namespace {

constexpr long kSecondsPerDay = 86'400;

} // namespace

std::string DateText(DateTime date)
{
    std::array<char, 64> text{};
    if (!(date.days > kFirstDay - 1 && date.days < kEndDay)) {
        const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), date.days);
        return {text.data(), end};
    }
    double whole = 0;
    const double fraction = std::abs(std::modf(date.days, &whole));
    const long seconds = std::lround(fraction * kSecondsPerDay);
    const std::chrono::year_month_day day{
        kDayZero + std::chrono::days{static_cast<int>(whole) + (seconds == kSecondsPerDay ? 1 : 0)}};
    const long time = seconds % kSecondsPerDay;
    const int length = std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02ld:%02ld:%02ld",
                                     static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                                     static_cast<unsigned>(day.day()), time / 3600, time / 60 % 60, time % 60);
    return {text.data(), static_cast<std::size_t>(length)};
}

} // namespace jet
