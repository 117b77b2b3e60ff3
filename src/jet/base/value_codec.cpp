#include "jet/base/value_codec.h"

#include "jet/base/byte_text.h"
#include "jet/base/date_text.h"
#include "jet/base/decimal.h"
#include "jet/base/error.h"
#include "jet/base/text_codec.h"
#include "jet/base/value_text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

/// Values on their way into columns are converted as a provider does it, not as C++ would: halves are rounded to the
/// even neighbour, a number that does not fit is refused (WrongType) and never wraps, and a text becomes a number only
/// when all of it is one. Text becomes currency or a numeric by way of Decimal, never of a double: 0.1 has no exact
/// one.
namespace jet {

namespace {

constexpr std::size_t kGuidSize = 16;
constexpr std::size_t kNumericSize = 17;
constexpr Byte kNumericNegative = 0x80;
/// Where the bytes of a GUID's text form stand in its stored form: u32, u16, u16 little-endian, then as printed.
constexpr std::array<std::size_t, kGuidSize> kGuidOrder{3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};

[[noreturn]] void ThrowWrongType()
{
    throw Error(ErrorNumber::WrongType);
}

template <typename Number>
std::optional<Number> ParseNumber(std::string_view text)
{
    if (text.starts_with('+') && !text.starts_with("+-"))
        text.remove_prefix(1);
    Number value{};
    // from_chars knows no plus sign, and people do write one.
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

/// A finite number.
double ParseDouble(std::string_view text)
{
    const std::optional<double> value = ParseNumber<double>(text);
    if (!value || !std::isfinite(*value))
        ThrowWrongType();
    return *value;
}

/// `value` as a whole number of type Whole, half rounded to even.
template <typename Whole>
Whole Round(double value)
{
    // The upper bound is compared by max() + 1, a power of two that a double holds exactly, as it may not hold max().
    const double rounded = std::nearbyint(value);
    if (!(rounded >= static_cast<double>(std::numeric_limits<Whole>::min()) &&
          rounded < static_cast<double>(std::numeric_limits<Whole>::max()) + 1))
        ThrowWrongType();
    return static_cast<Whole>(rounded);
}

/// Any value that is a number in itself.
double DoubleOf(const Value& value)
{
    if (const auto* number = std::get_if<double>(&value))
        return *number;
    if (const auto* number = std::get_if<float>(&value))
        return double{*number};
    if (const auto* number = std::get_if<std::int32_t>(&value))
        return *number;
    if (const auto* number = std::get_if<Currency>(&value))
        return static_cast<double>(number->tenThousandths) / 10'000;
    if (const auto* date = std::get_if<DateTime>(&value))
        return date->days;
    if (const auto* flag = std::get_if<bool>(&value))
        return *flag ? -1 : 0; // True has all bits set
    if (const auto* number = std::get_if<Numeric>(&value))
        return ParseDouble(DecimalText({number->negative, number->magnitude, number->scale}));
    ThrowWrongType();
}

template <typename Whole>
Whole WholeOf(const Value& value)
{
    if (const auto* number = std::get_if<std::int32_t>(&value)) {
        if (*number < std::numeric_limits<Whole>::min() || *number > std::numeric_limits<Whole>::max())
            ThrowWrongType();
        return static_cast<Whole>(*number);
    }
    return Round<Whole>(DoubleOf(value));
}

float SingleOf(const Value& value)
{
    if (const auto* number = std::get_if<float>(&value))
        return *number;
    // Infinity may pass where it came in; a finite number must not become it.
    const double wide = DoubleOf(value);
    if (std::isfinite(wide) && std::abs(wide) > std::numeric_limits<float>::max())
        ThrowWrongType();
    return static_cast<float>(wide);
}

/// Of 128 bits the upper 64 must be empty, and of the others the lowest number has no positive twin.
Currency CurrencyFrom(const Decimal& decimal)
{
    const std::uint64_t magnitude = std::uint64_t{decimal.magnitude[2]} << 32 | decimal.magnitude[3];
    const std::uint64_t limit = std::uint64_t{1} << 63;
    if (decimal.magnitude[0] != 0 || decimal.magnitude[1] != 0 || magnitude > limit - (decimal.negative ? 0 : 1))
        ThrowWrongType();
    return {static_cast<std::int64_t>(decimal.negative ? ~magnitude + 1 : magnitude)};
}

Currency CurrencyOf(const Value& value)
{
    if (const auto* currency = std::get_if<Currency>(&value))
        return *currency;
    if (const auto* number = std::get_if<std::int32_t>(&value))
        return {std::int64_t{*number} * 10'000};
    return {Round<std::int64_t>(DoubleOf(value) * 10'000)};
}

Decimal ParseDecimalOrThrow(std::string_view text, unsigned scale)
{
    const std::optional<Decimal> decimal = ParseDecimal(text, scale);
    if (!decimal)
        ThrowWrongType();
    return *decimal;
}

bool ParseBoolean(std::string_view text)
{
    const auto is = [text](std::string_view word) {
        return std::ranges::equal(text, word, [](char a, char b) { return (a | 0x20) == b; });
    };
    if (is("true"))
        return true;
    return !is("false") && ParseDouble(text) != 0;
}

template <typename Unsigned>
void AppendInteger(Bytes& out, Unsigned value)
{
    for (std::size_t i = 0; i < sizeof value; ++i)
        out.push_back(static_cast<Byte>(value >> 8 * i));
}

void AppendDouble(Bytes& out, double value)
{
    AppendInteger(out, std::bit_cast<std::uint64_t>(value));
}

void AppendGuid(Bytes& out, const Guid& guid)
{
    for (const std::size_t from : kGuidOrder)
        out.push_back(guid.bytes[from]);
}

void AppendNumeric(Bytes& out, const ValueType& type, const Value& value)
{
    Decimal decimal;
    if (const auto* numeric = std::get_if<Numeric>(&value)) {
        decimal = {numeric->negative, numeric->magnitude, numeric->scale};
        if (decimal.scale != type.scale)
            decimal = ParseDecimalOrThrow(DecimalText(decimal), type.scale);
    } else {
        // By way of the text, which of a double is the shortest that reads back: 0.1 is meant as one tenth, not as the
        // number next to it that a double can hold.
        decimal = ParseDecimalOrThrow(ToText(value), type.scale);
    }
    if (type.precision != 0 && DigitCount(decimal) > type.precision)
        ThrowWrongType();
    out.push_back(decimal.negative ? kNumericNegative : 0);
    for (const std::uint32_t word : decimal.magnitude)
        AppendInteger(out, word);
}

constexpr std::string_view kZeroFiller{"\0", 1};

std::string_view BlankOf(const Format& format)
{
    return {" \0", format.textUnitSize};
}

/// Makes of what `out` has from `begin` on a value of the column's whole size, if the column wants that.
void FillFrom(Bytes& out, std::size_t begin, const ValueType& type, std::string_view filler)
{
    if (!type.filled)
        return;
    while (out.size() - begin + filler.size() <= type.sizeBytes)
        out.insert(out.end(), filler.begin(), filler.end());
}

void AppendBinary(Bytes& out, const ValueType& type, const Value& value)
{
    const auto* bytes = std::get_if<Bytes>(&value);
    if (bytes == nullptr)
        ThrowWrongType();
    if (type.type != ColumnType::Ole && bytes->size() > type.sizeBytes)
        throw Error(ErrorNumber::FieldTooSmall);
    const std::size_t begin = out.size();
    AppendBytes(out, *bytes);
    FillFrom(out, begin, type, kZeroFiller);
}

void AppendTextValue(Bytes& out, const Format& format, const ValueType& type, std::string_view utf8)
{
    // No text has more characters than bytes, so most need no counting.
    const std::size_t maxUnits = type.sizeBytes / format.textUnitSize;
    if (type.type == ColumnType::Text && utf8.size() > maxUnits && Utf16Length(utf8) > maxUnits)
        throw Error(ErrorNumber::FieldTooSmall);
    const std::size_t begin = out.size();
    AppendText(out, format, utf8, type.compressed);
    FillFrom(out, begin, type, BlankOf(format));
}

ByteSpan Exactly(ByteSpan stored, std::size_t size)
{
    if (stored.size() != size)
        throw CorruptValue("A value of " + std::to_string(size) + " bytes is stored in " +
                           std::to_string(stored.size()));
    return stored;
}

Guid DecodeGuid(ByteSpan stored)
{
    Guid guid;
    for (std::size_t i = 0; i < kGuidSize; ++i)
        guid.bytes[kGuidOrder[i]] = stored[i];
    return guid;
}

Numeric DecodeNumeric(ByteSpan stored, std::uint8_t scale)
{
    Numeric numeric{.negative = (stored[0] & kNumericNegative) != 0, .magnitude = {}, .scale = scale};
    for (std::size_t i = 0; i < numeric.magnitude.size(); ++i)
        numeric.magnitude[i] = LoadU32(stored, 1 + 4 * i);
    return numeric;
}

} // namespace

void EncodeValue(Bytes& out, const Format& format, const ValueType& type, const Value& value)
{
    if (const auto* text = std::get_if<std::string>(&value)) {
        EncodeText(out, format, type, *text);
        return;
    }
    switch (type.type) {
    case ColumnType::Byte:
        out.push_back(WholeOf<std::uint8_t>(value));
        return;
    case ColumnType::Integer:
        AppendInteger(out, static_cast<std::uint16_t>(WholeOf<std::int16_t>(value)));
        return;
    case ColumnType::Long:
        AppendInteger(out, static_cast<std::uint32_t>(WholeOf<std::int32_t>(value)));
        return;
    case ColumnType::Currency:
        AppendInteger(out, static_cast<std::uint64_t>(CurrencyOf(value).tenThousandths));
        return;
    case ColumnType::Single:
        AppendInteger(out, std::bit_cast<std::uint32_t>(SingleOf(value)));
        return;
    case ColumnType::Double:
    case ColumnType::DateTime:
        AppendDouble(out, DoubleOf(value));
        return;
    case ColumnType::Binary:
    case ColumnType::Ole:
    case ColumnType::FixedBinary:
        AppendBinary(out, type, value);
        return;
    case ColumnType::Text:
    case ColumnType::Memo:
        AppendTextValue(out, format, type, ToText(value));
        return;
    case ColumnType::Guid:
        if (const auto* guid = std::get_if<Guid>(&value)) {
            AppendGuid(out, *guid);
            return;
        }
        break;
    case ColumnType::Numeric:
        AppendNumeric(out, type, value);
        return;
    case ColumnType::Boolean:
        break;
    }
    ThrowWrongType();
}

void EncodeText(Bytes& out, const Format& format, const ValueType& type, std::string_view utf8)
{
    if (IsText(type.type))
        AppendTextValue(out, format, type, utf8);
    else
        EncodeValue(out, format, type, ParseText(type, utf8));
}

Value ParseText(const ValueType& type, std::string_view utf8)
{
    const std::string_view text = TrimBlanks(utf8);
    switch (type.type) {
    case ColumnType::Text:
    case ColumnType::Memo:
        return std::string(utf8);
    case ColumnType::Boolean:
        return ParseBoolean(text);
    case ColumnType::Byte:
    case ColumnType::Integer:
    case ColumnType::Long:
        if (const std::optional<std::int32_t> whole = ParseNumber<std::int32_t>(text))
            return *whole;
        return Round<std::int32_t>(ParseDouble(text));
    case ColumnType::Currency:
        return CurrencyFrom(ParseDecimalOrThrow(text, Currency::kScale));
    case ColumnType::Single:
        return SingleOf(ParseDouble(text));
    case ColumnType::Double:
        return ParseDouble(text);
    case ColumnType::DateTime:
        if (const std::optional<ParsedDate> parsed = ParseDate(text))
            return parsed->date;
        break;
    case ColumnType::Guid:
        if (const std::optional<Guid> guid = ParseGuid(text))
            return *guid;
        break;
    case ColumnType::Numeric: {
        const Decimal decimal = ParseDecimalOrThrow(text, type.scale);
        return Numeric{decimal.negative, decimal.magnitude, type.scale};
    }
    case ColumnType::Binary:
    case ColumnType::FixedBinary:
        if (std::optional<Bytes> bytes = ParseHex(text))
            return std::move(*bytes);
        break;
    case ColumnType::Ole:
        if (std::optional<Bytes> bytes = ParseHexOrBase64(text))
            return std::move(*bytes);
        break;
    }
    ThrowWrongType();
}

bool ToBoolean(const Value& value)
{
    if (const auto* flag = std::get_if<bool>(&value))
        return *flag;
    if (const auto* text = std::get_if<std::string>(&value))
        return ParseBoolean(TrimBlanks(*text));
    return DoubleOf(value) != 0;
}

void FillUp(Bytes& out, std::size_t begin, const Format& format, const ValueType& type)
{
    FillFrom(out, begin, type, type.type == ColumnType::Text ? BlankOf(format) : kZeroFiller);
}

Value DecodeValue(ByteSpan stored, const Format& format, const ValueType& type)
{
    switch (type.type) {
    case ColumnType::Byte:
        return std::int32_t{Exactly(stored, 1)[0]};
    case ColumnType::Integer:
        return std::int32_t{static_cast<std::int16_t>(LoadU16(Exactly(stored, 2), 0))};
    case ColumnType::Long:
        return LoadI32(Exactly(stored, 4), 0);
    case ColumnType::Currency:
        return Currency{static_cast<std::int64_t>(LoadU64(Exactly(stored, 8), 0))};
    case ColumnType::Single:
        return std::bit_cast<float>(LoadU32(Exactly(stored, 4), 0));
    case ColumnType::Double:
        return std::bit_cast<double>(LoadU64(Exactly(stored, 8), 0));
    case ColumnType::DateTime:
        return DateTime{std::bit_cast<double>(LoadU64(Exactly(stored, 8), 0))};
    case ColumnType::Binary:
    case ColumnType::Ole:
    case ColumnType::FixedBinary:
        return Bytes(stored.begin(), stored.end());
    case ColumnType::Text:
    case ColumnType::Memo:
        return DecodeText(stored, format);
    case ColumnType::Guid:
        return DecodeGuid(Exactly(stored, kGuidSize));
    case ColumnType::Numeric:
        return DecodeNumeric(Exactly(stored, kNumericSize), type.scale);
    case ColumnType::Boolean:
        break;
    }
    throw CorruptValue("A value has a type that has no bytes in a row");
}

} // namespace jet
