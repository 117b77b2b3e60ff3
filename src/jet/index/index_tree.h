#pragma once

#include "jet/base/format.h"
#include "jet/store/pager.h"
#include "jet/store/usage_map.h"

#include <functional>
#include <optional>
#include <vector>

namespace jet {

/// One index's B-tree: entries (key, row) in ascending order of their bytes. The root page never changes.
///
/// Appends in ascending order fill leaves completely, as Access does; the rightmost leaf is kept at hand, so such an insert
/// does not descend from the root. Fill, packing and splits follow what Access's own pages show.
class IndexTree {
public:
    struct Entry {
        Bytes key;
        RowId row;
    };
    /// Walks entries in order. Invalid after the tree is changed.
    class Cursor {
    public:
        [[nodiscard]] bool AtEnd() const noexcept { return !page_; }
        [[nodiscard]] ByteSpan Key() const noexcept;
        [[nodiscard]] RowId Row() const noexcept;
        void Next();

    private:
        friend class IndexTree;
        Pager* pager_ = nullptr;
        PageRef page_;
        std::vector<Entry> entries_; ///< of the page, unpacked
        std::size_t at_ = 0;
        std::size_t pagesSeen_ = 0; ///< a chain that goes round is found by this
    };

    /// `definitionPage` is the owner written into each page.
    IndexTree(Pager& pager, PageNumber root, RowId usageMap, PageNumber definitionPage);

    /// Makes `root`, a freshly allocated page, an empty leaf.
    static void MakeEmpty(const MutablePageRef& root, const Format& format, PageNumber definitionPage);

    /// The entry must not be there yet. Throws RecordTooLarge when an entry cannot fit a page.
    void Insert(ByteSpan key, RowId row);
    /// False when there is no such entry.
    bool Remove(ByteSpan key, RowId row);
    /// First entry whose key is >= `key`.
    [[nodiscard]] Cursor Seek(ByteSpan key) const;
    [[nodiscard]] Cursor First() const { return Seek({}); }
    /// Is there an entry with exactly this key?
    [[nodiscard]] bool Contains(ByteSpan key) const;
    /// Back to an empty root leaf; all other pages are freed.
    void Clear();
    /// Frees all pages, root included.
    void Destroy();
    [[nodiscard]] PageNumber Root() const noexcept { return root_; }

private:
    Pager* pager_;
    PageNumber root_;
    UsageMap pages_;
    PageNumber definitionPage_;
    PageNumber lastLeaf_ = 0; ///< rightmost leaf, 0 = not known
};

} // namespace jet
