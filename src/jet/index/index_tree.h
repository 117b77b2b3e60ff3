#pragma once

#include "jet/base/format.h"
#include "jet/index/index_page.h"
#include "jet/store/pager.h"
#include "jet/store/usage_map.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace jet {

/// One index's B-tree: entries (key, row) in ascending order of their bytes. The root page never changes.
///
/// Appends in ascending order fill leaves completely, as Access does; the rightmost leaf is kept at hand, so such an
/// insert does not descend from the root. Fill, packing and splits follow what Access's own pages show.
///
/// A node's entry names a child and holds that child's last entry; the rightmost child of every node has no entry and
/// is named by the tail. In trees of three and more levels the entry for a node holds the last entry of the subtree,
/// its tail included, so that a search that takes the first entry >= its target always goes down the right way.
class IndexTree {
public:
    /// Walks entries in order. Invalid after the tree is changed.
    class Cursor {
    public:
        [[nodiscard]] bool AtEnd() const noexcept { return at_ >= entries_.Count(); }
        [[nodiscard]] ByteSpan Key() const noexcept;
        [[nodiscard]] RowId Row() const noexcept;
        void Next();

    private:
        friend class IndexTree;
        void Load(PageNumber leaf);

        Pager* pager_ = nullptr;
        IndexEntries entries_; ///< of one leaf
        std::size_t at_ = 0;
        PageNumber next_ = 0;
        std::size_t pagesSeen_ = 0; ///< a chain that goes round is found by this
    };

    /// `definitionPage` is the owner written into each page.
    IndexTree(Pager& pager, PageNumber root, RowId usageMap, PageNumber definitionPage);

    /// Makes `root`, a freshly allocated page, an empty leaf.
    static void MakeEmpty(const MutablePageRef& root, const Format& format, PageNumber definitionPage);

    /// Adds an entry that is not there yet; true when no entry beside it has the same key. Throws RecordTooLarge when
    /// the entry is larger than a third of a page, which a node could not hold beside others.
    bool Insert(ByteSpan key, RowId row);
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
    /// A page on the way down and the child taken there: an entry's index, or the number of entries for the tail.
    struct Step {
        PageNumber page = 0;
        std::size_t child = 0;
    };
    using Path = std::vector<Step>;

    [[nodiscard]] const Format& GetFormat() const noexcept { return pager_->GetFormat(); }
    [[nodiscard]] PageRef Descend(ByteSpan target, Path* path) const;
    [[nodiscard]] PageRef DescendToLast(Path& path) const;
    bool InsertBehindLast(bool& isNew);
    void AppendToLeaf(const MutablePageRef& leaf);
    void InsertRewriting(Path& path, const MutablePageRef& leaf, std::size_t at);
    void StartLeaf(const MutablePageRef& leaf, ByteSpan last);
    [[nodiscard]] bool HasNeighbourKey(const IndexPage& page, std::size_t at) const;
    void StoreOrSplit(Path& path, PageNumber page, IndexEntries& entries, bool atEnd);
    void Split(Path& path, PageNumber page, IndexEntries& entries, bool atEnd);
    void SplitRoot(IndexEntries& lower, IndexEntries& upper, ByteSpan separator, PageNumber lowerTail);
    void AddToParent(Path& path, ByteSpan separator, PageNumber lower, PageNumber upper);
    [[nodiscard]] MutablePageRef NewPage(std::uint8_t level);
    void LinkBehind(PageNumber page, const MutablePageRef& fresh);
    void Unlink(PageNumber page);
    void FreePage(PageNumber page);
    void RemoveChild(Path& path);
    void ReplaceSeparator(Path& path, ByteSpan last);
    void Collapse(PageNumber child);
    void JoinNeighbour(Path& path);
    void LastOf(PageNumber page, Bytes& entry) const;

    Pager* pager_;
    PageNumber root_;
    UsageMap pages_;
    PageNumber definitionPage_;
    PageNumber lastLeaf_ = 0; ///< rightmost leaf, 0 = not known

    // Buffers that are kept from insert to insert.
    Bytes entry_;
    mutable Bytes last_;
    mutable std::vector<std::uint16_t> ends_;
};

} // namespace jet
