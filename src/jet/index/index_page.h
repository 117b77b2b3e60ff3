#pragma once

#include "jet/base/format.h"
#include "jet/store/bitmap.h"
#include "jet/store/pager.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace jet {

/// Bytes behind the key in an entry: the row pointer and, in nodes, the child page.
inline constexpr std::size_t kChildPointerSize = 4;

class EntryWriter;

/// Less than, equal to or greater than 0, as `a` sorts before, with or after `b`: byte by byte, the shorter one first.
[[nodiscard]] int CompareBytes(ByteSpan a, ByteSpan b) noexcept;

/// How many bytes at their beginning the two have in common.
[[nodiscard]] inline std::size_t CountShared(ByteSpan a, ByteSpan b) noexcept
{
    const std::size_t size = std::min(a.size(), b.size());
    std::size_t at = 0;
    // The last words of each kind may overlap what is known to be equal.
    if (size >= 8) {
        for (;; at = std::min(at + 8, size - 8)) {
            if (const std::uint64_t differ = LoadU64(a, at) ^ LoadU64(b, at); differ != 0)
                return at + static_cast<std::size_t>(std::countr_zero(differ)) / 8;
            if (at == size - 8)
                return size;
        }
    }
    if (size >= 4) {
        for (;; at = size - 4) {
            if (const std::uint32_t differ = LoadU32(a, at) ^ LoadU32(b, at); differ != 0)
                return at + static_cast<std::size_t>(std::countr_zero(differ)) / 8;
            if (at == size - 4)
                return size;
        }
    }
    while (at < size && a[at] == b[at])
        ++at;
    return at;
}

[[nodiscard]] inline bool SameBytes(ByteSpan a, ByteSpan b) noexcept
{
    return a.size() == b.size() && CountShared(a, b) == a.size();
}

/// Entries of an index page put back to full length, in order, all in one buffer.
class EntryList {
public:
    [[nodiscard]] std::size_t Count() const noexcept { return ends_.size(); }
    [[nodiscard]] ByteSpan operator[](std::size_t index) const noexcept
    {
        const std::size_t begin = index == 0 ? 0 : ends_[index - 1];
        return ByteSpan(bytes_).subspan(begin, ends_[index] - begin);
    }
    /// Bytes of `count` entries from `first`.
    [[nodiscard]] std::size_t Size(std::size_t first, std::size_t count) const noexcept
    {
        return count == 0 ? 0 : ends_[first + count - 1] - (first == 0 ? 0 : ends_[first - 1]);
    }
    /// Appends the entry made of `head` and `rest`.
    void Add(ByteSpan head, ByteSpan rest = {})
    {
        AppendBytes(bytes_, head);
        AppendBytes(bytes_, rest);
        ends_.push_back(bytes_.size());
    }
    void WriteTo(EntryWriter& writer, std::size_t first, std::size_t count) const;
    void Reserve(std::size_t count, std::size_t bytes)
    {
        ends_.reserve(count);
        bytes_.reserve(bytes);
    }

private:
    Bytes bytes_;
    std::vector<std::size_t> ends_;
};

/// One page of an index. A view: it owns nothing and is cheap to copy.
///
///   Jet 4  Jet 3  size     field (little-endian, but entries are big-endian)
///       0      0  1        page type: 3 node, 4 leaf
///       1      1  1        1
///       2      2  2        free space: room - bytes used by entries
///       4      4  4        first definition page of the table
///      12      8  4        previous page of the level, 0 = none
///      16     12  4        next page of the level, 0 = none
///      20     16  4        tail: the last child of a node, which has no entry; 0 in leaves
///      24     20  2, 1     length of the common prefix
///      26     21  1        level: 0 in leaves
///      27     22  453, 226 mask: bit k is set when an entry ends (the next begins) at byte k of the entries
///     480    248  to end   entries: key, row pointer, in nodes the child page
///
/// The first entry is stored whole; from the others the prefix, which they share with it, is left out. So what is left
/// of every entry, its own part, lies behind the prefix in one row, and an entry is named by its *place*: the offset at
/// which its own part begins.
///
/// Invariant: entries ascend as bytes. Source: pages written by Access 97, 2000 and 2003.
class IndexPage {
public:
    /// Views `page`, one whole page; `number` is for messages only. Throws CorruptPage when the page is not an index
    /// page or its mask or prefix leaves the page.
    IndexPage(ByteSpan page, PageNumber number, const Format& format);
    IndexPage(const PageRef& page, const Format& format) : IndexPage(page.Bytes(), page.Number(), format) {}

    [[nodiscard]] PageNumber Number() const noexcept { return number_; }
    [[nodiscard]] bool IsLeaf() const noexcept { return page_[0] == static_cast<Byte>(PageType::IndexLeaf); }
    [[nodiscard]] std::uint8_t Level() const noexcept { return page_[format_->indexPage.level]; }
    [[nodiscard]] PageNumber Previous() const noexcept { return LoadU32(page_, format_->indexPage.previous); }
    [[nodiscard]] PageNumber Next() const noexcept { return LoadU32(page_, format_->indexPage.next); }
    [[nodiscard]] PageNumber Tail() const noexcept { return LoadU32(page_, format_->indexPage.tail); }
    [[nodiscard]] ByteSpan Prefix() const noexcept { return Stored(0, prefixSize_); }
    [[nodiscard]] std::size_t UsedBytes() const noexcept { return used_; }
    [[nodiscard]] std::size_t FreeBytes() const noexcept { return format_->indexPage.room - used_; }
    [[nodiscard]] bool IsEmpty() const noexcept { return used_ == 0; }
    /// Number of entries. Counts the mask's bits.
    [[nodiscard]] std::size_t Count() const noexcept { return Ordinal(End()); }

    /// Place of the first entry; End() when there is none.
    [[nodiscard]] std::size_t Begin() const noexcept { return prefixSize_; }
    /// The place behind the last entry.
    [[nodiscard]] std::size_t End() const noexcept { return used_; }
    /// Place of the entry behind the one at `place`, which is not End().
    [[nodiscard]] std::size_t After(std::size_t place) const noexcept;
    /// Place of the entry before `place`, which is not Begin().
    [[nodiscard]] std::size_t Before(std::size_t place) const noexcept;
    /// Number of entries before `place`.
    [[nodiscard]] std::size_t Ordinal(std::size_t place) const noexcept;

    /// Calls `take` with the end of each entry, in order.
    template <typename Take>
    void ForEachEnd(const Take& take) const
    {
        for (std::size_t word = Begin() / 64; 64 * word <= End(); ++word)
            for (std::uint64_t bits = MaskWord(word); bits != 0; bits &= bits - 1)
                if (const std::size_t end = 64 * word + static_cast<std::size_t>(std::countr_zero(bits)); end > Begin())
                    take(end);
    }

    /// The entry's bytes behind the prefix.
    [[nodiscard]] ByteSpan OwnPart(std::size_t place) const noexcept { return OwnPart(place, After(place)); }
    /// The same of one whose end is known.
    [[nodiscard]] ByteSpan OwnPart(std::size_t place, std::size_t end) const noexcept
    {
        return Stored(place, end - place);
    }
    /// Place of the first entry that is not less than `wanted`.
    [[nodiscard]] std::size_t LowerBound(ByteSpan wanted) const noexcept;
    /// Is it `place`, that of an entry or the end, and not the first? Then the entry before is less.
    [[nodiscard]] bool IsLowerBound(std::size_t place, ByteSpan wanted) const noexcept;
    /// Compares the entry at `place`, whole, with `wanted`.
    [[nodiscard]] int Compare(std::size_t place, ByteSpan wanted) const noexcept;
    /// Is the key of the leaf's entry at `place` exactly `key`?
    [[nodiscard]] bool HasKey(std::size_t place, ByteSpan key) const noexcept;
    /// Puts the whole entry at `place` into `entry`. Throws CorruptPage when it is too short to be one.
    void CopyEntry(std::size_t place, Bytes& entry) const;
    /// The child page that a node's entry names. Throws CorruptPage like CopyEntry.
    [[nodiscard]] PageNumber Child(std::size_t place) const;
    /// Places of all entries. Throws CorruptPage like CopyEntry, and when they are not in order.
    [[nodiscard]] std::vector<std::uint16_t> Places() const;
    /// All entries, whole. Throws CorruptPage like CopyEntry.
    [[nodiscard]] EntryList Entries() const;

private:
    friend class IndexPageEditor;
    [[nodiscard]] ByteSpan Stored(std::size_t offset, std::size_t size) const noexcept
    {
        return page_.subspan(format_->indexPage.entries + offset, size);
    }
    [[nodiscard]] std::uint64_t MaskWord(std::size_t word) const noexcept;
    [[nodiscard]] std::size_t HighestBit() const noexcept;
    [[nodiscard]] std::uint64_t Head(std::size_t place, std::size_t end) const noexcept;
    [[nodiscard]] bool IsLess(std::size_t place, std::size_t end, ByteSpan own, std::uint64_t head) const noexcept;
    void RequireEntrySize(std::size_t size) const;

    ByteSpan page_;
    PageNumber number_;
    const Format* format_;
    std::size_t prefixSize_ = 0;
    std::size_t used_ = 0;
};

/// Changes to one index page. A view taken before a change is void after it.
class IndexPageEditor {
public:
    IndexPageEditor(MutablePageRef page, const Format& format) : page_(std::move(page)), format_(&format) {}

    /// Makes an empty page of a zeroed one; level 0 is a leaf.
    static void MakeEmpty(const MutablePageRef& page, const Format& format, PageNumber definitionPage,
                          std::uint8_t level);

    [[nodiscard]] IndexPage View() const { return {page_, *format_}; }

    void SetPrevious(PageNumber page) { StoreU32(page_.Data(format_->indexPage.previous, 4), 0, page); }
    void SetNext(PageNumber page) { StoreU32(page_.Data(format_->indexPage.next, 4), 0, page); }
    void SetTail(PageNumber page) { StoreU32(page_.Data(format_->indexPage.tail, 4), 0, page); }

    /// Puts `entry` at `place` of `view`, which shows this page. False, and nothing changed, when it does not begin
    /// with the page's prefix or has no room.
    [[nodiscard]] bool Insert(const IndexPage& view, std::size_t place, ByteSpan entry);
    /// Puts behind the last entry of `leaf`, which ends at `used`, one whose own part is `own`. There is room for it.
    static void Append(const PageAtHand& leaf, const Format& format, std::size_t used, ByteSpan own)
    {
        // Ascending keys come to the end, where one bit of the mask is all.
        const Format::IndexPageLayout& layout = format.indexPage;
        const std::size_t end = used + own.size();
        assert(end <= layout.room);
        Byte* const page = leaf.Data(UndoLog::Range{layout.entries + used, own.size()},
                                     UndoLog::Range{layout.mask + end / 8, 1}, UndoLog::Range{kPageFreeBytes, 2});
        CopyBytes(page + layout.entries + used, own.data(), own.size());
        SetBit({page + layout.mask, layout.maskSize}, end);
        StoreU16({page + kPageFreeBytes, 2}, 0, static_cast<std::uint16_t>(layout.room - end));
    }
    void Remove(const IndexPage& view, std::size_t place);
    /// Leaves the first `prefixSize` bytes out of all entries of `view`, which shows this page, but the first: bytes
    /// that they share, and more than they leave out now. Throws CorruptPage when they do not.
    void Pack(const IndexPage& view, std::size_t prefixSize);
    /// Lets the node's entry at `place` of `view`, which shows this page, name another child. The number of the one
    /// until now does not reach into the prefix.
    void SetChild(const IndexPage& view, std::size_t place, PageNumber child);

private:
    friend class EntryWriter;
    void SetUsed(std::size_t used);
    void SetPrefixSize(MutableBytes page, std::size_t size);
    MutablePageRef page_;
    const Format* format_;
};

/// Replaces all entries of a page by others, which come in order; the rest of the page becomes zero.
class EntryWriter {
public:
    /// `prefixSize`: what all entries to come share, and at least one byte less than each of them has.
    EntryWriter(const MutablePageRef& page, const Format& format, std::size_t prefixSize);
    /// Adds the entry made of `head` and `rest`. There is room for it.
    void Add(ByteSpan head, ByteSpan rest = {}) noexcept
    {
        if (used_ != 0) {
            const std::size_t shared = std::min(head.size(), prefixSize_);
            head = head.subspan(shared);
            rest = rest.subspan(prefixSize_ - shared);
        }
        Append(head);
        Append(rest);
        SetBit(mask_, used_);
    }
    /// To be called behind the last entry.
    void Finish();

private:
    void Append(ByteSpan bytes) noexcept
    {
        if (bytes.empty())
            return;
        std::memcpy(entries_.data() + used_, bytes.data(), bytes.size());
        used_ += bytes.size();
    }
    IndexPageEditor editor_;
    MutableBytes mask_;
    MutableBytes entries_;
    std::size_t prefixSize_;
    std::size_t used_ = 0;
};

} // namespace jet
