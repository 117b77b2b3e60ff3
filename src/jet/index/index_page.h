#pragma once

#include "jet/base/format.h"
#include "jet/store/pager.h"

#include <cstdint>
#include <vector>

namespace jet {

/// The entries of one index page, unpacked, in one buffer.
///
/// A leaf's entry is key · row pointer (4 bytes, page and slot, most significant first); a node's entry has the child's
/// page number (4 bytes, most significant first) behind that.
class IndexEntries {
public:
    [[nodiscard]] std::size_t Count() const noexcept { return ends_.size(); }
    [[nodiscard]] ByteSpan operator[](std::size_t index) const noexcept;
    void Append(ByteSpan entry);
    void Insert(std::size_t index, ByteSpan entry);
    void Erase(std::size_t index);
    void Clear() noexcept;
    /// Entries `from` up to `to` (exclusive), appended to `out`.
    void CopyTo(IndexEntries& out, std::size_t from, std::size_t to) const;

    /// Bytes that the first entries and the last one have in common, leaving at least one byte of each.
    [[nodiscard]] std::size_t CommonPrefix() const noexcept;
    /// Bytes that the entries take on a page with a prefix of `prefix` bytes.
    [[nodiscard]] std::size_t PackedSize(std::size_t prefix) const noexcept;

private:
    Bytes bytes_;
    std::vector<std::uint32_t> ends_;
};

/// One index page, read in place. A view, cheap to make and to copy.
///
///   Jet 4  Jet 3  size  field (numbers little-endian)
///       0      0     1  3 node, 4 leaf
///       2      2     2  free bytes of the room for entries
///       4      4     4  definition page of the table
///      12      8     4  previous page of the level, 0 = none
///      16     12     4  next page of the level
///      20     16     4  tail: the last child of a node, which has no entry
///      24     20   2/1  prefix: bytes that every entry but the first leaves out, being those of the first
///      26     21     1  level, 0 in leaves
///      27     22        mask: bit k is set when an entry ends at byte k of the entries
///     480    248        entries, packed from the front
///
/// Invariant: the highest bit of the mask is the number of bytes used, and room - used is the free field.
/// Source: index pages written by Access 97, 2000 and 2003.
class IndexPage {
public:
    /// Throws CorruptPage when the page is no index page or its fields contradict each other.
    IndexPage(ByteSpan page, PageNumber number, const Format& format);

    [[nodiscard]] bool IsLeaf() const noexcept { return static_cast<PageType>(page_[0]) == PageType::IndexLeaf; }
    [[nodiscard]] PageNumber Previous() const noexcept { return LoadU32(page_, layout_->previous); }
    [[nodiscard]] PageNumber Next() const noexcept { return LoadU32(page_, layout_->next); }
    [[nodiscard]] PageNumber Tail() const noexcept { return LoadU32(page_, layout_->tail); }
    [[nodiscard]] std::size_t PrefixLength() const noexcept { return prefixLength_; }
    [[nodiscard]] std::uint8_t Level() const noexcept { return page_[layout_->level]; }
    [[nodiscard]] std::size_t Used() const noexcept { return used_; }
    [[nodiscard]] PageNumber Number() const noexcept { return number_; }

    /// Where each entry ends, counted from the first entry; throws CorruptPage when entries are too short.
    void ReadEnds(std::vector<std::uint16_t>& ends) const;
    /// All entries, whole.
    void ReadEntries(IndexEntries& entries) const;
    /// The last entry, whole, into `entry`; empty when there is none.
    void ReadLast(Bytes& entry) const;
    /// Index of the first entry that is >= `target` as bytes (a node's child page does not take part); `ends` from
    /// ReadEnds.
    [[nodiscard]] std::size_t LowerBound(ByteSpan target, const std::vector<std::uint16_t>& ends) const;
    /// Entry `index`, whole, into `entry`.
    void ReadEntry(std::size_t index, const std::vector<std::uint16_t>& ends, Bytes& entry) const;
    /// The child that entry `index` of a node names; the tail when `index` is the number of entries.
    [[nodiscard]] PageNumber Child(std::size_t index, const std::vector<std::uint16_t>& ends) const;

private:
    [[nodiscard]] ByteSpan Stored(std::size_t begin, std::size_t end) const noexcept;
    [[nodiscard]] ByteSpan Prefix() const noexcept { return Stored(0, prefixLength_); }

    ByteSpan page_;
    const Format::IndexPageLayout* layout_;
    PageNumber number_;
    std::size_t prefixLength_;
    std::size_t used_;
};

/// Writes to one index page.
class IndexPageEditor {
public:
    IndexPageEditor(const MutablePageRef& page, const Format& format) : page_(page), format_(&format) {}

    /// Makes an empty page of the level out of any page: links and tail are 0.
    void MakeEmpty(PageNumber definitionPage, std::uint8_t level);
    void SetPrevious(PageNumber page) { StoreU32(page_.Data(), format_->indexPage.previous, page); }
    void SetNext(PageNumber page) { StoreU32(page_.Data(), format_->indexPage.next, page); }
    void SetTail(PageNumber page) { StoreU32(page_.Data(), format_->indexPage.tail, page); }
    /// Replaces all entries. They must fit with this prefix.
    void WriteEntries(const IndexEntries& entries, std::size_t prefix);
    /// Puts one entry before stored entry `index` (`at` = the byte where that begins) without touching the prefix.
    /// False, and nothing changed, when it has no room or does not go with the prefix.
    [[nodiscard]] bool InsertInPlace(std::size_t index, std::size_t at, ByteSpan entry);

private:
    void ShiftMask(std::size_t fromBit, std::size_t by);

    MutablePageRef page_;
    const Format* format_;
};

} // namespace jet
