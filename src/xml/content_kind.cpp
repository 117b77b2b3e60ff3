#include "xml/content_kind.h"

#include "platform/utf8.h"
#include "xml/structure_model.h"

#include <algorithm>
#include <charconv>

namespace velmora {

namespace {

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::string_view TakeDigits(std::string_view& text)
{
    const std::size_t count =
        static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), IsDigit) - text.begin());
    const std::string_view digits = text.substr(0, count);
    text.remove_prefix(count);
    return digits;
}

bool TakeSign(std::string_view& text)
{
    if (text.empty() || (text[0] != '+' && text[0] != '-'))
        return false;
    text.remove_prefix(1);
    return true;
}

/// The parts of a number as they are written.
struct Numeral {
    std::string_view whole, fraction, exponent;
    bool negativeExponent = false;
};

std::optional<Numeral> SplitNumeral(std::string_view text)
{
    Numeral numeral;
    TakeSign(text);
    numeral.whole = TakeDigits(text);
    if (!text.empty() && text[0] == '.') {
        text.remove_prefix(1);
        numeral.fraction = TakeDigits(text);
    }
    if (numeral.whole.empty() && numeral.fraction.empty())
        return std::nullopt;
    if (!text.empty() && (text[0] == 'e' || text[0] == 'E')) {
        text.remove_prefix(1);
        numeral.negativeExponent = !text.empty() && text[0] == '-';
        TakeSign(text);
        numeral.exponent = TakeDigits(text);
        if (numeral.exponent.empty())
            return std::nullopt;
    }
    return text.empty() ? std::optional(numeral) : std::nullopt;
}

/// Is a number that no double can hold too close to 0, rather than too large? Decided by its first digit's place.
bool IsTiny(const Numeral& numeral)
{
    constexpr std::size_t kMaxExponentDigits = 15; // outweighs every run of digits that fits into memory
    const std::size_t zeroDigits = std::min(numeral.exponent.find_first_not_of('0'), numeral.exponent.size());
    const std::string_view digits = numeral.exponent.substr(zeroDigits);
    if (digits.size() > kMaxExponentDigits)
        return numeral.negativeExponent;
    long long exponent = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), exponent);
    exponent = numeral.negativeExponent ? -exponent : exponent;
    const std::size_t leading = numeral.whole.find_first_not_of('0');
    if (leading != std::string_view::npos)
        return exponent + static_cast<long long>(numeral.whole.size() - leading) < 0;
    const std::size_t zeros = std::min(numeral.fraction.find_first_not_of('0'), numeral.fraction.size());
    return exponent - static_cast<long long>(zeros) < 0;
}

/// What most numbers are: a few digits, perhaps with a point among them, and nothing else.
std::optional<double> ParseShortNumber(std::string_view text)
{
    // A double holds every number of so many digits, and every power of ten that divides it here: the quotient is the
    // nearest double that there is.
    constexpr std::size_t kExactDigits = 15;
    static constexpr double kPowers[] = {1,   1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                         1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    if (text.empty() || text.size() > kExactDigits)
        return std::nullopt;
    std::int64_t value = 0;
    std::size_t point = text.size();
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsDigit(text[i]))
            value = 10 * value + (text[i] - '0');
        else if (text[i] == '.' && point == text.size() && text.size() > 1)
            point = i;
        else
            return std::nullopt;
    }
    const std::size_t decimals = point == text.size() ? 0 : text.size() - point - 1;
    return static_cast<double>(value) / kPowers[decimals];
}

} // namespace

std::optional<double> ParseNumber(std::string_view text) noexcept
{
    const std::optional<Numeral> numeral = SplitNumeral(text);
    if (!numeral)
        return std::nullopt;
    if (text[0] == '+') // which from_chars does not take
        text.remove_prefix(1);
    double value = 0;
    if (std::from_chars(text.data(), text.data() + text.size(), value).ec == std::errc())
        return value;
    return IsTiny(*numeral) ? std::optional(0.0) : std::nullopt;
}

std::size_t Utf16Length(std::string_view text) noexcept
{
    std::size_t units = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        units += (byte & 0xC0) != 0x80; // every character once, at its first byte
        units += byte >= 0xF0;          // and those outside the basic plane as two surrogates
    }
    return units;
}

ContentKind ClassifyContent(std::string_view content) noexcept
{
    if (const std::optional<double> value = ParseShortNumber(content))
        return {kNumericContent, *value};
    const std::string_view trimmed = TrimWhiteSpace(content);
    if (trimmed.empty())
        return {kNumericContent, 0};
    if (const std::optional<double> value = ParseNumber(trimmed))
        return {kNumericContent, *value};
    return {kTextContent, static_cast<double>(Utf16Length(content))};
}

} // namespace velmora
