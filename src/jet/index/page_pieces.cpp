#include "jet/index/page_pieces.h"

#include "jet/base/error.h"

#include <algorithm>
#include <array>

namespace jet {

namespace {

/// Each entry whole.
template <typename Entries>
PagePacking Unpacked(const Entries& entries, std::size_t first, std::size_t count)
{
    return {0, entries.Size(first, count)};
}

/// With the longest prefix that all entries share; at least one byte of each entry stays.
template <typename Entries>
PagePacking Packed(const Format& format, const Entries& entries, std::size_t first, std::size_t count)
{
    if (count == 0)
        return {};
    const std::size_t prefixSize = LongestPrefix(entries[first], entries[first + count - 1], format);
    return {prefixSize, entries.Size(first, count) - (count - 1) * prefixSize};
}

PagePiece PackedPiece(const GrownLeaf& entries, std::size_t first, std::size_t end, const Format& format)
{
    return {first, end - first, Packed(format, entries, first, end - first), 0, entries[end - 1]};
}

/// How many entries, at least one, make up the first half of all bytes.
std::size_t MiddleOf(const GrownLeaf& entries)
{
    const std::size_t total = entries.Size(0, entries.Count());
    std::size_t middle = 1;
    while (2 * entries.Size(0, middle + 1) <= total)
        ++middle;
    return middle;
}

} // namespace

std::size_t LongestPrefix(ByteSpan first, ByteSpan last, const Format& format)
{
    const std::size_t longest = format.indexPage.prefixLengthSize == 1 ? 0xFF : 0xFFFF;
    return std::min({CountShared(first, last), first.size() - 1, last.size() - 1, longest});
}

GrownLeaf::GrownLeaf(const PageRef& leaf, const Format& format, std::size_t place, ByteSpan added)
    : page_(leaf.Bytes().begin(), leaf.Bytes().end()), leaf_(page_, leaf.Number(), format), places_(leaf_.Places()),
      addedAt_(static_cast<std::size_t>(std::ranges::lower_bound(places_, place) - places_.begin())), added_(added)
{
    if (place != leaf_.End() && leaf_.Compare(place, added) == 0)
        throw CorruptPage(leaf.Number(), "the index has an entry twice");
    places_.push_back(static_cast<std::uint16_t>(leaf_.End()));
}

/// Of one that the leaf has.
ByteSpan GrownLeaf::OwnPart(std::size_t index) const noexcept
{
    const std::size_t old = index - static_cast<std::size_t>(index > addedAt_);
    return leaf_.OwnPart(places_[old], places_[old + 1]);
}

Bytes GrownLeaf::operator[](std::size_t index) const
{
    Bytes entry;
    if (index == addedAt_) {
        AppendBytes(entry, added_);
    } else {
        AppendBytes(entry, leaf_.Prefix());
        AppendBytes(entry, OwnPart(index));
    }
    return entry;
}

void GrownLeaf::WriteTo(EntryWriter& writer, std::size_t first, std::size_t count) const
{
    for (std::size_t i = first; i < first + count; ++i) {
        if (i == addedAt_)
            writer.Add(added_);
        else
            writer.Add(leaf_.Prefix(), OwnPart(i));
    }
}

EntryList NodeChildren::Entries() const
{
    EntryList entries;
    entries.Reserve(Count(), keys.Size(0, Count()) + Count() * kChildPointerSize);
    for (std::size_t i = 0; i < Count(); ++i) {
        std::array<Byte, kChildPointerSize> pointer{};
        StoreBigU32(pointer, 0, pages[i]);
        entries.Add(keys[i], pointer);
    }
    return entries;
}

std::vector<PagePiece> CutOffLast(const IndexPage& leaf, const GrownLeaf& entries)
{
    const std::size_t old = entries.Count() - 1;
    return {{0, old, {leaf.Begin(), leaf.UsedBytes()}, 0, entries[old - 1]},
            {old, 1, Unpacked(entries, old, 1), 0, entries[old]}};
}

std::vector<PagePiece> CutLeaf(const GrownLeaf& entries, const Format& format)
{
    const std::size_t count = entries.Count();
    if (const PagePiece whole = PackedPiece(entries, 0, count, format); whole.Fits(format))
        return {whole};
    const std::size_t middle = MiddleOf(entries);
    std::vector<PagePiece> pieces;
    const auto cut = [&](std::size_t at) {
        pieces = {PackedPiece(entries, 0, at, format), PackedPiece(entries, at, count, format)};
        return pieces[0].Fits(format) && pieces[1].Fits(format);
    };
    // No entry is longer than half a page, so that one of the cuts beside the new one leaves room in both pieces.
    for (std::size_t distance = 0; distance < count; ++distance)
        if ((distance < middle && cut(middle - distance)) || (middle + distance < count && cut(middle + distance)))
            break;
    return pieces;
}

PagePiece NodePiece(const NodeChildren& children, const EntryList& entries, std::size_t first, std::size_t end,
                    const Format& format)
{
    const std::size_t tail = end - 1;
    // The tail has no entry, and its key becomes what the node above says of the whole node.
    PagePiece piece{first, tail - first, Unpacked(entries, first, tail - first), children.pages[tail],
                    Bytes(children.keys[tail].begin(), children.keys[tail].end())};
    if (!piece.Fits(format))
        piece.packing = Packed(format, entries, first, piece.count);
    return piece;
}

std::vector<PagePiece> CutNode(const NodeChildren& children, const EntryList& entries, bool isRightEdge,
                               const Format& format)
{
    const std::size_t count = children.Count();
    const PagePiece whole = NodePiece(children, entries, 0, count, format);
    if (whole.Fits(format) || count < 4) // three fit by the limit on keys; what does not is refused when it is stored
        return {whole};
    std::vector<PagePiece> pieces;
    // On the right edge all but the last two children stay together, so keys that ascend leave full nodes behind. A
    // piece that is still too large is cut again.
    std::vector<std::size_t> ends{count, isRightEdge ? count - 2 : count / 2}; // the next one last
    for (std::size_t first = 0; first != count;) {
        const std::size_t end = ends.back();
        const PagePiece piece = NodePiece(children, entries, first, end, format);
        if (!piece.Fits(format) && end - first > 3) {
            ends.push_back(first + (end - first) / 2);
            continue;
        }
        pieces.push_back(piece);
        ends.pop_back();
        first = end;
    }
    return pieces;
}

} // namespace jet
