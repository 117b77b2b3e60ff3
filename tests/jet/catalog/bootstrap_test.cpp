
#include "jet/catalog/catalog.h"
#include "jet/store/memory_pager.h"
#include "support/shared.h"

#include <algorithm>
#include <bit>
#include <gtest/gtest.h>

namespace jet {
namespace {

using testing::CrashFileSystem;
using testing::Hex;
using velmora::testing::CopyOf;

/// With the two moments that page 0 and the objects of a real file carry.
std::unique_ptr<Pager> EmptyDatabase(CrashFileSystem& disk, JetVersion version)
{
    constexpr auto kHeaderDate = std::bit_cast<double>(0x40E4AB3E3BD3853E);
    constexpr auto kRowDate = std::bit_cast<double>(0x40E4AB3E3BD3FB4E);
    auto pager = Pager::Create(disk.Open("a.mdb", OpenMode::CreateNew), {version, kHeaderDate});
    BuildEmptyDatabase(*pager, {kRowDate});
    return pager;
}

TEST(Bootstrap, TheEmptyJet4FileIsTheOneThatAccessMakes)
{
    REQUIRE_SHARED(shared);
    // Leftovers of memory that no reader uses: fixed offsets of variable columns, order bytes of unused index slots,
    // and four bytes without a meaning in each index block.
    struct Range {
        PageNumber page;
        std::size_t at, size;
    };
    constexpr Range kMeaningless[] = {{2, 233, 1}, {2, 308, 2}, {2, 333, 2}, {2, 359, 1}, {2, 383, 1}, {2, 409, 1},
                                      {2, 483, 1}, {2, 801, 1}, {2, 807, 1}, {3, 171, 1}, {3, 250, 1}, {3, 262, 1},
                                      {3, 265, 1}, {3, 277, 1}, {3, 279, 1}, {4, 122, 1}, {4, 197, 1}, {4, 222, 1},
                                      {4, 272, 1}, {4, 415, 1}, {4, 421, 1}, {4, 427, 1}, {4, 439, 1}, {4, 441, 1}};
    const auto means = [&](PageNumber page, std::size_t at) {
        return std::ranges::none_of(kMeaningless,
                                    [&](const Range& r) { return r.page == page && at >= r.at && at < r.at + r.size; });
    };

    const std::string real = velmora::testing::ReadFile(shared / "corpus/mdb/adox_jet4.mdb");
    CrashFileSystem disk;
    const auto pager = EmptyDatabase(disk, JetVersion::Jet4);

    constexpr std::size_t kPageSize = 4096;
    ASSERT_EQ(pager->PageCount() * kPageSize, real.size());
    for (PageNumber page = 0; page < pager->PageCount(); ++page) {
        SCOPED_TRACE("page " + std::to_string(page));
        const PageRef made = pager->Read(page);
        for (std::size_t at = 0; at < kPageSize; ++at) {
            if (!means(page, at))
                continue;
            ASSERT_EQ(made.Bytes()[at], static_cast<Byte>(real[page * kPageSize + at])) << "byte " << at;
        }
    }
}

TEST(Bootstrap, TheEmptyJet3FileIsLaidOutAsTheEngineDoes)
{
    CrashFileSystem disk;
    const auto pager = EmptyDatabase(disk, JetVersion::Jet3);

    std::string types;
    for (PageNumber page = 0; page < pager->PageCount(); ++page)
        types += std::to_string(static_cast<int>(pager->Read(page).Type()));
    EXPECT_EQ(pager->Header().build, 9502U);
    EXPECT_EQ(types, "01222211141414444411");

    // The first map page is full with 15 records; the last map of MSysObjects begins the next one.
    const TableDef objects = ReadTableDef(*pager, kObjectsPage);
    EXPECT_EQ(objects.columns.back().longValueOwned, (RowId{6, 14}));
    EXPECT_EQ(objects.columns.back().longValueFree, (RowId{7, 0}));
    EXPECT_EQ(ReadTableDef(*pager, kAcesPage).ownedPages, (RowId{12, 0}));
    EXPECT_EQ(ReadTableDef(*pager, kQueriesPage).columns.size(), 7u);
}

TEST(Bootstrap, OwnersOfObjectsFollowFromTheDateInPageZero)
{
    REQUIRE_SHARED(shared);
    const velmora::testing::TempFolder folder;
    for (const char* name : {"testV2000.mdb", "indexTestV2003.mdb", "emptyJet4.mdb", "testV1997.mdb"}) {
        SCOPED_TRACE(name);
        const auto pager =
            Pager::Open(OpenFile(CopyOf(shared / "corpus/mdb" / name, folder / name), OpenMode::ReadWrite));
        Catalog catalog(*pager);
        SystemTable& objects = catalog.Objects().ObjectRows();
        Record record;
        objects.Rows().Read(catalog.FindTable("MSysObjects")->row, record);
        constexpr std::uint16_t kOwner = 6;
        EXPECT_EQ(objects.Binary(record, kOwner), OwnerIds(*pager).engine);
    }
}

} // namespace
} // namespace jet
