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

/// A run of entries that becomes one page. Views the list, or the children, that it was cut from.
struct PagePiece {
    std::size_t first = 0;
    std::size_t count = 0;
    PagePacking packing;
    PageNumber tail = 0; ///< of a node
    ByteSpan key;        ///< what a node above says of the page: the last leaf entry below it, if known

    [[nodiscard]] bool Fits(const Format& format) const noexcept { return packing.usedBytes <= format.indexPage.room; }
};

/// `leaf`, the rightmost, has no room for the last of `entries`, which are its own and that one. It is packed when it
/// is full for the first time, goes on taking entries that share its prefix, and is then left as it is; the new leaf
/// begins unpacked.
[[nodiscard]] std::vector<PagePiece> ExtendLastLeaf(const IndexPage& leaf, const EntryList& entries,
                                                    const Format& format);
/// The entries of a leaf with one more somewhere: one page, or two halves, by their bytes. Where an entry at the page's
/// edge spoils the prefix, so that one half has no room, the cut is the nearest to the middle that leaves room in both.
[[nodiscard]] std::vector<PagePiece> CutLeaf(const EntryList& entries, const Format& format);
/// The children `first` up to `end`, with their `entries`, as one node: the last of them becomes its tail. Nodes stay
/// unpacked as long as they have room.
[[nodiscard]] PagePiece NodePiece(const NodeChildren& children, const EntryList& entries, std::size_t first,
                                  std::size_t end, const Format& format);
/// Children that may be too many for one node, two or more to each. The node at the tree's right edge, to which they
/// come in order, stays full.
[[nodiscard]] std::vector<PagePiece> CutNode(const NodeChildren& children, const EntryList& entries, bool isRightEdge,
                                             const Format& format);

} // namespace jet
