#include "jet/base/value_text.h"

#include "jet/base/byte_text.h"
#include "jet/base/date_text.h"
#include "jet/base/decimal.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <system_error>
#include <variant>

namespace jet {

namespace {

template <typename Number>
std::string Shortest(Number value)
{
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

/// One overload for each thing that a value can be.
struct TextOf {
    std::string operator()(Null) const { return {}; }
    std::string operator()(bool value) const { return value ? "True" : "False"; }
    std::string operator()(std::int32_t value) const { return std::to_string(value); }
    std::string operator()(float value) const { return Shortest(value); }
    std::string operator()(double value) const { return Shortest(value); }
    std::string operator()(Currency value) const
    {
        const bool negative = value.tenThousandths < 0;
        const auto bits = static_cast<std::uint64_t>(value.tenThousandths);
        const std::uint64_t magnitude = negative ? ~bits + 1 : bits;
        return DecimalText({negative,
                            {0, 0, static_cast<std::uint32_t>(magnitude >> 32), static_cast<std::uint32_t>(magnitude)},
                            Currency::kScale});
    }
    std::string operator()(DateTime value) const { return DateText(value); }
    std::string operator()(const std::string& value) const { return value; }
    std::string operator()(const Bytes& value) const { return HexText(value); }
    std::string operator()(const Guid& value) const
    {
        std::string text = HexText(value.bytes);
        for (const std::size_t at : {20, 16, 12, 8})
            text.insert(at, 1, '-');
        return "{" + text + "}";
    }
    std::string operator()(const Numeric& value) const
    {
        return DecimalText({value.negative, value.magnitude, value.scale});
    }
};

} // namespace

std::string ToText(const Value& value)
{
    return std::visit(TextOf{}, value);
}

std::string ToIsoText(const Value& value, bool isTimeOfDay)
{
    if (const auto* flag = std::get_if<bool>(&value))
        return *flag ? "true" : "false";
    if (const auto* date = std::get_if<DateTime>(&value))
        return IsoDateText(*date, isTimeOfDay);
    if (const auto* number = std::get_if<double>(&value)) {
        std::array<char, 64> text{};
        const auto [end, error] =
            std::to_chars(text.data(), text.data() + text.size(), *number, std::chars_format::fixed);
        if (error == std::errc{})
            return {text.data(), end};
    }
    return ToText(value);
}

} // namespace jet
