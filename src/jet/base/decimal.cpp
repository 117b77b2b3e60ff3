#include "jet/base/decimal.h"

#include <algorithm>
#include <charconv>

namespace jet {

namespace {

using Magnitude = std::array<std::uint32_t, 4>;

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// False when the result does not fit.
bool MultiplyAdd(Magnitude& magnitude, std::uint32_t factor, std::uint32_t addend)
{
    std::uint64_t carry = addend;
    for (std::size_t i = magnitude.size(); i-- > 0;) {
        carry += std::uint64_t{magnitude[i]} * factor;
        magnitude[i] = static_cast<std::uint32_t>(carry);
        carry >>= 32;
    }
    return carry == 0;
}

/// Divides by 10 and gives the remainder.
unsigned TakeDigit(Magnitude& magnitude)
{
    std::uint64_t rest = 0;
    for (std::uint32_t& word : magnitude) {
        rest = rest << 32 | word;
        word = static_cast<std::uint32_t>(rest / 10);
        rest %= 10;
    }
    return static_cast<unsigned>(rest);
}

/// A number's text in its parts: digits without the point, and the power of ten of the last of them.
struct Parts {
    bool negative = false;
    std::string digits;
    long exponent = 0;
};

std::optional<Parts> Split(std::string_view text)
{
    Parts parts;
    std::size_t at = 0;
    if (at < text.size() && (text[at] == '-' || text[at] == '+'))
        parts.negative = text[at++] == '-';
    while (at < text.size() && IsDigit(text[at]))
        parts.digits += text[at++];
    if (at < text.size() && text[at] == '.')
        for (++at; at < text.size() && IsDigit(text[at]); --parts.exponent)
            parts.digits += text[at++];
    if (parts.digits.empty())
        return std::nullopt;
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        at += at + 1 < text.size() && text[at + 1] == '+' ? 2 : 1;
        int exponent = 0;
        const auto [end, error] = std::from_chars(text.data() + at, text.data() + text.size(), exponent);
        if (error != std::errc{})
            return std::nullopt;
        at = static_cast<std::size_t>(end - text.data());
        parts.exponent += exponent;
    }
    if (at != text.size())
        return std::nullopt;
    parts.digits.erase(0, std::min(parts.digits.find_first_not_of('0'), parts.digits.size()));
    return parts;
}

} // namespace

std::optional<Decimal> ParseDecimal(std::string_view text, unsigned scale)
{
    const std::optional<Parts> parts = Split(text);
    if (!parts)
        return std::nullopt;
    constexpr long kMaxDigits = 39; // of 128 bits
    Decimal value{.negative = parts->negative, .magnitude = {}, .scale = scale};
    // How many of the digits stay; more than there are means zeros to append.
    const long kept = static_cast<long>(parts->digits.size()) + parts->exponent + static_cast<long>(scale);
    // Fewer than no digits stay: not even the first one is near enough to be rounded up.
    if (parts->digits.empty() || kept < 0)
        return Decimal{.negative = false, .magnitude = {}, .scale = scale};
    if (kept > kMaxDigits)
        return std::nullopt;
    for (long i = 0; i < kept; ++i) {
        const auto at = static_cast<std::size_t>(i);
        const char digit = at < parts->digits.size() ? parts->digits[at] : '0';
        if (!MultiplyAdd(value.magnitude, 10, static_cast<std::uint32_t>(digit - '0')))
            return std::nullopt;
    }
    const auto next = static_cast<std::size_t>(kept);
    if (next < parts->digits.size() && parts->digits[next] >= '5' && !MultiplyAdd(value.magnitude, 1, 1))
        return std::nullopt;
    // Zero has no sign: "-0.001" with two digits is 0, and must have the same key in an index as every other zero.
    value.negative = value.negative && value.magnitude != Magnitude{};
    return value;
}

std::string DecimalText(const Decimal& value)
{
    std::string reversed;
    Magnitude rest = value.magnitude;
    for (unsigned i = 0; i <= value.scale || rest != Magnitude{}; ++i) {
        if (i == value.scale && i > 0 && !reversed.empty())
            reversed += '.';
        const unsigned digit = TakeDigit(rest);
        if (i >= value.scale || digit != 0 || !reversed.empty())
            reversed += static_cast<char>('0' + digit);
    }
    if (value.negative)
        reversed += '-';
    return {reversed.rbegin(), reversed.rend()};
}

/// What a column's precision limits. Digits behind the point count, zeros in front do not.
unsigned DigitCount(const Decimal& value)
{
    unsigned count = 0;
    for (Magnitude rest = value.magnitude; rest != Magnitude{}; ++count)
        static_cast<void>(TakeDigit(rest));
    return count;
}

} // namespace jet
