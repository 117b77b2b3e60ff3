#include "jet/index/index_page.h"

#include "jet/error.h"
#include "jet/store/memory_file.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <set>

namespace jet {
namespace {

using testing::MemoryDisk;

/// Entries that all begin alike, so that prefixes of every length occur.
Bytes RandomEntry(std::mt19937& random, std::size_t shared)
{
    Bytes entry(shared, 0x55);
    const std::size_t size = 5 + random() % 60;
    while (entry.size() < shared + size)
        entry.push_back(static_cast<Byte>(random() % 250));
    entry.push_back(0xFF); // so that none is a prefix of another
    return entry;
}

TEST(IndexPage, ChangesInPlaceAgreeWithRewriting)
{
    for (const JetVersion version : testing::kBothVersions) {
        MemoryDisk disk;
        const std::unique_ptr<Pager> pager = testing::NewPager(disk, version);
        const Format& format = pager->GetFormat();
        for (const unsigned seed : {1U, 2U, 3U}) {
            SCOPED_TRACE("Jet " + std::to_string(3 + static_cast<int>(version)) + ", seed " + std::to_string(seed));
            std::mt19937 random(seed);
            const MutablePageRef page = pager->Allocate();
            IndexPageEditor::MakeEmpty(page, format, 7, 0);
            IndexPageEditor editor(page, format);
            std::set<Bytes> model;
            for (int step = 0; step < 1000; ++step) {
                const IndexPage view = editor.View();
                if (random() % 5 < 3 || model.empty()) {
                    const Bytes entry = RandomEntry(random, 70);
                    if (model.contains(entry))
                        continue;
                    const std::size_t free = view.FreeBytes();
                    const std::size_t own = entry.size() - view.Prefix().size();
                    ASSERT_EQ(editor.Insert(view, view.LowerBound(entry), entry), own <= free);
                    if (own <= free)
                        model.insert(entry);
                } else {
                    const auto victim = std::next(model.begin(), static_cast<long>(random() % model.size()));
                    const std::size_t place = view.LowerBound(*victim);
                    ASSERT_EQ(view.Compare(place, *victim), 0);
                    editor.Remove(view, place);
                    model.erase(victim);
                }
                if (step % 100 == 50) {
                    const EntryList entries = editor.View().Entries();
                    editor.SetEntries(entries, 0, entries.Count(), Packed(format, entries, 0, entries.Count()));
                }
                const EntryList entries = editor.View().Entries();
                std::set<Bytes> found;
                for (std::size_t i = 0; i < entries.Count(); ++i)
                    found.emplace_hint(found.end(), entries[i].begin(), entries[i].end());
                ASSERT_EQ(found, model);
                ASSERT_EQ(LoadU16(page.Bytes(), 2), editor.View().FreeBytes());
            }
        }
    }
}

TEST(IndexPage, DamagedPagesAreRefused)
{
    const Format& format = FormatOf(JetVersion::Jet4);
    const Format::IndexPageLayout& layout = format.indexPage;
    struct Case {
        const char* name;
        std::size_t at;
        Byte value;
    };
    const Case cases[] = {
        {"not an index page", 0, 1},
        {"an entry behind the page's end", layout.mask + layout.maskSize - 1, 0x10},
        {"a prefix longer than the first entry", layout.prefixLength, 9},
        {"an entry of one byte", layout.mask, 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Bytes page(format.pageSize);
        page[0] = static_cast<Byte>(PageType::IndexLeaf);
        page[layout.mask + 1] = 2; // one entry of 9 bytes
        EXPECT_EQ(IndexPage(page, 1, format).Entries().Count(), 1U);
        page[c.at] = c.value;
        EXPECT_THROW((void)IndexPage(page, 1, format).Entries(), Error);
    }
}

} // namespace
} // namespace jet
