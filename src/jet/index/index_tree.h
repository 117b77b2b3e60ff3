#pragma once

#include "jet/base/format.h"
#include "jet/index/index_page.h"
#include "jet/index/page_pieces.h"
#include "jet/store/pager.h"
#include "jet/store/usage_map.h"

#include <algorithm>
#include <cassert>
#include <span>
#include <utility>
#include <vector>

namespace jet {

/// One index's B-tree: entries (key, row) in ascending order of their bytes. The root page never changes. One object
/// per index that is changed.
///
/// Appends in ascending order fill leaves completely, as Access does; the greatest entry is kept at hand, with its leaf
/// and how that is filled, so such an insert neither descends from the root nor searches. Others often come beside the
/// one before, as the parts of one whole do that are saved before it: there they are looked for first. Fill, packing
/// and splits follow what Access's own pages show.
///
/// Every node has one child or more with an entry, and a tail, its last child, for which it has none. A child's entry
/// is a copy of the last leaf entry below it, what its own tail leads to included; after removals it may be greater
/// than that, but it is less than the first leaf entry of what follows. So the first entry that is not less than what
/// is wanted leads to it, else the tail does, and nowhere else need be looked. Nodes on the tree's right edge are
/// tails: appending changes nothing above them.
///
/// In a tree in which this does not hold, entries may be missed, and a change may end with CorruptPage.
class IndexTree {
public:
    /// Walks entries in order. Invalid after the tree is changed.
    class Cursor {
    public:
        [[nodiscard]] bool AtEnd() const noexcept { return !page_; }
        [[nodiscard]] ByteSpan Key() const noexcept { return ByteSpan(entry_).first(entry_.size() - kRowPointerSize); }
        [[nodiscard]] RowId Row() const noexcept
        {
            return RowId::FromPointer(LoadBigU32(entry_, entry_.size() - kRowPointerSize));
        }
        void Next();

    private:
        friend class IndexTree;
        void Settle();

        Pager* pager_ = nullptr;
        PageRef page_; ///< none at the end
        std::size_t place_ = 0;
        Bytes entry_;
        std::size_t pagesSeen_ = 0; ///< a chain that goes round is found by this
    };

    /// `definitionPage` is the owner written into each page; `distinctKeys` go on being counted.
    IndexTree(Pager& pager, PageNumber root, RowId usageMap, PageNumber definitionPage, std::uint32_t distinctKeys = 0);

    /// Makes `root`, a freshly allocated page, an empty leaf.
    static void MakeEmpty(const MutablePageRef& root, const Format& format, PageNumber definitionPage);

    /// How a key compares with that of the tree's last entry, as far as this is at hand.
    struct Standing {
        bool isBehind = false;  ///< it comes behind all keys
        bool isLast = false;    ///< it is the last key
        std::size_t shared = 0; ///< how many bytes of its beginning the last key has as well
    };
    // These three come with every record, one after the other, so they stand here.

    [[nodiscard]] Standing StandingOf(ByteSpan key) const noexcept
    {
        if (greatest_.empty())
            return {};
        assert(lastLeaf_ != 0); // T9
        const ByteSpan last = ByteSpan(greatest_).first(greatest_.size() - kRowPointerSize);
        const std::size_t shared = CountShared(key, last);
        // No key is the beginning of another one, so when one of the two ends here, so does the other.
        if (shared == key.size() || shared == last.size())
            return {.isLast = key.size() == last.size(), .shared = shared};
        return {.isBehind = key[shared] > last[shared], .shared = shared};
    }
    /// The last leaf, when Append() can add the entry: it is greater than all others, and the leaf is at hand and has
    /// room for it; else none.
    [[nodiscard]] PageAtHand LeafToAppend(ByteSpan key, const Standing& standing, RowId row) const noexcept
    {
        const std::size_t size = key.size() + kRowPointerSize;
        if (lastUsed_ == 0 || size <= lastPrefix_ || size - lastPrefix_ > GetFormat().indexPage.room - lastUsed_ ||
            size > std::min(MaxEntrySize(), greatest_.capacity()))
            return {};
        if (standing.isLast ? !IsBehindLast(key.size(), row) : !standing.isBehind || standing.shared < lastPrefix_)
            return {};
        return pager_->AtHand(lastLeaf_);
    }
    /// Adds an entry to `leaf`, which LeafToAppend() has given for it, and cannot fail.
    void Append(const PageAtHand& leaf, ByteSpan key, const Standing& standing, RowId row)
    {
        assert(leaf.Number() == lastLeaf_); // T9
        MakeEntry(greatest_, key, row);
        const ByteSpan own = ByteSpan(greatest_).subspan(lastPrefix_);
        IndexPageEditor::Append(leaf, GetFormat(), lastUsed_, own);
        lastUsed_ += static_cast<std::uint32_t>(own.size());
        distinctKeys_ += standing.isBehind ? 1 : 0;
    }

    /// Adds an entry that is not there yet; true when no other has the same key. Throws RecordTooLarge when the key is
    /// longer than about half a page (nothing has changed then), DatabaseFull.
    bool Insert(ByteSpan key, RowId row);
    /// False when there is no such entry.
    bool Remove(ByteSpan key, RowId row);
    /// First entry whose key is >= `key`.
    [[nodiscard]] Cursor Seek(ByteSpan key) const;
    /// The entry of `row` under this key, or the first behind where it would be.
    [[nodiscard]] Cursor Seek(ByteSpan key, RowId row) const;
    [[nodiscard]] Cursor First() const { return Seek({}); }
    /// Is there an entry with exactly this key?
    [[nodiscard]] bool Contains(ByteSpan key) const;
    /// Back to an empty root leaf; all other pages are freed.
    void Clear();
    /// Frees all pages, root included. The usage map stays, empty.
    void Destroy();
    [[nodiscard]] PageNumber Root() const noexcept { return root_; }
    /// Counted up with each new key and never down, as the engine of Access does: it guides the planner of queries
    /// only.
    [[nodiscard]] std::uint32_t DistinctKeys() const noexcept { return distinctKeys_; }

private:
    /// A node on the way down to a leaf, and the child taken.
    struct Step {
        PageNumber page;
        std::size_t child; ///< 0 to number of entries
        std::size_t place; ///< of its entry; of the tail, which has none, the end
        bool isTail;
    };
    using Path = std::vector<Step>;

    [[nodiscard]] const Format& GetFormat() const noexcept { return pager_->GetFormat(); }
    [[nodiscard]] IndexPage View(const PageRef& page) const { return {page, GetFormat()}; }
    /// With this limit every node has room for two entries, so that no split can leave a node without one.
    [[nodiscard]] std::size_t MaxEntrySize() const noexcept
    {
        return GetFormat().indexPage.room / 2 - kChildPointerSize;
    }
    /// Of one key the rows count, and the prefix may reach into their pointers.
    [[nodiscard]] bool IsBehindLast(std::size_t keySize, RowId row) const noexcept
    {
        const std::uint32_t last = LoadBigU32(greatest_, keySize);
        const std::size_t beyond = lastPrefix_ > keySize ? lastPrefix_ - keySize : 0;
        return last < row.Pointer() && (std::uint64_t{last ^ row.Pointer()} << 8 * beyond) >> 32 == 0;
    }
    /// key, page, slot: the bytes by which entries are ordered.
    static void MakeEntry(Bytes& entry, ByteSpan key, RowId row)
    {
        // Mostly of the size that it had: then no byte is moved or cleared first.
        entry.resize(key.size() + kRowPointerSize);
        CopyBytes(entry.data(), key.data(), key.size());
        StoreBigU32(entry, key.size(), row.Pointer());
    }

    struct Found {
        PageRef leaf;
        std::size_t place;
    };

    // Search (index_tree.cpp).
    [[nodiscard]] Found Find(ByteSpan wanted) const;
    [[nodiscard]] PageRef FindLeaf(ByteSpan wanted) const;
    [[nodiscard]] PageRef Descend(ByteSpan wanted, Path* path) const;
    [[nodiscard]] bool HasNeighbour(const IndexPage& leaf, std::size_t place, ByteSpan key) const;

    // Changes of more than one page (index_tree_change.cpp). A step of `path` is named by its depth; path.size() is
    // that of the leaf.
    void InsertRebuilding();
    void ExtendLastLeaf(const Path& path, const PageRef& ref);
    [[nodiscard]] bool PackAndInsert(const PageRef& ref);
    void AddLeaf(const Path& path, const IndexPage& leaf);
    void RemoveLeaf(PageNumber leaf);
    template <typename Entries>
    void StorePage(const Path& path, std::size_t depth, PageNumber page, std::uint8_t level, const Entries& entries,
                   std::span<const PagePiece> pieces);
    void AddChild(const Path& path, std::size_t depth, ByteSpan key, PageNumber page, PageNumber added);
    [[nodiscard]] bool AddChildInPlace(const Step& step, ByteSpan key, PageNumber page, PageNumber added);
    void StoreNode(const Path& path, std::size_t depth, std::uint8_t level, const NodeChildren& children);
    void ReplaceChildren(const Path& path, std::size_t depth, std::size_t first, std::size_t count,
                         const NodeChildren& replacement);
    void RemovePage(const Path& path, std::size_t depth, PageNumber page);
    void JoinSibling(const Path& path, std::size_t depth, const NodeChildren& only);
    void TakeContentOf(PageNumber child);
    [[nodiscard]] PageNumber NewPage();
    void Unlink(PageNumber page);
    void FreePage(PageNumber page);
    void Forget() noexcept;
    [[nodiscard]] std::pair<PageNumber, PageNumber> Neighbours(PageNumber page) const;
    [[nodiscard]] NodeChildren ReadChildren(PageNumber node) const;
    [[nodiscard]] static std::uint8_t LevelAt(const Path& path, std::size_t depth) noexcept
    {
        return static_cast<std::uint8_t>(path.size() - depth);
    }

    // What an append takes.
    Pager* pager_;
    Bytes greatest_;               ///< the tree's last entry, empty = not known
    PageNumber lastLeaf_ = 0;      ///< rightmost leaf, 0 = not known
    std::uint32_t lastUsed_ = 0;   ///< bytes of entries in the rightmost leaf, 0 = not known
    std::uint32_t lastPrefix_ = 0; ///< of the rightmost leaf, when lastUsed_ is known
    std::uint32_t distinctKeys_;

    PageNumber root_;
    UsageMap pages_;
    PageNumber definitionPage_;
    Bytes entry_; ///< the one that is inserted or removed
    /// Where something was last looked for or inserted. A guess, true or not: leaf 0 = none.
    mutable PageNumber guessedLeaf_ = 0;
    mutable std::size_t guessedPlace_ = 0;
};

} // namespace jet
