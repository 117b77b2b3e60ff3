#include "jet/base/hex.h"
#include "jet/catalog/property_blob.h"
#include "jet/error.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <utility>

namespace jet {
namespace {

using testing::Hex;

/// Bytes of hexadecimal digits; blanks part what belongs together.
Bytes Packed(std::string_view digits)
{
    std::string spaced;
    for (const char c : digits) {
        if (c == ' ')
            continue;
        spaced += c;
        if (spaced.size() % 3 == 2)
            spaced += ' ';
    }
    return testing::FromHex(spaced);
}

// What the engine of Access writes for NOT NULL of a column PKEY.
constexpr const char* kJet4Required = "4D523200 18000000 8000 1000 5200650071007500690072006500 6400 "
                                      "1D000000 0100 0E000000 0800 50004B0045005900 0900 01 01 0000 0100 01";
constexpr const char* kJet3Required = "4B4B4400 10000000 8000 0800 5265717569726564 "
                                      "19000000 0100 0A000000 0400 504B4559 0900 01 01 0000 0100 01";

TEST(PropertyBlob, NotNullIsWrittenAsAccessWritesIt)
{
    for (const auto& [version, expected] :
         {std::pair{JetVersion::Jet3, kJet3Required}, std::pair{JetVersion::Jet4, kJet4Required}}) {
        PropertyBlob blob(FormatOf(version));
        blob.SetBoolean("PKEY", kRequiredProperty, true);
        EXPECT_EQ(Hex(blob.Serialize()), Hex(Packed(expected)));
    }
}

TEST(PropertyBlob, KeepsWhatItDoesNotTouch)
{
    const Format& format = FormatOf(JetVersion::Jet4);
    PropertyBlob blob(format, Packed(kJet4Required));
    EXPECT_TRUE(blob.FindBoolean("PKEY", kRequiredProperty));
    EXPECT_FALSE(blob.FindBoolean("FKEY", kRequiredProperty));
    EXPECT_FALSE(blob.Find("PKEY", "DefaultValue"));

    blob.SetBoolean("b", kRequiredProperty, true);
    blob.SetBoolean("b", "AllowZeroLength", false);
    PropertyBlob again(format, blob.Serialize());
    EXPECT_TRUE(again.FindBoolean("PKEY", kRequiredProperty));
    EXPECT_TRUE(again.FindBoolean("b", kRequiredProperty));
    EXPECT_FALSE(again.FindBoolean("b", "AllowZeroLength"));

    EXPECT_TRUE(again.RemoveColumn("b"));
    EXPECT_FALSE(again.RemoveColumn("b"));
    EXPECT_TRUE(again.FindBoolean("PKEY", kRequiredProperty));
    EXPECT_TRUE(again.RemoveColumn("PKEY"));
    EXPECT_TRUE(again.IsEmpty());
}

TEST(PropertyBlob, ADamagedBlobIsAnError)
{
    const Format& format = FormatOf(JetVersion::Jet4);
    const Bytes whole = Packed(kJet4Required);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        // Cut between two blocks it is whole again, only shorter.
        if (size == 4 || size == 28)
            continue;
        SCOPED_TRACE(size);
        EXPECT_THROW(PropertyBlob(format, ByteSpan(whole).first(size)), Error);
    }
    for (std::size_t at = 0; at < whole.size(); ++at) {
        Bytes damaged = whole;
        damaged[at] ^= 0xFF;
        try {
            static_cast<void>(PropertyBlob(format, damaged).Serialize());
        } catch (const Error&) {
        }
    }
}

} // namespace
} // namespace jet
