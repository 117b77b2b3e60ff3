#include "jet/catalog/property_blob.h"
#include "jet/support.h"

#include <gtest/gtest.h>
#include <utility>

namespace jet {
namespace {

using testing::Hex;

// What the engine of Access writes for NOT NULL of a column PKEY.
constexpr const char* kJet4Required =
    "4D 52 32 00 18 00 00 00 80 00 10 00 52 00 65 00 71 00 75 00 69 00 72 00 65 00 64 00 1D 00 00 00 "
    "01 00 0E 00 00 00 08 00 50 00 4B 00 45 00 59 00 09 00 01 01 00 00 01 00 01";
constexpr const char* kJet3Required =
    "4B 4B 44 00 10 00 00 00 80 00 08 00 52 65 71 75 69 72 65 64 19 00 00 00 01 00 0A 00 00 00 04 00 "
    "50 4B 45 59 09 00 01 01 00 00 01 00 01";

TEST(PropertyBlob, NotNullIsWrittenAsAccessWritesIt)
{
    for (const auto& [version, expected] :
         {std::pair{JetVersion::Jet3, kJet3Required}, std::pair{JetVersion::Jet4, kJet4Required}}) {
        PropertyBlob blob(FormatOf(version));
        blob.SetBoolean("PKEY", kRequiredProperty, true);
        EXPECT_EQ(Hex(blob.Serialize()), expected);
    }
}

} // namespace
} // namespace jet
