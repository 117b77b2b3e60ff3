#include "xml/content_kind.h"

#include "platform/utf8.h"
#include "xml/structure_model.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(ContentKind, TellsNumbersFromTexts)
{
    struct Case {
        const char* content;
        std::int32_t type;
        double size;
    };
    const Case cases[] = {
        {"", kNumericContent, 0},
        {" \r\n\t\u00A0\u3000", kNumericContent, 0},
        {"12", kNumericContent, 12},
        {"007", kNumericContent, 7},
        {"221.31", kNumericContent, 221.31},
        {"0.1", kNumericContent, 0.1},
        {"1.2.3", kTextContent, 5},
        {"999999999999999", kNumericContent, 999999999999999.0},
        {"18446744073709551617", kNumericContent, 18446744073709551617.0},
        {"123456789012345x", kTextContent, 16},
        {" \u00A0+12.50\n", kNumericContent, 12.5},
        {"-3", kNumericContent, -3},
        {".5", kNumericContent, 0.5},
        {"5.", kNumericContent, 5},
        {"1e3", kNumericContent, 1000},
        {"1E-2", kNumericContent, 0.01},
        {"1e-99999999999999999999", kNumericContent, 0},
        {"1000e-400", kNumericContent, 0},
        {"1e999", kTextContent, 5},
        {"0e999", kNumericContent, 0},
        {"34e99999999999999999999", kTextContent, 23},
        {"1,5", kTextContent, 3},
        {"inf", kTextContent, 3},
        {"nan", kTextContent, 3},
        {"0x10", kTextContent, 4},
        {"1e", kTextContent, 2},
        {"+", kTextContent, 1},
        {".", kTextContent, 1},
        {"..", kTextContent, 2},
        {"+-1", kTextContent, 3},
        {"1 2", kTextContent, 3},
        {" abc ", kTextContent, 5},
        {"Ü😀", kTextContent, 3},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.content);
        const ContentKind kind = ClassifyContent(c.content);
        EXPECT_EQ(kind.dataType, c.type);
        EXPECT_EQ(kind.size, c.size);
    }
    EXPECT_EQ(ClassifyContent(std::string(100'000, '9')).dataType, kTextContent);
    EXPECT_EQ(ClassifyContent("0." + std::string(100'000, '0') + "1").dataType, kNumericContent);
}

TEST(WhiteSpace, OfEveryKindIsTrimmedFromBothEnds)
{
    EXPECT_EQ(TrimWhiteSpace("\u2028\u1680 \tä b\u202F\u205F\u0085\n"), "ä b");
    EXPECT_EQ(TrimWhiteSpace("\u200B"), "\u200B"); // has no width, and is no white space
    EXPECT_EQ(TrimWhiteSpace("\xE3\x80"), "\xE3\x80");
}

} // namespace
} // namespace velmora
