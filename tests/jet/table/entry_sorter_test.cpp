#include "jet/table/entry_sorter.h"

#include "jet/store/crash_file_system.h"
#include "jet/support.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace jet {
namespace {

TEST(EntrySorter, GivesTheSameOrderFromMemoryAndFromRuns)
{
    constexpr unsigned kSeed = 1997;
    std::mt19937 random(kSeed);
    std::vector<std::pair<Bytes, RowId>> entries;
    for (std::uint32_t i = 0; i < 5000; ++i) {
        Bytes key(1 + random() % 20);
        std::ranges::generate(key, [&] { return static_cast<Byte>(random() % 3); });
        entries.emplace_back(std::move(key), RowId{1 + i / 200, static_cast<std::uint8_t>(i % 200)});
    }
    std::ranges::shuffle(entries, random);
    std::vector<std::pair<Bytes, RowId>> sorted = entries;
    std::ranges::sort(sorted);
    testing::CrashFileSystem disk;
    for (const std::size_t budget : {EntrySorter::kBudget, std::size_t{10'000}, std::size_t{0}}) {
        SCOPED_TRACE("seed " + std::to_string(kSeed) + ", budget " + std::to_string(budget));
        const std::size_t count = budget == 0 ? 200 : entries.size(); // each entry is a run of its own then
        std::vector<std::pair<Bytes, RowId>> expected = sorted;
        EntrySorter sorter(disk, budget);
        for (std::size_t i = 0; i < count; ++i)
            sorter.Add({entries[i].first, entries[i].second, entries[i].first.size() == 1});
        if (count < entries.size()) {
            expected.assign(entries.begin(), entries.begin() + static_cast<std::ptrdiff_t>(count));
            std::ranges::sort(expected);
        }
        for (int pass = 0; pass < 2; ++pass) {
            std::vector<std::pair<Bytes, RowId>> visited;
            sorter.ForEach([&](const EntrySorter::Entry& entry) {
                visited.emplace_back(Bytes(entry.key.begin(), entry.key.end()), entry.row);
                EXPECT_EQ(entry.allNull, entry.key.size() == 1);
            });
            EXPECT_TRUE(visited == expected);
        }
        EXPECT_EQ(sorter.Count(), count);
    }
}

TEST(EntrySorter, SaysWhenTheDiskUnderItsRunsIsFullOrFails)
{
    const auto sort = [](testing::CrashFileSystem& disk) {
        EntrySorter sorter(disk, 1000);
        const Bytes key(100, 7);
        for (std::uint32_t i = 0; i < 100; ++i)
            sorter.Add({key, RowId{1 + i, 0}, false});
        disk.PowerOff();
        sorter.ForEach([](const EntrySorter::Entry& /*entry*/) {});
    };
    testing::CrashFileSystem small;
    small.SetCapacity(500);
    EXPECT_EQ(testing::ErrorOf([&] { sort(small); }), ErrorNumber::DiskFull);
    testing::CrashFileSystem failing;
    EXPECT_EQ(testing::ErrorOf([&] { sort(failing); }), ErrorNumber::DiskError) << "when runs are read";
}

} // namespace
} // namespace jet
