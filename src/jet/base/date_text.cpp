#include "jet/base/date_text.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace jet {

namespace {

constexpr std::chrono::sys_days kDayZero{std::chrono::year{1899} / 12 / 30};
constexpr double kFirstDay = -657'434; ///< 0100-01-01
constexpr double kEndDay = 2'958'466;  ///< 10000-01-01
constexpr long kSecondsPerDay = 86'400;

/// Takes a number of at most `maxDigits` digits off the front of `text`.
std::optional<int> TakeNumber(std::string_view& text, std::size_t maxDigits)
{
    int value = 0;
    const std::size_t length = std::min(text.size(), maxDigits);
    const auto [end, error] = std::from_chars(text.data(), text.data() + length, value);
    if (error != std::errc{} || value < 0)
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return value;
}

bool TakeChar(std::string_view& text, char c)
{
    if (!text.starts_with(c))
        return false;
    text.remove_prefix(1);
    return true;
}

/// The year that two digits stand for.
int FullYear(int digits)
{
    constexpr int kFirstOfLastCentury = 30;
    return digits + (digits < kFirstOfLastCentury ? 2000 : 1900);
}

/// The day, as its number, and takes it off `text`; nullopt, and `text` untouched, when it does not begin with one.
std::optional<double> TakeDay(std::string_view& text)
{
    std::string_view rest = text;
    const std::optional<int> first = TakeNumber(rest, 4);
    const char separator = rest.empty() ? '\0' : rest.front();
    if (!first || (separator != '-' && separator != '/') || !TakeChar(rest, separator))
        return std::nullopt;
    const std::optional<int> second = TakeNumber(rest, 2);
    if (!second || !TakeChar(rest, separator))
        return std::nullopt;
    const std::size_t yearAt = rest.size();
    const std::optional<int> third = TakeNumber(rest, 4);
    if (!third)
        return std::nullopt;

    const bool yearFirst = separator == '-';
    const bool isShort = !yearFirst && yearAt - rest.size() <= 2;
    const int year = yearFirst ? *first : isShort ? FullYear(*third) : *third;
    const int month = yearFirst ? *second : *first;
    const int day = yearFirst ? *third : *second;
    const std::chrono::year_month_day date{std::chrono::year{year}, std::chrono::month{static_cast<unsigned>(month)},
                                           std::chrono::day{static_cast<unsigned>(day)}};
    if (!date.ok() || year < 100)
        return std::nullopt;
    text = rest;
    return static_cast<double>((std::chrono::sys_days{date} - kDayZero).count());
}

/// Takes "AM" or "PM" off the end of `text`: is it PM?
std::optional<bool> TakeHalfOfDay(std::string_view& text)
{
    if (text.size() < 3 || (text.back() | 0x20) != 'm')
        return std::nullopt;
    const char half = static_cast<char>(text[text.size() - 2] | 0x20);
    if (half != 'a' && half != 'p')
        return std::nullopt;
    text.remove_suffix(2);
    if (text.back() == ' ')
        text.remove_suffix(1);
    return half == 'p';
}

/// The time of day as a part of it; all of `text`.
std::optional<double> ParseTime(std::string_view text)
{
    const std::optional<bool> afternoon = TakeHalfOfDay(text);
    std::optional<int> hours = TakeNumber(text, 2);
    if (afternoon && hours && *hours >= 1 && *hours <= 12)
        hours = *hours % 12 + (*afternoon ? 12 : 0);
    else if (afternoon)
        return std::nullopt;
    if (!hours || *hours > 23 || !TakeChar(text, ':'))
        return std::nullopt;
    const std::optional<int> minutes = TakeNumber(text, 2);
    if (!minutes || *minutes > 59)
        return std::nullopt;
    double seconds = 0;
    if (TakeChar(text, ':')) {
        const auto [end, error] =
            std::from_chars(text.data(), text.data() + text.size(), seconds, std::chars_format::fixed);
        if (error != std::errc{} || !(seconds >= 0 && seconds < 60))
            return std::nullopt;
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    }
    if (!text.empty())
        return std::nullopt;
    return (*hours * 3600.0 + *minutes * 60.0 + seconds) / kSecondsPerDay;
}

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

std::optional<DateTime> ParseDate(std::string_view text)
{
    const std::optional<double> day = TakeDay(text);
    if (day && text.empty())
        return DateTime{*day};
    if (day && !TakeChar(text, ' ') && !TakeChar(text, 'T'))
        return std::nullopt;
    const std::optional<double> time = ParseTime(text);
    if (!time)
        return std::nullopt;
    // The time counts forward also on days before the first.
    const double whole = day.value_or(0);
    return DateTime{whole < 0 ? whole - *time : whole + *time};
}

} // namespace jet
