#include "platform/utf8.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(Utf8, IsCutBetweenCharacters)
{
    const std::string text = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"; // 1, 2, 3 and 4 bytes
    const std::size_t expected[] = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 10};
    for (std::size_t limit = 0; limit < std::size(expected); ++limit)
        EXPECT_EQ(CutUtf8(text, limit).size(), expected[limit]) << limit;
    EXPECT_EQ(CountCharacters(text), 4U);
    EXPECT_EQ(CutUtf8("\x80\x80\x80", 2), "") << "stray continuation bytes are no character";
    EXPECT_EQ(WithoutByteOrderMark("\xEF\xBB\xBFx"), "x");
    EXPECT_EQ(WithoutByteOrderMark("\xEF\xBB"), "\xEF\xBB");
}

} // namespace
} // namespace velmora
