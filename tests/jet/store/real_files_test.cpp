#include "jet/store/data_page.h"
#include "jet/store/usage_map.h"
#include "memory_file.h"
#include "support/shared.h"

#include <gtest/gtest.h>
#include <set>

namespace jet::testing {

namespace {

std::unique_ptr<Pager> OpenCopy(const std::filesystem::path& file, const std::filesystem::path& folder)
{
    std::filesystem::copy_file(file, folder / file.filename(), std::filesystem::copy_options::overwrite_existing);
    return Pager::Open(OpenFile(folder / file.filename(), OpenMode::ReadWrite));
}

} // namespace

TEST(RealFiles, PagesAndMapsSayWhatWeTakeThemToSay)
{
    REQUIRE_SHARED(shared);
    const velmora::testing::TempFolder folder;
    std::size_t dataPages = 0;
    std::size_t ownedPages = 0;
    for (const std::filesystem::path& file : velmora::testing::RealDatabases(shared)) {
        SCOPED_TRACE(file.filename());
        const auto pager = OpenCopy(file, folder.Path());
        const Format& format = pager->GetFormat();
        std::set<std::uint32_t> tables;
        for (PageNumber number = 1; number < pager->PageCount(); ++number) {
            const PageRef page = pager->Read(number);
            if (pager->IsFree(number))
                continue;
            if (page.Type() == PageType::Definition)
                tables.insert(number);
            if (page.Type() != PageType::Data)
                continue;
            const DataPage view(page.Bytes(), number, format);
            EXPECT_EQ(view.FreeBytes(), LoadU16(page.Bytes(), 2)) << "page " << number;
            for (std::size_t slot = 0; slot < view.SlotCount(); ++slot)
                static_cast<void>(view.Row(slot));
            ++dataPages;
        }
        // The system tables' maps name data pages that say whose they are.
        for (const PageNumber table : {kObjectsPage, kAcesPage, kQueriesPage, kRelationshipsPage}) {
            ASSERT_TRUE(tables.contains(table));
            const PageRef definition = pager->Read(table);
            const UsageMap owned(*pager, RowId::FromPointer(LoadU32(definition.Bytes(), format.definition.ownedPages)));
            const UsageMap room(*pager,
                                RowId::FromPointer(LoadU32(definition.Bytes(), format.definition.freeSpacePages)));
            for (const PageNumber page : owned.Pages()) {
                EXPECT_EQ(DataPage(pager->Read(page).Bytes(), page, format).Owner(), table);
                EXPECT_FALSE(pager->IsFree(page));
                ++ownedPages;
            }
            for (const PageNumber page : room.Pages())
                EXPECT_TRUE(owned.Contains(page));
        }
    }
    EXPECT_GT(dataPages, 200u);
    EXPECT_GT(ownedPages, 50u);
}

TEST(RealFiles, TheMapOfFreePagesGrowsSoThatTheCheckerAgrees)
{
    REQUIRE_SHARED(shared);
    const velmora::testing::TempFolder folder;
    struct Case {
        const char* name;
        PageNumber pages;
    };
    // Within the record, by a longer record, and by pages of bits.
    for (const Case& c : {Case{"adox_jet4.mdb", 300}, Case{"indexTestV2000.mdb", 2'000},
                          Case{"compIndexTestV1997.mdb", 3'000}, Case{"indexTestV1997.mdb", 17'000}}) {
        SCOPED_TRACE(c.name);
        {
            const auto pager = OpenCopy(shared / "corpus" / "mdb" / c.name, folder.Path());
            std::vector<PageNumber> taken;
            while (pager->PageCount() < c.pages)
                taken.push_back(pager->Allocate().Number());
            for (const PageNumber page : taken)
                pager->Free(page);
            pager->Commit();
        }
        EXPECT_SOUND(folder / c.name);
    }
}

} // namespace jet::testing
