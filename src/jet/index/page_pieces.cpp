#include "jet/index/page_pieces.h"

#include <algorithm>
#include <array>

namespace jet {

namespace {

PagePiece PackedPiece(const EntryList& entries, std::size_t first, std::size_t end, const Format& format)
{
    return {first, end - first, Packed(format, entries, first, end - first), 0, entries[end - 1]};
}

/// How many entries, at least one, make up the first half of all bytes.
std::size_t MiddleOf(const EntryList& entries)
{
    const std::size_t total = entries.Size(0, entries.Count());
    std::size_t middle = 1;
    while (2 * entries.Size(0, middle + 1) <= total)
        ++middle;
    return middle;
}

} // namespace

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

std::vector<PagePiece> ExtendLastLeaf(const IndexPage& leaf, const EntryList& entries, const Format& format)
{
    const std::size_t old = entries.Count() - 1;
    const ByteSpan added = entries[old];
    // A prefix tells that the page has been full once: it is not packed a second time, nor is it by Access.
    const PagePacking packing =
        leaf.Begin() == 0 ? Packed(format, entries, 0, old) : PagePacking{leaf.Begin(), leaf.UsedBytes()};
    const ByteSpan prefix = entries[0].first(packing.prefixSize);
    const bool shares = added.size() > prefix.size() && std::ranges::equal(prefix, added.first(prefix.size()));
    const PagePiece grown{0, old + 1, {prefix.size(), packing.usedBytes + added.size() - prefix.size()}, 0, added};
    if (shares && grown.Fits(format))
        return {grown};
    return {{0, old, packing, 0, entries[old - 1]}, {old, 1, Unpacked(entries, old, 1), 0, added}};
}

std::vector<PagePiece> CutLeaf(const EntryList& entries, const Format& format)
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
                    children.keys[tail]};
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
