#include "jet/store/long_values.h"

#include "jet/store/memory_pager.h"

#include <gtest/gtest.h>

namespace jet::testing {

namespace {

/// A column for long values in a database that holds nothing else.
struct Column {
    CrashFileSystem disk;
    std::unique_ptr<Pager> pager;
    PageNumber mapPage;
    UsageMap owned;
    UsageMap freeSpace;
    LongValues values;

    explicit Column(JetVersion version)
        : pager(NewPager(disk, version)), mapPage(NewMapPage(*pager)),
          owned(*pager, *UsageMap::CreateRecord(*pager, mapPage)),
          freeSpace(*pager, *UsageMap::CreateRecord(*pager, mapPage)),
          values(*pager, owned.Record(), freeSpace.Record())
    {
    }
    Bytes Write(ByteSpan value)
    {
        Bytes field;
        values.Write(value, field);
        return field;
    }
    [[nodiscard]] Bytes Read(ByteSpan field) const { return LongValues::Read(*pager, field, 2); }
};

Bytes Pattern(std::size_t size)
{
    Bytes value(size);
    for (std::size_t i = 0; i < size; ++i)
        value[i] = static_cast<Byte>(i * 31 + i / 251);
    return value;
}

} // namespace

TEST(LongValues, FormFollowsTheLength)
{
    struct Case {
        JetVersion version;
        std::size_t size;
        std::uint32_t form;
        std::size_t pages;
    };
    const Case cases[] = {
        {JetVersion::Jet3, 0, 0x80000000, 0},     {JetVersion::Jet3, 32, 0x80000000, 0},
        {JetVersion::Jet3, 33, 0x40000000, 1},    {JetVersion::Jet3, 2032, 0x40000000, 1},
        {JetVersion::Jet3, 2033, 0, 2},           {JetVersion::Jet3, 2 * 2032, 0, 2},
        {JetVersion::Jet4, 64, 0x80000000, 0},    {JetVersion::Jet4, 65, 0x40000000, 1},
        {JetVersion::Jet4, 4076, 0x40000000, 1},  {JetVersion::Jet4, 4077, 0, 2},
        {JetVersion::Jet4, 3 * 4072, 0, 3},       {JetVersion::Jet4, 3 * 4072 + 1, 0, 4},
        {JetVersion::Jet4, 20'000'000, 0, 4'912},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.size);
        Column column(c.version);
        const Bytes value = Pattern(c.size);
        const Bytes field = column.Write(value);
        EXPECT_EQ(LoadU32(field, 0), c.form | c.size);
        EXPECT_EQ(field.size(), c.form == 0x80000000 ? 12 + c.size : 12);
        EXPECT_EQ(column.Read(field), value);
        EXPECT_EQ(column.owned.Pages().size(), c.pages);
        // Pages of a chain take nothing else.
        EXPECT_EQ(column.freeSpace.Pages().size(), c.form == 0x40000000 ? 1u : 0u);
        column.values.Delete(field);
        EXPECT_TRUE(column.owned.Pages().empty());
        EXPECT_TRUE(column.freeSpace.Pages().empty());
    }
}

} // namespace jet::testing
