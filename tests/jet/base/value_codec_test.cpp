#include "jet/base/value_codec.h"
#include "jet/base/value_text.h"

#include "jet/base/default_value.h"
#include "jet/base/rc4.h"
#include "jet/support.h"
#include "support/shared.h"

#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <regex>
#include <sstream>

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
    const std::map<std::string, ColumnType> types{
        {"Byte", ColumnType::Byte},         {"Long", ColumnType::Long},         {"Single", ColumnType::Single},
        {"Double", ColumnType::Double},     {"Currency", ColumnType::Currency}, {"Numeric", ColumnType::Numeric},
        {"DateTime", ColumnType::DateTime}, {"Guid", ColumnType::Guid},         {"Binary", ColumnType::Binary},
        {"Ole", ColumnType::Ole},           {"Text", ColumnType::Text},         {"Memo", ColumnType::Memo}};
    const std::regex row(R"((\w+) +\| \[(.*)\] +\| (refused: (\d+)|.*?) +\| .*)");
    int cases = 0;
    std::istringstream file(velmora::testing::ReadFile(TEXTS));
    for (std::string line; std::getline(file, line);) {
        std::smatch match;
        if (line.empty() || line.starts_with('#'))
            continue;
        ASSERT_TRUE(std::regex_match(line, match, row)) << line;
        SCOPED_TRACE(line);
        ++cases;
        const ValueType type = TypeOf(types.at(match[1]));
        std::string text = std::regex_replace(match.str(2), std::regex(R"(\\n)"), "\n");
        text = std::regex_replace(text, std::regex(R"(\\r)"), "\r");
        Bytes stored;
        const auto error = ErrorOf([&] { EncodeText(stored, kFormat, type, text); });
        EXPECT_EQ(error,
                  match[4].matched ? std::optional(static_cast<ErrorNumber>(std::stoi(match[4]))) : std::nullopt);
        if (!error) {
            EXPECT_EQ(ToText(DecodeValue(stored, kFormat, type)), match.str(3));
        }
    }
    EXPECT_GT(cases, 50);
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
