#include "jet/catalog/bootstrap.h"

#include "jet/base/hex.h"
#include "jet/catalog/catalog.h"
#include "jet/store/memory_file.h"
#include "support/shared.h"

#include <algorithm>
#include <bit>
#include <gtest/gtest.h>
#include <string>

namespace jet {
namespace {

using testing::Hex;
using testing::MemoryDisk;
using testing::MemoryFile;

double DateOf(std::uint64_t bits)
{
    return std::bit_cast<double>(bits);
}

// Page 0 and the objects of the real file carry these two moments.
constexpr std::uint64_t kHeaderDate = 0x40E4AB3E3BD3853E;
constexpr std::uint64_t kRowDate = 0x40E4AB3E3BD3FB4E;

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
    MemoryDisk disk;
    const auto pager = Pager::Create(std::make_unique<MemoryFile>(disk), {JetVersion::Jet4, DateOf(kHeaderDate)});
    BuildEmptyDatabase(*pager, {DateOf(kRowDate)});

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
    MemoryDisk disk;
    const auto pager = Pager::Create(std::make_unique<MemoryFile>(disk), {JetVersion::Jet3, DateOf(kHeaderDate)});
    BuildEmptyDatabase(*pager, {DateOf(kRowDate)});

    std::string types;
    for (PageNumber page = 0; page < pager->PageCount(); ++page)
        types += std::to_string(static_cast<int>(pager->Read(page).Type()));
    EXPECT_EQ(pager->Header().build, 9502U);
    EXPECT_EQ(types, "01222211141414444411");

    struct Leaf {
        PageNumber page;
        std::size_t entries;
        const char* firstKey;
    };
    const Leaf leaves[] = {{9, 8, "7F 8F 00 00 00 7F 64 60 77 60 61 60 76 66 76 00"},
                           {11, 8, "7F 80 00 00 02"},
                           {13, 16, "7F 80 00 00 02"}};
    for (const Leaf& leaf : leaves) {
        SCOPED_TRACE(leaf.page);
        IndexTree tree(*pager, leaf.page, {}, 2);
        std::size_t entries = 0;
        auto at = tree.First();
        EXPECT_EQ(Hex(at.Key()), leaf.firstKey);
        for (; !at.AtEnd(); at.Next())
            ++entries;
        EXPECT_EQ(entries, leaf.entries);
    }
    // The first map page is full with 15 records; the last map of MSysObjects begins the next one.
    const TableDef objects = ReadTableDef(*pager, kObjectsPage);
    EXPECT_EQ(objects.columns.back().longValueOwned, (RowId{6, 14}));
    EXPECT_EQ(objects.columns.back().longValueFree, (RowId{7, 0}));
    EXPECT_EQ(ReadTableDef(*pager, kAcesPage).ownedPages, (RowId{12, 0}));
    EXPECT_EQ(ReadTableDef(*pager, kQueriesPage).columns.size(), 7u);
}

} // namespace
} // namespace jet
