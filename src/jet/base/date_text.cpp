#include "jet/base/date_text.h"

#include "jet/base/text_codec.h"

#include <algorithm>
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
    // modf cuts towards zero, so the fraction, made positive, is the time of day for days before day zero as well.
    // Rounded to seconds it may be a whole day, which belongs to the date.
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

std::string IsoDateText(DateTime date, bool isTimeOfDay)
{
    constexpr std::size_t kDayLength = 10; // "2024-03-05"
    constexpr std::string_view kMidnight = " 00:00:00";
    std::string text = DateText(date);
    if (text.size() != kDayLength + kMidnight.size())
        return text; // outside the years
    if (isTimeOfDay && std::abs(date.days) < 1)
        return text.substr(kDayLength + 1);
    if (text.ends_with(kMidnight))
        return text.substr(0, kDayLength);
    text[kDayLength] = 'T';
    return text;
}

namespace {

using std::chrono::sys_days;
using std::chrono::year;

constexpr int kFirstYear = 100;
constexpr double kSecondsPerHour = 3600;

std::size_t CountDigits(std::string_view text)
{
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), isDigit) - text.begin());
}

/// Takes a number of at most `maxDigits` digits off the front of `text`.
std::optional<int> TakeNumber(std::string_view& text, std::size_t maxDigits)
{
    const std::size_t length = std::min(CountDigits(text), maxDigits);
    int value = 0;
    if (length == 0 || std::from_chars(text.data(), text.data() + length, value).ec != std::errc{})
        return std::nullopt;
    text.remove_prefix(length);
    return value;
}

/// Takes a number of exactly `digits` digits.
std::optional<int> TakeDigits(std::string_view& text, std::size_t digits)
{
    return CountDigits(text) < digits ? std::nullopt : TakeNumber(text, digits);
}

bool TakeChar(std::string_view& text, char c)
{
    if (!text.starts_with(c))
        return false;
    text.remove_prefix(1);
    return true;
}

// ---- Days -----------------------------------------------------------------------------------------------------------

std::optional<sys_days> CalendarDay(int years, int month, int day)
{
    const std::chrono::year_month_day date{year{years}, std::chrono::month{static_cast<unsigned>(month)},
                                           std::chrono::day{static_cast<unsigned>(day)}};
    return date.ok() && years >= kFirstYear ? std::optional(sys_days{date}) : std::nullopt;
}

std::optional<sys_days> OrdinalDay(int years, int day)
{
    const sys_days date = sys_days{year{years} / 1 / 1} + std::chrono::days{day - 1};
    return day >= 1 && date < sys_days{year{years + 1} / 1 / 1} && years >= kFirstYear ? std::optional(date)
                                                                                       : std::nullopt;
}

/// The first week is the one with 4 January in it, its first day a Monday.
sys_days FirstMonday(int years)
{
    const sys_days inFirstWeek{year{years} / 1 / 4};
    return inFirstWeek - (std::chrono::weekday{inFirstWeek} - std::chrono::Monday);
}

std::optional<sys_days> WeekDay(int years, int week, int day)
{
    const sys_days monday = FirstMonday(years) + std::chrono::weeks{week - 1};
    if (years < kFirstYear || week < 1 || monday >= FirstMonday(years + 1) || day < 1 || day > 7)
        return std::nullopt;
    return monday + std::chrono::days{day - 1};
}

/// "065", "W10-2", "W102", "0305": what follows four digits of a year, and "-" or not.
std::optional<sys_days> TakeIsoDayOfYear(std::string_view& text, int years, bool isExtended)
{
    if (TakeChar(text, 'W')) {
        const std::optional<int> week = TakeDigits(text, 2);
        if (!week || (isExtended && !TakeChar(text, '-')))
            return std::nullopt;
        const std::optional<int> day = TakeDigits(text, 1);
        return day ? WeekDay(years, *week, *day) : std::nullopt;
    }
    const std::size_t digits = CountDigits(text);
    if (digits == 3)
        return OrdinalDay(years, *TakeDigits(text, 3));
    if (isExtended || digits != 4)
        return std::nullopt;
    const int month = *TakeDigits(text, 2);
    return CalendarDay(years, month, *TakeDigits(text, 2));
}

/// The year that two digits stand for.
int FullYear(int digits)
{
    constexpr int kFirstOfLastCentury = 30;
    return digits + (digits < kFirstOfLastCentury ? 2000 : 1900);
}

/// 2024-3-5, 3/5/2024, 3/5/24.
std::optional<sys_days> TakeThreeNumbers(std::string_view& text)
{
    const std::optional<int> first = TakeNumber(text, 4);
    const char separator = text.empty() ? '\0' : text.front();
    if (!first || (separator != '-' && separator != '/') || !TakeChar(text, separator))
        return std::nullopt;
    const std::optional<int> second = TakeNumber(text, 2);
    if (!second || !TakeChar(text, separator))
        return std::nullopt;
    const bool isYearFirst = separator == '-';
    const std::size_t digits = CountDigits(text);
    const std::optional<int> third = TakeNumber(text, isYearFirst ? 2 : 4);
    if (!third)
        return std::nullopt;
    if (isYearFirst)
        return CalendarDay(*first, *second, *third);
    return CalendarDay(digits <= 2 ? FullYear(*third) : *third, *first, *second);
}

/// The day that `text` begins with, and takes it off; nullopt, and `text` untouched, when it does not begin with one.
std::optional<sys_days> TakeDay(std::string_view& text)
{
    std::string_view rest = text;
    std::optional<sys_days> day;
    if (const std::optional<int> years = TakeDigits(rest, 4)) {
        const bool isExtended = TakeChar(rest, '-');
        day = TakeIsoDayOfYear(rest, *years, isExtended);
    }
    if (!day) {
        rest = text;
        day = TakeThreeNumbers(rest);
    }
    if (day)
        text = rest;
    return day;
}

// ---- Times ----------------------------------------------------------------------------------------------------------

/// Takes ".5" or ",5"; 0 when there is none, nullopt when no digit follows the mark.
std::optional<double> TakeFraction(std::string_view& text)
{
    constexpr std::size_t kMostDigits = 15; // as many as a double keeps
    if (!TakeChar(text, '.') && !TakeChar(text, ','))
        return 0;
    const std::size_t digits = CountDigits(text);
    if (digits == 0)
        return std::nullopt;
    double value = 0;
    double scale = 1;
    for (const char digit : text.substr(0, std::min(digits, kMostDigits))) {
        value = 10 * value + (digit - '0');
        scale *= 10;
    }
    text.remove_prefix(digits);
    return value / scale;
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

/// Takes "Z", "+01", "-0530" or "+01:00" off the end of a date or time.
bool TakeZone(std::string_view& text)
{
    if (text.ends_with('Z')) {
        text.remove_suffix(1);
        return true;
    }
    const std::size_t sign = text.find_last_of("+-");
    if (sign == std::string_view::npos)
        return false;
    std::string_view offset = text.substr(sign + 1);
    const std::optional<int> hours = TakeDigits(offset, 2);
    std::optional<int> minutes = 0;
    if (hours && !offset.empty()) {
        TakeChar(offset, ':');
        minutes = TakeDigits(offset, 2);
    }
    if (!hours || *hours > 23 || !minutes || *minutes > 59 || !offset.empty())
        return false;
    text = text.substr(0, sign);
    return true;
}

/// The seconds since midnight, up to a whole day; all of `text`, which has no zone any more. `isMarked`: "T" stood
/// before it, so that it may also be written without colons, or be an hour alone.
std::optional<double> ParseTime(std::string_view text, bool isMarked)
{
    const std::optional<bool> afternoon = TakeHalfOfDay(text);
    const bool isBasic = isMarked && text.find(':') == std::string_view::npos;
    const auto takeNext = [&]() -> std::optional<int> { return isBasic ? TakeDigits(text, 2) : TakeNumber(text, 2); };
    const auto hasNext = [&] { return isBasic ? CountDigits(text) > 0 : TakeChar(text, ':'); };

    std::optional<int> hours = takeNext();
    if (afternoon && hours && *hours >= 1 && *hours <= 12)
        hours = *hours % 12 + (*afternoon ? 12 : 0);
    else if (afternoon)
        return std::nullopt;
    if (!hours)
        return std::nullopt;
    double seconds = *hours * kSecondsPerHour;
    double unit = kSecondsPerHour; // of the last part, in seconds
    for (int part = 1; part <= 2 && hasNext(); ++part) {
        const std::optional<int> number = takeNext();
        if (!number || *number > 59)
            return std::nullopt;
        unit /= 60;
        seconds += *number * unit;
    }
    const std::optional<double> fraction = TakeFraction(text);
    if (!fraction || !text.empty() || (unit == kSecondsPerHour && !isMarked))
        return std::nullopt;
    // An hour was not looked at yet: 24:00 is allowed, and nothing behind it.
    seconds += *fraction * unit;
    return seconds <= kSecondsPerDay ? std::optional(seconds) : std::nullopt;
}

/// The times of the first day have numbers down to that of the day before, as they count away from zero.
bool IsInRange(DateTime date)
{
    return date.days > kFirstDay - 1 && date.days < kEndDay;
}

} // namespace

std::optional<ParsedDate> ParseDate(std::string_view text)
{
    text = TrimBlanks(text);
    const std::optional<sys_days> day = TakeDay(text);
    const double whole = day ? static_cast<double>((*day - kDayZero).count()) : 0;
    // Only now that the day is off: the hyphens in it are no signs of an offset.
    ParsedDate parsed{{whole}, TakeZone(text)};
    if (!day || !text.empty()) {
        const bool isMarked = TakeChar(text, 'T');
        if (day && !isMarked && !TakeChar(text, ' '))
            return std::nullopt;
        const std::optional<double> seconds = ParseTime(text, isMarked);
        if (!seconds)
            return std::nullopt;
        const double time = *seconds / kSecondsPerDay;
        if (time == 1) // the end of a day is the beginning of the next; without a day it is midnight
            parsed.date.days = day ? whole + 1 : 0;
        else // the time counts forward also on days before the first
            parsed.date.days = whole < 0 ? whole - time : whole + time;
    }
    return IsInRange(parsed.date) ? std::optional(parsed) : std::nullopt;
}

} // namespace jet
