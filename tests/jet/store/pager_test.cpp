#include "jet/store/pager.h"

#include "jet/error.h"
#include "memory_file.h"

#include <gtest/gtest.h>
#include <random>
#include <set>

namespace jet::testing {

namespace {

/// Gives a page content that tells which page it is.
void Sign(const MutablePageRef& page)
{
    StoreU32(page.Data(), 100, page.Number());
}

} // namespace

TEST(Pager, WhatWasCommittedIsThereAgain)
{
    for (const JetVersion version : kBothVersions) {
        MemoryDisk disk;
        {
            // A cache far smaller than the file: most pages are written before the commit, and read again.
            const auto pager = NewPager(disk, version, 1);
            for (int i = 0; i < 500; ++i)
                Sign(pager->Allocate());
            pager->Free(100);
            for (PageNumber page = 2; page < 502; page += 7)
                EXPECT_EQ(LoadU32(pager->Read(page).Bytes(), 100), page);
            pager->Commit();
        }
        EXPECT_EQ(disk.size, 502 * FormatOf(version).pageSize);
        const auto pager = OpenPager(disk);
        EXPECT_EQ(pager->GetFormat().version, version);
        EXPECT_EQ(pager->PageCount(), 502u);
        for (PageNumber page = 2; page < 502; ++page)
            EXPECT_EQ(LoadU32(pager->Read(page).Bytes(), 100), page);
        EXPECT_EQ(FreePages(*pager), std::vector<PageNumber>{100});
        EXPECT_EQ(pager->Allocate().Number(), 100u);
        EXPECT_EQ(pager->Allocate().Number(), 502u);
    }
}

TEST(Pager, APageHeldAcrossACommitKeepsItsLaterChanges)
{
    MemoryDisk disk;
    {
        const auto pager = NewPager(disk, JetVersion::Jet4, 1);
        const MutablePageRef page = pager->Allocate();
        pager->Commit();
        Sign(page);
        for (int i = 0; i < 200; ++i) // the cache runs over meanwhile
            static_cast<void>(pager->Allocate());
        pager->Commit();
    }
    EXPECT_EQ(LoadU32(OpenPager(disk)->Read(2).Bytes(), 100), 2u);
}

TEST(Pager, TheLowestFreePageIsTakenHoweverTheMapIsStored)
{
    for (const JetVersion version : kBothVersions) {
        const unsigned seed = std::random_device{}();
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        MemoryDisk disk;
        std::set<PageNumber> freePages;
        {
            const auto pager = NewPager(disk, version, 1 << 20);
            // Past the largest inline map, and past the first page of bitmaps.
            const std::size_t wanted = FormatOf(version).usageMap.bitsPerPage + 5000;
            while (pager->PageCount() < wanted)
                static_cast<void>(pager->Allocate());
            for (int i = 0; i < 3000; ++i) {
                const auto page = static_cast<PageNumber>(2 + random() % (wanted - 2));
                if (freePages.contains(page) || pager->Read(page).Type() == PageType::UsageBitmap)
                    continue;
                pager->Free(page);
                freePages.insert(page);
            }
            for (int i = 0; i < 500; ++i) {
                EXPECT_EQ(pager->Allocate().Number(), *freePages.begin());
                freePages.erase(freePages.begin());
            }
            pager->Commit();
        }
        const auto pager = OpenPager(disk);
        EXPECT_EQ(FreePages(*pager), std::vector<PageNumber>(freePages.begin(), freePages.end()));
        EXPECT_EQ(pager->Allocate().Number(), *freePages.begin());
    }
}

TEST(Pager, AFullDatabaseIsAnErrorThatLeavesItUsable)
{
    MemoryDisk disk;
    const auto pager = NewPager(disk, JetVersion::Jet3, 1 << 20);
    EXPECT_THROW(for (;;) static_cast<void>(pager->Allocate()), Error);
    EXPECT_EQ(pager->PageCount(), pager->GetFormat().maxPages);
    EXPECT_THROW(static_cast<void>(pager->Allocate()), Error);
    pager->Free(4711);
    EXPECT_EQ(pager->Allocate().Number(), 4711u);
    pager->Commit();
    EXPECT_EQ(disk.size, std::uint64_t{1} << 30);
    EXPECT_TRUE(FreePages(*OpenPager(disk)).empty());
}

TEST(Pager, RefusesWhatIsNoPageToGiveBack)
{
    MemoryDisk disk;
    const auto pager = NewPager(disk, JetVersion::Jet4);
    const PageNumber page = pager->Allocate().Number();
    pager->Free(page);
    for (const PageNumber wrong : {PageNumber{0}, PageNumber{1}, page, PageNumber{3}, PageNumber{1} << 24})
        EXPECT_THROW(pager->Free(wrong), Error) << wrong;
    EXPECT_THROW(static_cast<void>(pager->Read(3)), Error);
    EXPECT_THROW(static_cast<void>(pager->Read(1, PageType::IndexLeaf)), Error);
}

TEST(Pager, AFileThatIsNotWholePagesIsRefused)
{
    for (const std::uint64_t size : {0, 20, 4096 + 2048}) {
        MemoryDisk disk;
        NewPager(disk, JetVersion::Jet4)->Commit();
        disk.size = size;
        EXPECT_THROW(static_cast<void>(OpenPager(disk)), Error) << size;
    }
}

} // namespace jet::testing
