#include "jet/store/header_page.h"

#include "jet/support.h"

#include <gtest/gtest.h>
#include <optional>

namespace jet::testing {

namespace {

Bytes NewHeader(JetVersion version)
{
    Bytes page(FormatOf(version).pageSize);
    DatabaseHeader header;
    header.version = version;
    header.creationDate = 42329.94479166667;
    header.build = 9756;
    MakeHeader(page, header);
    return page;
}

std::optional<ErrorNumber> Refusal(ByteSpan page)
{
    return ErrorOf([&] { static_cast<void>(ReadHeader(page, "some.mdb")); });
}

} // namespace

TEST(HeaderPage, RefusesWhatItCannotOpen)
{
    struct Case {
        const char* name;
        JetVersion version;
        std::size_t at;
        Byte flipped; ///< bits
        ErrorNumber error;
    };
    const Case cases[] = {
        {"another signature", JetVersion::Jet4, 0, 1, ErrorNumber::NotADatabase},
        {"another name", JetVersion::Jet4, 5, 1, ErrorNumber::NotADatabase},
        {"a later engine", JetVersion::Jet4, 0x14, 3, ErrorNumber::UnrecognizedFormat},
        {"encoded", JetVersion::Jet4, 0x3F, 1, ErrorNumber::UnrecognizedFormat},
        {"Jet 4 password", JetVersion::Jet4, 0x42, 0x41, ErrorNumber::NotAValidPassword},
        {"Jet 4 password, last unit only", JetVersion::Jet4, 0x69, 1, ErrorNumber::NotAValidPassword},
        {"Jet 3 password", JetVersion::Jet3, 0x42, 0x41, ErrorNumber::NotAValidPassword},
        {"another code page", JetVersion::Jet3, 0x3C, 6, ErrorNumber::UnrecognizedFormat},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Bytes page = NewHeader(c.version);
        EXPECT_EQ(Refusal(page), std::nullopt);
        page[c.at] ^= c.flipped;
        EXPECT_EQ(Refusal(page), c.error);
    }
}

TEST(HeaderPage, CommitCounterGoesRoundPastItsSpecialValues)
{
    Bytes page = NewHeader(JetVersion::Jet3);
    const Format& format = FormatOf(JetVersion::Jet3);
    CountCommit(page, format);
    EXPECT_EQ(LoadU16(page, format.commitCounters), 0x0102);
    StoreU16(page, format.commitCounters, 0xFFFF);
    CountCommit(page, format);
    EXPECT_EQ(LoadU16(page, format.commitCounters), 2);
}

} // namespace jet::testing
