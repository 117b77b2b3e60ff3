#include "jet/store/usage_map.h"

#include "jet/store/memory_pager.h"

#include <gtest/gtest.h>
#include <random>
#include <set>

namespace jet::testing {

namespace {

constexpr Byte kReferenceForm = 1;

struct MapPage {
    CrashFileSystem disk;
    std::unique_ptr<Pager> pager;
    PageNumber page;

    explicit MapPage(JetVersion version) : pager(NewPager(disk, version)), page(NewMapPage(*pager)) {}
    [[nodiscard]] ByteSpan Record(const UsageMap& map) const
    {
        return DataPage(pager->Read(page).Bytes(), page, pager->GetFormat()).Row(map.Record().slot);
    }
};

} // namespace

TEST(UsageMap, BehavesLikeASet)
{
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (const JetVersion version : kVersions) {
        // From a map that stays as it is to one that spreads over the largest possible file.
        for (const PageNumber range : {300u, 2'000u, 40'000u, 524'288u}) {
            SCOPED_TRACE(range);
            MapPage host(version);
            UsageMap map(*host.pager, *UsageMap::CreateRecord(*host.pager, host.page));
            UsageMap neighbour(*host.pager, *UsageMap::CreateRecord(*host.pager, host.page));
            neighbour.Add(5);
            std::set<PageNumber> model;
            for (int step = 0; step < 3000; ++step) {
                const auto page = static_cast<PageNumber>(random() % range);
                if (random() % 3 != 0) {
                    map.Add(page);
                    model.insert(page);
                } else {
                    map.Remove(page);
                    model.erase(page);
                }
                ASSERT_EQ(map.Contains(page), model.contains(page));
                const auto from = static_cast<PageNumber>(random() % range);
                const auto next = model.lower_bound(from);
                ASSERT_EQ(map.Next(from), next == model.end() ? std::nullopt : std::optional(*next));
            }
            EXPECT_EQ(map.Pages(), std::vector<PageNumber>(model.begin(), model.end()));
            EXPECT_EQ(neighbour.Pages(), std::vector<PageNumber>{5});
        }
    }
}

TEST(UsageMap, TakesTheFormThatAccessGivesIt)
{
    for (const JetVersion version : kVersions) {
        MapPage host(version);
        const std::size_t usual = host.pager->GetFormat().usageMap.recordSize;
        UsageMap map(*host.pager, *UsageMap::CreateRecord(*host.pager, host.page));
        // The first page of an empty map is where its bits begin.
        map.Add(3003);
        EXPECT_EQ(host.Record(map).size(), usual);
        EXPECT_EQ(LoadU32(host.Record(map), 1), 3000u);
        // A page behind the range makes the record longer, by whole groups of 32 pages.
        const auto behind = static_cast<PageNumber>(3000 + (usual - 5) * 8);
        map.Add(behind);
        EXPECT_EQ(host.Record(map).size(), usual + 4);
        EXPECT_EQ(host.Record(map)[0], 0);
        // A page before it asks for the other form, with a record of the usual size and a page of bits.
        map.Add(7);
        EXPECT_EQ(host.Record(map).size(), usual);
        EXPECT_EQ(host.Record(map)[0], kReferenceForm);
        EXPECT_EQ(LoadU32(host.Record(map), 1), host.page + 1);
        EXPECT_EQ(map.Pages(), (std::vector<PageNumber>{7, 3003, behind}));
        map.Destroy();
        EXPECT_EQ(FreePages(*host.pager), std::vector<PageNumber>{host.page + 1});
    }
}

} // namespace jet::testing
