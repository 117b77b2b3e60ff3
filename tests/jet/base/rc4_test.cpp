#include "jet/base/rc4.h"

#include "hex.h"

#include <gtest/gtest.h>

namespace jet::testing {

TEST(Rc4, GivesTheKeyStreamUnderWhichPageZeroIsMasked)
{
    Bytes stream(16);
    ApplyRc4(FromHex("C7 DA 39 6B"), stream);
    EXPECT_EQ(Hex(stream), "B5 6F 03 62 61 08 C2 55 EB A9 67 72 43 3F 00 9C");
}

} // namespace jet::testing
