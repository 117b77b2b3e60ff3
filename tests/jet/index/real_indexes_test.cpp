#include "jet/index/index_key.h"
#include "jet/index/index_tree.h"
#include "jet/support.h"
#include "support/shared.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

/// Indexes that Access made: read as they stand, their pages packed anew, their keys made anew.
namespace jet {
namespace {

/// Writing the page's own entries with its own prefix gives the page's own bytes.
void ExpectPackedAlike(Pager& pager, const IndexPage& page, ByteSpan original)
{
    const Format& format = pager.GetFormat();
    const EntryList entries = page.Entries();
    const MutablePageRef copy = pager.Allocate();
    std::ranges::copy(original, copy.Data().begin());
    EntryWriter writer(copy, format, page.Prefix().size());
    entries.WriteTo(writer, 0, entries.Count());
    writer.Finish();
    const std::size_t used = format.indexPage.entries + page.UsedBytes();
    EXPECT_TRUE(std::ranges::equal(copy.Bytes().first(used), original.first(used))) << "page " << page.Number();
    pager.Free(copy.Number());
}

TEST(RealIndexes, PagesAndTreesReadAsTheyStand)
{
    REQUIRE_SHARED(shared);
    const velmora::testing::TempFolder folder;
    std::size_t trees = 0;
    for (const std::filesystem::path& path : velmora::testing::RealDatabases(shared)) {
        SCOPED_TRACE(path.filename());
        const auto copy = velmora::testing::CopyOf(path, folder / "copy.mdb");
        const auto pager = Pager::Open(OpenFile(copy, OpenMode::ReadWrite));
        const Format& format = pager->GetFormat();
        std::set<PageNumber> roots;
        std::set<PageNumber> children;
        for (PageNumber number = 2; number < pager->PageCount(); ++number) {
            const PageRef ref = pager->Read(number);
            if ((ref.Type() != PageType::IndexNode && ref.Type() != PageType::IndexLeaf) || pager->IsFree(number))
                continue;
            const IndexPage page(ref, format);
            ExpectPackedAlike(*pager, page, ref.Bytes());
            roots.insert(number);
            for (std::size_t at = page.Begin(); !page.IsLeaf() && at != page.End(); at = page.After(at))
                children.insert(page.Child(at));
            if (page.Tail() != 0)
                children.insert(page.Tail());
        }
        for (const PageNumber child : children)
            roots.erase(child);
        for (const PageNumber root : roots) {
            SCOPED_TRACE(root);
            ++trees;
            const IndexTree tree(*pager, root, {}, 0);
            Bytes previous;
            for (auto at = tree.First(); !at.AtEnd(); at.Next()) {
                const Bytes key(at.Key().begin(), at.Key().end());
                EXPECT_LE(previous, key);
                EXPECT_TRUE(tree.Contains(key));
                previous = key;
            }
        }
    }
    EXPECT_GT(trees, 300U);
}

TEST(RealIndexes, KeysAreThoseThatAccessWrote)
{
    REQUIRE_SHARED(shared);
    std::vector<std::string> command{DUMP_KEYS};
    for (const std::filesystem::path& path : velmora::testing::RealDatabases(shared))
        command.push_back(path.string());
    const auto result = velmora::testing::RunPython(command);
    ASSERT_EQ(result.status, 0) << result.errors;

    std::istringstream lines(result.output);
    std::size_t compared = 0;
    std::set<int> types;
    for (std::string line; std::getline(lines, line); ++compared) {
        SCOPED_TRACE(line);
        std::istringstream fields(line);
        int jet = 0, type = 0, isAscending = 0, locale = 0, version = 0;
        std::string key, stored;
        fields >> jet >> key;
        Bytes made;
        while (fields >> type >> isAscending >> locale >> version >> stored) {
            const Bytes value = testing::FromHex(std::string_view(stored).substr(1));
            AppendKey(made, FormatOf(jet == 3 ? JetVersion::Jet3 : JetVersion::Jet4),
                      {static_cast<ColumnType>(type),
                       isAscending ? SortOrder::Ascending : SortOrder::Descending,
                       {static_cast<std::uint16_t>(locale), static_cast<std::uint8_t>(version)}},
                      stored == "-" ? std::nullopt : std::optional<ByteSpan>(value));
            types.insert(type);
        }
        ASSERT_EQ(testing::Hex(made), testing::Hex(testing::FromHex(key)));
    }
    EXPECT_GT(compared, 5000U);
    EXPECT_GE(types.size(), 6U);
}

} // namespace
} // namespace jet
