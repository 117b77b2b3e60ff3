#pragma once

#include "jet/index/index_tree.h"
#include "jet/store/data_page.h"
#include "jet/store/memory_file.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <optional>
#include <set>
#include <vector>

namespace jet::testing {

inline constexpr PageNumber kOwner = 77;

/// A tree in a file of its own.
struct TreeFile {
    explicit TreeFile(JetVersion version)
        : pager(NewPager(disk, version)), map(*pager, NewMap()), root(pager->Allocate().Number()),
          tree(*pager, root, map.Record(), kOwner)
    {
        IndexTree::MakeEmpty(pager->Write(root), pager->GetFormat(), kOwner);
        map.Add(root);
    }
    RowId NewMap()
    {
        const MutablePageRef page = pager->Allocate();
        DataPageEditor::MakeEmpty(page, pager->GetFormat(), 0);
        return UsageMap::CreateRecord(*pager, page.Number()).value();
    }
    /// Its pages, level by level from the root, in the order of the nodes' entries.
    std::vector<std::vector<PageNumber>> Levels()
    {
        std::vector<std::vector<PageNumber>> levels{{root}};
        for (;;) {
            std::vector<PageNumber> below;
            for (const PageNumber number : levels.back()) {
                const PageRef ref = pager->Read(number);
                const IndexPage page(ref, pager->GetFormat());
                for (std::size_t place = page.Begin(); !page.IsLeaf() && place != page.End(); place = page.After(place))
                    below.push_back(page.Child(place));
                if (!page.IsLeaf())
                    below.push_back(page.Tail());
            }
            if (below.empty())
                return levels;
            levels.push_back(below);
        }
    }

    MemoryDisk disk;
    std::unique_ptr<Pager> pager;
    UsageMap map;
    PageNumber root;
    IndexTree tree;
};

/// What the nodes above say of a page: its entries are greater than `above`, and none is greater than `last`.
struct Bounds {
    std::optional<Bytes> above;
    std::optional<Bytes> last;
};

/// Is every page of the tree as the format wants it, and does the tree hold exactly `expected` (key and row pointer)?
inline void CheckTree(TreeFile& file, const std::set<Bytes>& expected)
{
    const Format& format = file.pager->GetFormat();
    const auto levels = file.Levels();
    std::set<PageNumber> reached;
    std::vector<Bytes> found;
    std::vector<Bounds> bounds{{}};
    for (std::size_t height = 0; height < levels.size(); ++height) {
        const std::vector<PageNumber>& level = levels[height];
        std::vector<Bounds> boundsBelow;
        std::optional<Bytes> previous;
        for (std::size_t i = 0; i < level.size(); ++i) {
            SCOPED_TRACE("page " + std::to_string(level[i]) + ", level " + std::to_string(levels.size() - 1 - height));
            ASSERT_TRUE(reached.insert(level[i]).second);
            const PageRef ref = file.pager->Read(level[i]);
            const IndexPage page(ref, format);
            const EntryList entries = page.Entries();
            ASSERT_EQ(page.IsLeaf(), height + 1 == levels.size());
            ASSERT_EQ(page.Level(), levels.size() - 1 - height);
            ASSERT_EQ(ref.Bytes()[1], 1);
            ASSERT_EQ(LoadU32(ref.Bytes(), 4), kOwner);
            ASSERT_EQ(LoadU16(ref.Bytes(), 2), page.FreeBytes());
            ASSERT_EQ(page.Previous(), i == 0 ? 0 : level[i - 1]);
            ASSERT_EQ(page.Next(), i + 1 == level.size() ? 0 : level[i + 1]);
            ASSERT_EQ(page.Tail() == 0, page.IsLeaf());
            ASSERT_TRUE(entries.Count() != 0 || levels.size() == 1);
            for (std::size_t e = 0; e < entries.Count(); ++e) {
                const ByteSpan entry = entries[e].first(entries[e].size() - (page.IsLeaf() ? 0 : 4));
                Bytes own(entry.begin(), entry.end());
                ASSERT_TRUE(!previous || *previous < own);
                ASSERT_TRUE(!bounds[i].above || *bounds[i].above < own);
                ASSERT_TRUE(!bounds[i].last || own <= *bounds[i].last);
                if (page.IsLeaf())
                    found.push_back(own);
                else
                    boundsBelow.push_back({e == 0 ? bounds[i].above : previous, own});
                previous = own;
            }
            if (!page.IsLeaf())
                boundsBelow.push_back({previous, bounds[i].last});
        }
        bounds = std::move(boundsBelow);
    }
    ASSERT_TRUE(std::ranges::equal(found, expected));
    const std::vector<PageNumber> mapped = file.map.Pages();
    ASSERT_TRUE(std::ranges::equal(mapped, reached));
}

} // namespace jet::testing
