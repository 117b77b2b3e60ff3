#include "jet/index/index_page.h"

#include "jet/base/error.h"
#include "jet/index/mask_words.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstring>
#include <string>

namespace jet {

namespace {

/// The first eight bytes of an entry's own part as a number, those that it lacks as zeros: of two that differ the less
/// belongs to the entry that sorts first.
std::uint64_t HeadOf(ByteSpan own)
{
    if (own.size() >= 8)
        return LoadBigU64(own, 0);
    std::array<Byte, 8> padded{};
    std::ranges::copy(own, padded.begin()); // of none, too
    return LoadBigU64(padded, 0);
}

} // namespace

int CompareBytes(ByteSpan a, ByteSpan b) noexcept
{
    const std::size_t common = std::min(a.size(), b.size());
    if (const int order = common == 0 ? 0 : std::memcmp(a.data(), b.data(), common); order != 0)
        return order;
    return a.size() < b.size() ? -1 : static_cast<int>(a.size() > b.size());
}

IndexPage::IndexPage(ByteSpan page, PageNumber number, const Format& format)
    : page_(page), number_(number), format_(&format)
{
    if (!IsLeaf() && page_[0] != static_cast<Byte>(PageType::IndexNode))
        throw CorruptPage(number_, "an index page is expected here, but its type is " + std::to_string(int{page_[0]}));
    const Format::IndexPageLayout& layout = format_->indexPage;
    used_ = HighestBit();
    if (used_ > layout.room)
        throw CorruptPage(number_, "an index entry ends at byte " + std::to_string(used_) + " of " +
                                       std::to_string(layout.room));
    if (used_ == 0)
        return;
    const std::size_t prefixSize =
        layout.prefixLengthSize == 1 ? page_[layout.prefixLength] : LoadU16(page_, layout.prefixLength);
    if (prefixSize >= After(0))
        throw CorruptPage(number_, "the common prefix of " + std::to_string(prefixSize) +
                                       " bytes is not shorter than the first index entry");
    prefixSize_ = prefixSize;
}

std::uint64_t IndexPage::MaskWord(std::size_t word) const noexcept
{
    const Format::IndexPageLayout& layout = format_->indexPage;
    // The last word reaches into the entries, which follow at once: their bytes are cut off.
    const std::uint64_t value = LoadU64(page_, layout.mask + 8 * word);
    return value & LowBits((layout.maskSize - 8 * word) * 8);
}

/// The bit at which the last entry ends; 0 when there is none.
std::size_t IndexPage::HighestBit() const noexcept
{
    // The free space says where it is; only an empty page, or a damaged one, has to be searched.
    const std::size_t used = format_->indexPage.room - LoadU16(page_, kPageFreeBytes);
    if (used <= format_->indexPage.room && (MaskWord(used / kWordBits) >> used % kWordBits & 1) != 0)
        return used;
    for (std::size_t word = WordsOf(format_->indexPage.maskSize); word-- > 0;)
        if (const std::uint64_t bits = MaskWord(word); bits != 0)
            return word * kWordBits + static_cast<std::size_t>(std::bit_width(bits)) - 1;
    return 0;
}

std::size_t IndexPage::After(std::size_t place) const noexcept
{
    assert(place < used_);
    std::size_t word = (place + 1) / kWordBits;
    std::uint64_t bits = MaskWord(word) & ~LowBits((place + 1) % kWordBits);
    while (bits == 0)
        bits = MaskWord(++word); // ends at the bit of used_ at the latest
    return word * kWordBits + static_cast<std::size_t>(std::countr_zero(bits));
}

std::size_t IndexPage::Before(std::size_t place) const noexcept
{
    assert(place > prefixSize_);
    std::size_t word = (place - 1) / kWordBits;
    std::uint64_t bits = MaskWord(word) & LowBits((place - 1) % kWordBits + 1);
    while (bits == 0 && word > prefixSize_ / kWordBits)
        bits = MaskWord(--word);
    const std::size_t end = bits == 0 ? 0 : word * kWordBits + static_cast<std::size_t>(std::bit_width(bits)) - 1;
    return std::max(end, prefixSize_);
}

std::size_t IndexPage::Ordinal(std::size_t place) const noexcept
{
    if (place <= prefixSize_)
        return 0;
    std::size_t count = 0;
    for (std::size_t word = 0; word <= place / kWordBits; ++word) {
        std::uint64_t bits = MaskWord(word);
        if (word == place / kWordBits)
            bits &= LowBits(place % kWordBits + 1);
        count += static_cast<std::size_t>(std::popcount(bits));
    }
    return count;
}

bool IndexPage::IsLowerBound(std::size_t place, ByteSpan wanted) const noexcept
{
    if (place <= Begin() || place > End() || wanted.size() < prefixSize_ ||
        CompareBytes(wanted.first(prefixSize_), Prefix()) != 0)
        return false;
    const ByteSpan own = wanted.subspan(prefixSize_);
    const std::uint64_t head = HeadOf(own);
    return IsLess(Before(place), place, own, head) && (place == End() || !IsLess(place, After(place), own, head));
}

std::size_t IndexPage::LowerBound(ByteSpan wanted) const noexcept
{
    if (const int order = CompareBytes(wanted.first(std::min(wanted.size(), prefixSize_)), Prefix()); order != 0)
        return order < 0 ? Begin() : End();
    const ByteSpan own = wanted.subspan(prefixSize_);
    // Most entries differ from `wanted` in the first bytes behind the prefix: one number tells.
    const std::uint64_t head = HeadOf(own);
    std::size_t low = Begin(); // every entry before is less than `wanted`
    std::size_t high = End();  // no entry from here on is
    while (low < high) {
        // Halves are taken by bytes, since entries have no numbers: the one is looked at in which the middle byte lies.
        const std::size_t middle = low + (high - low) / 2;
        const std::size_t place = std::max(low, Before(middle + 1));
        const std::size_t end = After(place);
        if (IsLess(place, end, own, head))
            low = end;
        else
            high = place;
    }
    return low;
}

/// HeadOf() of the entry from `place` to `end`, without a copy where eight bytes can be read.
std::uint64_t IndexPage::Head(std::size_t place, std::size_t end) const noexcept
{
    const std::size_t at = format_->indexPage.entries + place;
    const std::size_t size = end - place;
    if (at + 8 > page_.size())
        return HeadOf(Stored(place, size));
    const std::uint64_t bytes = LoadBigU64(page_, at);
    return size >= 8 ? bytes : bytes & ~LowBits(kWordBits - 8 * size);
}

/// Does the entry from `place` to `end` sort before the one whose own part is `own`, with this HeadOf()?
bool IndexPage::IsLess(std::size_t place, std::size_t end, ByteSpan own, std::uint64_t head) const noexcept
{
    const std::uint64_t other = Head(place, end);
    return other != head ? other < head : CompareBytes(OwnPart(place, end), own) < 0;
}

std::vector<std::uint16_t> IndexPage::Places() const
{
    std::vector<std::uint16_t> places;
    places.reserve(used_ / 2);
    std::uint64_t before = 0;
    for (std::size_t place = Begin(), end = 0; place != End(); place = end) {
        end = After(place);
        RequireEntrySize(prefixSize_ + end - place);
        const std::uint64_t head = Head(place, end);
        if (!places.empty() && (head < before || (head == before && CompareBytes(OwnPart(places.back(), place),
                                                                                 OwnPart(place, end)) >= 0)))
            throw CorruptPage(number_, "the entries of the index are not in order");
        before = head;
        places.push_back(static_cast<std::uint16_t>(place));
    }
    return places;
}

int IndexPage::Compare(std::size_t place, ByteSpan wanted) const noexcept
{
    const std::size_t head = std::min(wanted.size(), prefixSize_);
    if (const int order = CompareBytes(Prefix(), wanted.first(head)); order != 0)
        return order;
    return CompareBytes(OwnPart(place), wanted.subspan(head));
}

bool IndexPage::HasKey(std::size_t place, ByteSpan key) const noexcept
{
    const ByteSpan own = OwnPart(place);
    if (prefixSize_ + own.size() != key.size() + kRowPointerSize)
        return false;
    // The prefix may reach into the row pointer.
    const std::size_t head = std::min(key.size(), prefixSize_);
    return std::ranges::equal(Prefix().first(head), key.first(head)) &&
           std::ranges::equal(own.first(key.size() - head), key.subspan(head));
}

/// Asked where an entry is used, and not for all when the page is opened: a search looks at a few of hundreds.
void IndexPage::RequireEntrySize(std::size_t size) const
{
    if (size <= kRowPointerSize + (IsLeaf() ? 0 : kChildPointerSize))
        throw CorruptPage(number_, "an index entry has only " + std::to_string(size) + " bytes");
}

void IndexPage::CopyEntry(std::size_t place, Bytes& entry) const
{
    const ByteSpan own = OwnPart(place);
    RequireEntrySize(prefixSize_ + own.size());
    entry.clear();
    AppendBytes(entry, Prefix());
    AppendBytes(entry, own);
}

/// The prefix may reach into the number of the child, as it may into the row pointer.
PageNumber IndexPage::Child(std::size_t place) const
{
    const ByteSpan own = OwnPart(place);
    RequireEntrySize(prefixSize_ + own.size());
    std::array<Byte, kChildPointerSize> pointer{};
    const std::size_t size = std::min(own.size(), pointer.size());
    std::ranges::copy(Prefix().last(std::min(prefixSize_, pointer.size() - size)), pointer.begin());
    std::ranges::copy(own.last(size), pointer.end() - static_cast<std::ptrdiff_t>(size));
    return LoadBigU32(pointer, 0);
}

EntryList IndexPage::Entries() const
{
    EntryList entries;
    const std::size_t count = Count();
    entries.Reserve(count + 1, used_ + count * prefixSize_);
    for (std::size_t place = Begin(); place != End(); place = After(place)) {
        const ByteSpan own = OwnPart(place);
        RequireEntrySize(prefixSize_ + own.size());
        entries.Add(Prefix(), own);
    }
    return entries;
}

} // namespace jet
