#include "jet/store/long_values.h"

#include "jet/store/data_page.h"
#include "memory_file.h"

#include <gtest/gtest.h>
#include <random>

namespace jet::testing {

namespace {

/// A column for long values in a database that holds nothing else.
struct Column {
    MemoryDisk disk;
    std::unique_ptr<Pager> pager;
    PageNumber mapPage;
    UsageMap owned;
    UsageMap freeSpace;
    LongValues values;

    explicit Column(JetVersion version)
        : pager(NewPager(disk, version)), mapPage(MakeMapPage()),
          owned(*pager, *UsageMap::CreateRecord(*pager, mapPage)),
          freeSpace(*pager, *UsageMap::CreateRecord(*pager, mapPage)),
          values(*pager, owned.Record(), freeSpace.Record())
    {
    }
    PageNumber MakeMapPage() const
    {
        const MutablePageRef page = pager->Allocate();
        DataPageEditor::MakeEmpty(page, pager->GetFormat(), kUsageMapOwner);
        return page.Number();
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

TEST(LongValues, ChainsLookLikeAccessesOwn)
{
    for (const JetVersion version : kBothVersions) {
        Column column(version);
        const Bytes field = column.Write(Pattern(10'000));
        const RowId first = RowId::FromPointer(LoadU32(field, 4));
        const PageRef page = column.pager->Read(first.page, PageType::Data);
        const DataPage view(page.Bytes(), first.page, column.pager->GetFormat());
        const bool jet4 = version == JetVersion::Jet4;
        EXPECT_EQ(view.Owner(), kLongValueOwner);
        EXPECT_EQ(view.Row(0).size(), jet4 ? 4076u : 2036u);
        EXPECT_EQ(RowId::FromPointer(LoadU32(view.Row(0), 0)).slot, 0);
        if (jet4) {
            EXPECT_NE(LoadU32(field, 8), 0u);
            EXPECT_EQ(LoadU32(page.Bytes(), 8), LoadU32(field, 8));
        } else {
            EXPECT_EQ(LoadU32(field, 8), 0u);
        }
    }
}

TEST(LongValues, AnySequenceOfWritesAndDeletesKeepsTheOthers)
{
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (const JetVersion version : kBothVersions) {
        Column column(version);
        std::vector<std::pair<Bytes, Bytes>> live; ///< field, value
        std::size_t bytes = 0;
        for (int step = 0; step < 2000; ++step) {
            if (live.empty() || random() % 5 < 3) {
                const Bytes value = Pattern(random() % (step % 10 == 0 ? 9000 : 500));
                live.emplace_back(column.Write(value), value);
            } else {
                std::swap(live[random() % live.size()], live.back());
                column.values.Delete(live.back().first);
                live.pop_back();
            }
        }
        for (const auto& [field, value] : live) {
            ASSERT_EQ(column.Read(field), value);
            bytes += value.size();
        }
        // Room that deleted values left is used again.
        EXPECT_LT(column.owned.Pages().size() * column.pager->GetFormat().pageSize, 2 * bytes);
        column.values.DeleteAll();
        EXPECT_TRUE(column.owned.Pages().empty());
        EXPECT_EQ(FreePages(*column.pager).size(), column.pager->PageCount() - column.mapPage - 1);
    }
}

TEST(LongValues, BrokenFieldsAndChainsAreDamage)
{
    struct Case {
        const char* name;
        std::size_t at; ///< in the field; or, from 100 on, in the first record of the chain
        std::uint32_t value;
    };
    const Case cases[] = {
        {"unknown form", 0, 0xC0000010},
        {"longer than the file", 0, 0x3FFFFFFF},
        {"longer than the chain", 0, 10'001},
        {"inline, longer than the field", 0, 0x80000010},
        {"single, longer than its record", 0, 0x40000000 | 5000},
        {"no first record", 4, 0},
        {"first record outside the file", 4, 0xFFFFFF00},
        {"first record is a usage map", 4, 0x00000100},
        {"chain goes round", 100, 0xFFFFFFFF},
        {"chain ends early", 100, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Column column(JetVersion::Jet4);
        Bytes field = column.Write(Pattern(10'000));
        const std::uint32_t first = LoadU32(field, 4);
        if (c.at < 100) {
            StoreU32(field, c.at, c.value);
        } else {
            DataPageEditor editor(column.pager->Write(first >> 8), column.pager->GetFormat());
            StoreU32(editor.RowBytes(0), 0, c.value == 0 ? 0 : first);
            StoreU32(field, 0, 20'000);
        }
        EXPECT_THROW(static_cast<void>(column.Read(field)), Error);
    }
    Column column(JetVersion::Jet4);
    EXPECT_THROW(static_cast<void>(column.Read(Bytes(11))), Error);
    // A field that refers to somebody else's page must not free it.
    Bytes foreign = column.Write(Pattern(100));
    StoreU32(foreign, 4, RowId{column.mapPage, 0}.Pointer());
    EXPECT_THROW(column.values.Delete(foreign), Error);
}

} // namespace jet::testing
