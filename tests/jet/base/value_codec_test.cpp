#include "jet/base/value_codec.h"

#include "jet/base/default_value.h"
#include "jet/base/rc4.h"
#include "jet/support.h"

#include <gtest/gtest.h>
#include <optional>

namespace jet::testing {

namespace {

const Format& kFormat = FormatOf(JetVersion::Jet4);

ValueType TypeOf(ColumnType type)
{
    return {.type = type, .sizeBytes = 20, .compressed = false, .precision = 18, .scale = 3};
}

} // namespace

TEST(ValueCodec, StoresValuesAsAccessDoes)
{
    struct Case {
        const char* name;
        ColumnType type;
        Value value;
        const char* bytes;
        const char* text;
    };
    const Guid guid{{0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0, 1, 2, 3, 4, 5, 6, 7, 8}};
    const Case cases[] = {
        {"byte", ColumnType::Byte, 255, "FF", "255"},
        {"integer", ColumnType::Integer, -2, "FE FF", "-2"},
        {"long", ColumnType::Long, -1234567, "79 29 ED FF", "-1234567"},
        {"currency", ColumnType::Currency, Currency{-12'345'600}, "00 9F 43 FF FF FF FF FF", "-1234.56"},
        {"smallest currency", ColumnType::Currency, Currency{INT64_MIN}, "00 00 00 00 00 00 00 80",
         "-922337203685477.5808"},
        {"single", ColumnType::Single, 0.1f, "CD CC CC 3D", "0.1"},
        {"double", ColumnType::Double, 0.1, "9A 99 99 99 99 99 B9 3F", "0.1"},
        {"date", ColumnType::DateTime, DateTime{42329.5}, "00 00 00 00 30 AB E4 40", "2015-11-21 12:00:00"},
        {"the time counts forward before day 0", ColumnType::DateTime, DateTime{-1.25}, "00 00 00 00 00 00 F4 BF",
         "1899-12-29 06:00:00"},
        {"binary", ColumnType::Binary, Bytes{1, 0xAB}, "01 AB", "01AB"},
        {"text", ColumnType::Text, std::string("Aß"), "41 00 DF 00", "Aß"},
        {"guid", ColumnType::Guid, guid, "78 56 34 12 BC 9A F0 DE 01 02 03 04 05 06 07 08",
         "{12345678-9ABC-DEF0-0102-030405060708}"},
        {"numeric", ColumnType::Numeric, Numeric{true, {0, 0, 1, 2}, 3},
         "80 00 00 00 00 00 00 00 00 01 00 00 00 02 00 00 00", "-4294967.298"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Bytes stored;
        EncodeValue(stored, kFormat, TypeOf(c.type), c.value);
        EXPECT_EQ(Hex(stored), c.bytes);
        EXPECT_EQ(DecodeValue(stored, kFormat, TypeOf(c.type)), c.value);
        EXPECT_EQ(ToText(c.value), c.text);
        Bytes fromText;
        EncodeText(fromText, kFormat, TypeOf(c.type), c.text);
        EXPECT_EQ(Hex(fromText), c.bytes);
    }
}

TEST(ValueCodec, ReadsTextTheWayAProviderDoes)
{
    struct Case {
        const char* name;
        ColumnType type;
        std::string_view text;
        std::optional<ErrorNumber> error;
        const char* shown;
    };
    constexpr auto kWrong = ErrorNumber::WrongType;
    constexpr auto kSmall = ErrorNumber::FieldTooSmall;
    const Case cases[] = {
        {"blanks around", ColumnType::Long, " +17\n", {}, "17"},
        {"half to even, down", ColumnType::Long, "2.5", {}, "2"},
        {"half to even, up", ColumnType::Long, "3.5", {}, "4"},
        {"exponent", ColumnType::Long, "1e3", {}, "1000"},
        {"too large", ColumnType::Long, "2147483648", kWrong, ""},
        {"too large for the type", ColumnType::Byte, "256", kWrong, ""},
        {"no number", ColumnType::Long, "12a", kWrong, ""},
        {"nothing", ColumnType::Long, "", kWrong, ""},
        {"infinity is no number", ColumnType::Double, "inf", kWrong, ""},
        {"too large for a single", ColumnType::Single, "1e39", kWrong, ""},
        {"currency is exact", ColumnType::Currency, "922337203685477.5807", {}, "922337203685477.5807"},
        {"currency is rounded", ColumnType::Currency, "-0.00005", {}, "-0.0001"},
        {"currency overflows", ColumnType::Currency, "922337203685477.5808", kWrong, ""},
        {"a huge exponent ends at once", ColumnType::Currency, "1e2000000000", kWrong, ""},
        {"a tiny exponent is nothing", ColumnType::Currency, "1e-2000000000", {}, "0"},
        {"numeric keeps its scale", ColumnType::Numeric, "1.2345", {}, "1.235"},
        {"numeric over its precision", ColumnType::Numeric, "1234567890123456", kWrong, ""},
        {"month first", ColumnType::DateTime, "3/5/2024 14:07", {}, "2024-03-05 14:07:00"},
        {"ISO", ColumnType::DateTime, "2024-02-29T23:59:59.9", {}, "2024-03-01 00:00:00"},
        {"time only", ColumnType::DateTime, "06:00", {}, "1899-12-30 06:00:00"},
        {"two digits of a year", ColumnType::DateTime, "12/31/29 12:05 am", {}, "2029-12-31 00:05:00"},
        {"of the century before", ColumnType::DateTime, "1/2/30 12:05:06PM", {}, "1930-01-02 12:05:06"},
        {"no such hour", ColumnType::DateTime, "13:00 PM", kWrong, ""},
        {"a time zone is left out", ColumnType::DateTime, "2024-02-29T23:59:59Z", {}, "2024-02-29 23:59:59"},
        {"an offset", ColumnType::DateTime, " 2024-02-29T23:59:59.25-05:30\n", {}, "2024-02-29 23:59:59"},
        {"a short offset", ColumnType::DateTime, "14:07+01", {}, "1899-12-30 14:07:00"},
        {"a day with a zone", ColumnType::DateTime, "2024-03-05+0100", {}, "2024-03-05 00:00:00"},
        {"no such offset", ColumnType::DateTime, "14:07+24:00", kWrong, ""},
        {"basic", ColumnType::DateTime, "20240305T140709,75Z", {}, "2024-03-05 14:07:10"},
        {"basic, a part of an hour", ColumnType::DateTime, "20240305T14.5", {}, "2024-03-05 14:30:00"},
        {"basic time", ColumnType::DateTime, "T1407", {}, "1899-12-30 14:07:00"},
        {"a time needs a mark to do without colons", ColumnType::DateTime, "1407", kWrong, ""},
        {"day of the year", ColumnType::DateTime, "2024-366T06:00", {}, "2024-12-31 06:00:00"},
        {"day of the year, basic", ColumnType::DateTime, "2024060", {}, "2024-02-29 00:00:00"},
        {"no such day of the year", ColumnType::DateTime, "2023-366", kWrong, ""},
        {"week date", ColumnType::DateTime, "2021-W01-1", {}, "2021-01-04 00:00:00"},
        {"week date of the year before, basic", ColumnType::DateTime, "2020W537", {}, "2021-01-03 00:00:00"},
        {"no such week", ColumnType::DateTime, "2021-W53-1", kWrong, ""},
        {"a month is no day", ColumnType::DateTime, "2024-03", kWrong, ""},
        {"the end of a day", ColumnType::DateTime, "2024-02-29T24:00:00", {}, "2024-03-01 00:00:00"},
        {"the end of any day", ColumnType::DateTime, "24:00", {}, "1899-12-30 00:00:00"},
        {"the end of all days", ColumnType::DateTime, "9999-12-31T24:00", kWrong, ""},
        {"behind the end of a day", ColumnType::DateTime, "2024-02-29T24:00:01", kWrong, ""},
        {"no fraction", ColumnType::DateTime, "14:07:09.", kWrong, ""},
        {"no such day", ColumnType::DateTime, "2023-02-29", kWrong, ""},
        {"guid without braces",
         ColumnType::Guid,
         "12345678-9abc-def0-0102-030405060708",
         {},
         "{12345678-9ABC-DEF0-0102-030405060708}"},
        {"guid cut short", ColumnType::Guid, "{12345678-9abc-def0-0102-0304050607}", kWrong, ""},
        {"bytes with a prefix", ColumnType::Ole, "0x00ff", {}, "00FF"},
        {"half a byte", ColumnType::Ole, "00f", kWrong, ""},
        {"base64", ColumnType::Ole, "SGVs\r\n bG8=", {}, "48656C6C6F"},
        {"base64 without padding", ColumnType::Ole, "AP/+", {}, "00FFFE"},
        {"base64, two signs of padding", ColumnType::Ole, "/w==", {}, "FF"},
        {"base64 that begins as hexadecimal digits do", ColumnType::Ole, "0xAb", {}, "D3101B"},
        {"hexadecimal digits that base64 has too", ColumnType::Ole, "0123abcd", {}, "0123ABCD"},
        {"a word", ColumnType::Ole, "picture", kWrong, ""},
        {"padding that stands for no zeros", ColumnType::Ole, "/x==", kWrong, ""},
        {"padding in the middle", ColumnType::Ole, "/w==AAAA", kWrong, ""},
        {"too much padding", ColumnType::Ole, "A===", kWrong, ""},
        {"base64 is not for binary columns", ColumnType::Binary, "SGVsbG8=", kWrong, ""},
        {"no bytes", ColumnType::Binary, "0g", kWrong, ""},
        {"too many bytes", ColumnType::Binary, "0102030405060708090A0B0C0D0E0F101112131415", kSmall, ""},
        {"text that just fits", ColumnType::Text, "äääääääääa", {}, "äääääääääa"},
        {"text too long", ColumnType::Text, "ääääääääääa", kSmall, ""},
        {"surrogates count as two", ColumnType::Text, "123456789\U0001F600", kSmall, ""},
        {"memo of any length", ColumnType::Memo, "12345678901234567890", {}, "12345678901234567890"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Bytes stored;
        try {
            EncodeText(stored, kFormat, TypeOf(c.type), c.text);
            EXPECT_FALSE(c.error);
            EXPECT_EQ(ToText(DecodeValue(stored, kFormat, TypeOf(c.type))), c.shown);
        } catch (const Error& error) {
            EXPECT_EQ(error.Number(), c.error);
        }
    }
    // A quarter of a second, which no text shows.
    EXPECT_EQ(ParseText(TypeOf(ColumnType::DateTime), "2015-11-21T12:00:00.25"),
              Value(DateTime{42329 + 43'200.25 / 86'400}));
    EXPECT_EQ(ParseText(TypeOf(ColumnType::Boolean), "TRUE"), Value(true));
    EXPECT_EQ(ParseText(TypeOf(ColumnType::Boolean), "-1"), Value(true));
    EXPECT_EQ(ParseText(TypeOf(ColumnType::Boolean), "false"), Value(false));
}

TEST(ValueCodec, AFilledColumnIsAlwaysFull)
{
    const auto filled = [](JetVersion version, ColumnType type, std::string_view text) {
        Bytes stored;
        EncodeText(stored, FormatOf(version), {.type = type, .sizeBytes = 6, .filled = true}, text);
        return Hex(stored);
    };
    EXPECT_EQ(filled(JetVersion::Jet4, ColumnType::Text, "a"), "61 00 20 00 20 00");
    EXPECT_EQ(filled(JetVersion::Jet3, ColumnType::Text, "a"), "61 20 20 20 20 20");
    EXPECT_EQ(filled(JetVersion::Jet4, ColumnType::Binary, "FF"), "FF 00 00 00 00 00");
}

TEST(DefaultValue, IsWhatASimpleExpressionSays)
{
    struct Case {
        const char* expression;
        ColumnType type;
        const char* stored; ///< nullptr: none
    };
    const Case cases[] = {
        {"0", ColumnType::Integer, "00 00"},
        {"=-1.5", ColumnType::Double, "00 00 00 00 00 00 F8 BF"},
        {" Yes", ColumnType::Boolean, "01"},
        {"0", ColumnType::Boolean, "00"},
        {"True", ColumnType::Byte, nullptr},
        {"\"a \"\"b\"", ColumnType::Text, "61 00 20 00 22 00 62 00"},
        {"\"a\" & \"b\"", ColumnType::Text, nullptr},
        {"'x'", ColumnType::Memo, "78 00"},
        {"12", ColumnType::Text, "31 00 32 00"},
        {"#11/21/2015#", ColumnType::DateTime, "00 00 00 00 20 AB E4 40"},
        {"[other]+1", ColumnType::Long, nullptr},
        {"abc", ColumnType::Text, nullptr},
        {"Null", ColumnType::Text, nullptr},
        {"GenGUID()", ColumnType::Long, nullptr},
        {"", ColumnType::Text, nullptr},
        {"=", ColumnType::Long, nullptr},
        {"\"", ColumnType::Text, nullptr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.expression);
        const std::optional<DefaultValue> value = ParseDefaultValue(c.expression, kFormat, TypeOf(c.type));
        EXPECT_EQ(value ? Hex(value->stored) : "none", c.stored ? c.stored : "none");
    }
    EXPECT_EQ(ParseDefaultValue("NOW()", kFormat, TypeOf(ColumnType::DateTime))->kind, DefaultValue::Kind::Now);
    EXPECT_EQ(ParseDefaultValue("genGuid()", kFormat, TypeOf(ColumnType::Guid))->kind, DefaultValue::Kind::NewGuid);
}

TEST(Rc4, GivesTheKeyStreamUnderWhichPageZeroIsMasked)
{
    Bytes stream(16);
    ApplyRc4(FromHex("C7 DA 39 6B"), stream);
    EXPECT_EQ(Hex(stream), "B5 6F 03 62 61 08 C2 55 EB A9 67 72 43 3F 00 9C");
}

TEST(Error, NamesTakeTheirPlaces)
{
    const Error error(ErrorNumber::NoSuchIndex, {"PrimaryKey", "orders"}, "Nothing was changed.");
    EXPECT_STREQ(error.what(), "No such index 'PrimaryKey' on table 'orders'. Nothing was changed.");
    EXPECT_EQ(error.HResult(), 0x80040E14u);
    EXPECT_STREQ(CorruptPage(17, "row 3 begins at byte 4100").what(),
                 "Page 17: row 3 begins at byte 4100; the database is damaged.");
}

} // namespace jet::testing
