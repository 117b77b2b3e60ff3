#include "jet/store/pager.h"

#include "jet/store/memory_pager.h"
#include "support/shared.h"

#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>

namespace jet::testing {
namespace {

TEST(Pager, APageHeldAcrossACommitKeepsItsLaterChanges)
{
    CrashFileSystem disk;
    {
        const auto pager = NewPager(disk, JetVersion::Jet4, 1);
        const MutablePageRef page = pager->Allocate();
        pager->Commit();
        StoreU32(page.Data(), 100, 77);
        for (int i = 0; i < 200; ++i) // the cache runs over meanwhile
            static_cast<void>(pager->Allocate());
        pager->Commit();
    }
    EXPECT_EQ(LoadU32(OpenPager(disk)->Read(2).Bytes(), 100), 77u);
}

/// Allocates `count` pages and puts `stamp` into each.
void Grow(Pager& pager, unsigned count, std::uint32_t stamp)
{
    for (unsigned i = 0; i < count; ++i)
        StoreU32(pager.Allocate().Data(), 100, stamp);
}

TEST(Pager, ACommitHasLittleLeftToWriteHoweverMuchTheFileHasGrown)
{
    constexpr unsigned kPages = 10'000; // more than stay in memory
    CrashFileSystem disk;
    auto pager = NewPager(disk, JetVersion::Jet4);
    pager->Commit();
    pager->SetSavepoint(); // what is taken back has been written, and is written anew
    Grow(*pager, kPages, 1);
    EXPECT_TRUE(pager->RollBack());
    Grow(*pager, kPages, 2);
    StoreU32(pager->Write(10).Data(), 100, 3);
    const std::uint64_t before = disk.Operations();
    pager->Commit();
    EXPECT_LT(disk.Operations() - before, 50u) << "writes of 32 pages each";
    disk.SyncFolder("a.mdb");
    disk.Crash(pager, Loss::All);

    pager = OpenPager(disk);
    ASSERT_GT(pager->PageCount(), kPages);
    std::map<std::uint32_t, unsigned> stamps;
    for (PageNumber page = 0; page < pager->PageCount(); ++page)
        ++stamps[LoadU32(pager->Read(page).Bytes(), 100)];
    EXPECT_EQ(stamps[1], 0u);
    EXPECT_EQ(stamps[2], kPages - 1);
    EXPECT_EQ(LoadU32(pager->Read(10).Bytes(), 100), 3u);

    // Nothing stays of what was written and not committed.
    pager.reset();
    const Bytes content = disk.Content("a.mdb");
    pager = Pager::Open(disk.Open("a.mdb", OpenMode::ReadWrite), Pager::kDefaultCacheBytes,
                        std::make_unique<Journal>(disk, "a.mdb"));
    StoreU32(pager->Write(10).Data(), 100, 4);
    Grow(*pager, kPages, 5);
    EXPECT_GT(disk.Content("a.mdb").size(), content.size());
    pager.reset();
    EXPECT_EQ(disk.Content("a.mdb"), content);
}

TEST(Pager, TheLowestFreePageIsTakenHoweverTheMapIsStored)
{
    for (const JetVersion version : kVersions) {
        const unsigned seed = std::random_device{}();
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        CrashFileSystem disk;
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

TEST(Pager, TheMapOfFreePagesGrowsSoThatTheCheckerAgrees)
{
    REQUIRE_SHARED(shared);
    const velmora::testing::TempFolder folder;
    // Within the record, by a longer record, and by pages of bits.
    for (const auto& [name, pages] : {std::pair("adox_jet4.mdb", 300u),
                                      {"indexTestV2000.mdb", 2'000u},
                                      {"compIndexTestV1997.mdb", 3'000u},
                                      {"indexTestV1997.mdb", 17'000u}}) {
        SCOPED_TRACE(name);
        const auto copy = velmora::testing::CopyOf(shared / "corpus/mdb" / name, folder / name);
        {
            const auto pager = Pager::Open(OpenFile(copy, OpenMode::ReadWrite));
            std::vector<PageNumber> taken;
            while (pager->PageCount() < pages)
                taken.push_back(pager->Allocate().Number());
            for (const PageNumber page : taken)
                pager->Free(page);
            pager->Commit();
        }
        EXPECT_SOUND(copy);
    }
}

TEST(Pager, RefusesWhatIsNoPageToGiveBack)
{
    CrashFileSystem disk;
    const auto pager = NewPager(disk, JetVersion::Jet4);
    const PageNumber page = pager->Allocate().Number();
    pager->Free(page);
    for (const PageNumber wrong : {PageNumber{0}, PageNumber{1}, page, PageNumber{3}, PageNumber{1} << 24})
        EXPECT_THROW(pager->Free(wrong), Error) << wrong;
}

} // namespace
} // namespace jet::testing
