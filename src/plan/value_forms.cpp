#include "plan/value_forms.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <optional>

namespace velmora {

namespace {

using namespace value_forms;

/// Digits that every double keeps.
constexpr std::size_t kMaxSignificant = 15;
/// Zeros behind the point with which a number of so many digits is still a normal double.
constexpr std::size_t kMaxZeros = 280;

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::size_t CountDigits(std::string_view text)
{
    return static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), IsDigit) - text.begin());
}

/// The number that `digits` digits at `at` are; nullopt when they are not all digits.
std::optional<int> NumberAt(std::string_view text, std::size_t at, std::size_t digits)
{
    int number = 0;
    for (const char c : text.substr(at, digits)) {
        if (!IsDigit(c))
            return std::nullopt;
        number = 10 * number + (c - '0');
    }
    return number;
}

/// "2024-03-05"
bool IsDay(std::string_view text)
{
    constexpr int kFirstYear = 100;
    if (text.size() != 10 || text[4] != '-' || text[7] != '-')
        return false;
    const std::optional<int> year = NumberAt(text, 0, 4);
    const std::optional<int> month = NumberAt(text, 5, 2);
    const std::optional<int> day = NumberAt(text, 8, 2);
    return year && month && day && *year >= kFirstYear &&
           std::chrono::year_month_day(std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                                       std::chrono::day(static_cast<unsigned>(*day)))
               .ok();
}

/// "14:07:09"
bool IsTime(std::string_view text)
{
    if (text.size() != 8 || text[2] != ':' || text[5] != ':')
        return false;
    const std::optional<int> hours = NumberAt(text, 0, 2);
    const std::optional<int> minutes = NumberAt(text, 3, 2);
    const std::optional<int> seconds = NumberAt(text, 6, 2);
    return hours && minutes && seconds && *hours <= 23 && *minutes <= 59 && *seconds <= 59;
}

bool IsDayWithTime(std::string_view text)
{
    constexpr std::size_t kDayLength = 10;
    return text.size() > kDayLength && text[kDayLength] == 'T' && IsDay(text.substr(0, kDayLength)) &&
           IsTime(text.substr(kDayLength + 1));
}

std::uint8_t FormOfNumber(std::string_view text)
{
    const bool isNegative = text.front() == '-';
    const std::string_view digits = text.substr(isNegative ? 1 : 0);
    const std::size_t whole = CountDigits(digits);
    if (whole == 0 || (whole > 1 && digits.front() == '0'))
        return kOther;
    if (whole == digits.size()) {
        std::int32_t value = 0;
        const bool isLong = std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc();
        return isLong && !(isNegative && value == 0) ? kWhole : kOther;
    }
    const std::string_view fraction = digits.substr(whole + 1);
    if (digits[whole] != '.' || fraction.empty() || CountDigits(fraction) != fraction.size())
        return kOther;
    const bool hasWhole = digits.front() != '0';
    const std::size_t zeros = hasWhole ? 0 : std::min(fraction.find_first_not_of('0'), fraction.size());
    const std::size_t significant = (hasWhole ? whole : 0) + fraction.size() - zeros;
    return significant <= kMaxSignificant && zeros <= kMaxZeros ? kPoint : kOther;
}

std::uint8_t FormsOf(ColumnType type)
{
    switch (type) {
    case ColumnType::YesNo:
        return kBoolean;
    case ColumnType::Long:
        return kWhole;
    case ColumnType::Double:
        return kWhole | kPoint;
    case ColumnType::Date:
        return kDay;
    case ColumnType::Time:
        return kTime;
    case ColumnType::Text:
    case ColumnType::Memo:
        break;
    }
    return 0xFF;
}

} // namespace

std::string_view NameOf(ColumnType type)
{
    switch (type) {
    case ColumnType::Text:
        return "Text";
    case ColumnType::Memo:
        return "Memo";
    case ColumnType::YesNo:
        return "Yes/No";
    case ColumnType::Long:
        return "Long Integer";
    case ColumnType::Double:
        return "Double";
    case ColumnType::Date:
    case ColumnType::Time:
        return "Date/Time";
    }
    return {};
}

std::uint8_t ValueFormOf(std::string_view value) noexcept
{
    const char first = value.front();
    if (first == 't' || first == 'f')
        return value == "true" || value == "false" ? kBoolean : kOther;
    if (first != '-' && !IsDigit(first))
        return kOther;
    if (IsDay(value) || IsDayWithTime(value))
        return kDay;
    return IsTime(value) ? kTime : FormOfNumber(value);
}

bool Fits(ColumnType type, std::string_view value) noexcept
{
    return (ValueFormOf(value) & FormsOf(type)) != 0;
}

ColumnType ValuesSeen::NarrowestType(std::int64_t records) const noexcept
{
    if (forms == 0)
        return ColumnType::Text;
    for (const ColumnType type : {ColumnType::Long, ColumnType::Double, ColumnType::Date, ColumnType::Time})
        if ((forms & ~FormsOf(type)) == 0)
            return type;
    return forms == kBoolean && count == records ? ColumnType::YesNo : ColumnType::Text;
}

} // namespace velmora
