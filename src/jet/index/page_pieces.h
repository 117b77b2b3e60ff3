#pragma once

#include "jet/index/index_page.h"

#include <vector>

namespace jet {

/// The children of a node, in order.
struct NodeChildren {
    EntryList keys; ///< per child the last leaf entry below it, or a bound above it; of the last child often empty
    std::vector<PageNumber> pages;

    [[nodiscard]] std::size_t Count() const noexcept { return pages.size(); }
    void Add(ByteSpan key, PageNumber page)
    {
        keys.Add(key);
        pages.push_back(page);
    }
    void AddFrom(const NodeChildren& other, std::size_t first, std::size_t count)
    {
        for (std::size_t i = first; i < first + count; ++i)
            Add(other.keys[i], other.pages[i]);
    }
    /// An entry of a node for each; that of the last is used only when it does not become the tail.
    [[nodiscard]] EntryList Entries() const;
};

/// The entries of a leaf with one more among them: a row of whole entries, though they lie packed, and none is put
/// together. It has a copy of the page, over which they can be laid out anew.
class GrownLeaf {
public:
    /// `added` belongs at `place`. Throws CorruptPage when the leaf's entries are not in order.
    GrownLeaf(const PageRef& leaf, const Format& format, std::size_t place, ByteSpan added);
    GrownLeaf(const GrownLeaf&) = delete; // leaf_ views page_
    GrownLeaf& operator=(const GrownLeaf&) = delete;

    [[nodiscard]] std::size_t Count() const noexcept { return places_.size(); } ///< the one more included
    /// Bytes of `count` entries from `first`, whole.
    [[nodiscard]] std::size_t Size(std::size_t first, std::size_t count) const noexcept
    {
        return SizeBefore(first + count) - SizeBefore(first);
    }
    [[nodiscard]] Bytes operator[](std::size_t index) const;
    void WriteTo(EntryWriter& writer, std::size_t first, std::size_t count) const;

private:
    [[nodiscard]] std::size_t SizeBefore(std::size_t index) const noexcept
    {
        const std::size_t old = index - static_cast<std::size_t>(index > addedAt_);
        return places_[old] - leaf_.Begin() + old * leaf_.Begin() + (index > addedAt_ ? added_.size() : 0);
    }
    [[nodiscard]] ByteSpan OwnPart(std::size_t index) const noexcept;

    Bytes page_;
    IndexPage leaf_;
    std::vector<std::uint16_t> places_; ///< of the leaf's entries, and its end
    std::size_t addedAt_;
    ByteSpan added_;
};

/// How a run of entries lies on a page.
struct PagePacking {
    std::size_t prefixSize = 0;
    std::size_t usedBytes = 0;
};

/// A run of entries that becomes one page.
struct PagePiece {
    std::size_t first = 0;
    std::size_t count = 0;
    PagePacking packing;
    PageNumber tail = 0; ///< of a node
    Bytes key;           ///< what a node above says of the page: the last leaf entry below it, if known

    [[nodiscard]] bool Fits(const Format& format) const noexcept { return packing.usedBytes <= format.indexPage.room; }
};

/// How many bytes a page leaves out of entries that ascend from `first` to `last`, when it is packed: those that all
/// share, but at least one byte of each stays.
[[nodiscard]] std::size_t LongestPrefix(ByteSpan first, ByteSpan last, const Format& format);
/// `leaf`, the rightmost, has no room for the last of `entries`, which are its own and that one: it stays as it is, and
/// the new leaf begins unpacked.
[[nodiscard]] std::vector<PagePiece> CutOffLast(const IndexPage& leaf, const GrownLeaf& entries);
/// The entries of a leaf with one more somewhere: one page, or two halves, by their bytes. Where an entry at the page's
/// edge spoils the prefix, so that one half has no room, the cut is the nearest to the middle that leaves room in both.
[[nodiscard]] std::vector<PagePiece> CutLeaf(const GrownLeaf& entries, const Format& format);
/// The children `first` up to `end`, with their `entries`, as one node: the last of them becomes its tail. Nodes stay
/// unpacked as long as they have room.
[[nodiscard]] PagePiece NodePiece(const NodeChildren& children, const EntryList& entries, std::size_t first,
                                  std::size_t end, const Format& format);
/// Children that may be too many for one node, two or more to each. The node at the tree's right edge, to which they
/// come in order, stays full.
[[nodiscard]] std::vector<PagePiece> CutNode(const NodeChildren& children, const EntryList& entries, bool isRightEdge,
                                             const Format& format);

} // namespace jet
