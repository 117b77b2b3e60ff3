#include "jet/index/index_page.h"

#include "jet/error.h"
#include "jet/store/bitmap.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstring>
#include <string>

namespace jet {

namespace {

constexpr std::size_t kChildSize = 4;

/// Bytes that two entries have in common at their beginning.
std::size_t CommonLength(ByteSpan a, ByteSpan b) noexcept
{
    const std::size_t limit = std::min(a.size(), b.size());
    return static_cast<std::size_t>(
        std::mismatch(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(limit), b.begin()).first - a.begin());
}

int Compare(ByteSpan a, ByteSpan b) noexcept
{
    const std::size_t common = std::min(a.size(), b.size());
    if (const int order = common == 0 ? 0 : std::memcmp(a.data(), b.data(), common); order != 0)
        return order;
    return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

} // namespace

ByteSpan IndexEntries::operator[](std::size_t index) const noexcept
{
    const std::size_t begin = index == 0 ? 0 : ends_[index - 1];
    return ByteSpan(bytes_).subspan(begin, ends_[index] - begin);
}

void IndexEntries::Append(ByteSpan entry)
{
    AppendBytes(bytes_, entry);
    ends_.push_back(static_cast<std::uint32_t>(bytes_.size()));
}

void IndexEntries::Insert(std::size_t index, ByteSpan entry)
{
    const std::size_t begin = index == 0 ? 0 : ends_[index - 1];
    bytes_.insert(bytes_.begin() + static_cast<std::ptrdiff_t>(begin), entry.begin(), entry.end());
    ends_.insert(ends_.begin() + static_cast<std::ptrdiff_t>(index), static_cast<std::uint32_t>(begin));
    for (std::size_t i = index; i < ends_.size(); ++i)
        ends_[i] += static_cast<std::uint32_t>(entry.size());
}

void IndexEntries::Erase(std::size_t index)
{
    const std::size_t begin = index == 0 ? 0 : ends_[index - 1];
    const std::size_t size = ends_[index] - begin;
    const auto first = bytes_.begin() + static_cast<std::ptrdiff_t>(begin);
    bytes_.erase(first, first + static_cast<std::ptrdiff_t>(size));
    ends_.erase(ends_.begin() + static_cast<std::ptrdiff_t>(index));
    for (std::size_t i = index; i < ends_.size(); ++i)
        ends_[i] -= static_cast<std::uint32_t>(size);
}

void IndexEntries::Clear() noexcept
{
    bytes_.clear();
    ends_.clear();
}

void IndexEntries::CopyTo(IndexEntries& out, std::size_t from, std::size_t to) const
{
    for (std::size_t i = from; i < to; ++i)
        out.Append((*this)[i]);
}

std::size_t IndexEntries::CommonPrefix() const noexcept
{
    if (Count() < 2)
        return 0;
    std::size_t prefix = CommonLength((*this)[0], (*this)[Count() - 1]); // sorted: what these share, all share
    for (std::size_t i = 0; i < Count(); ++i)
        prefix = std::min(prefix, (*this)[i].size() - 1);
    return prefix;
}

std::size_t IndexEntries::PackedSize(std::size_t prefix) const noexcept
{
    return Count() == 0 ? 0 : bytes_.size() - (Count() - 1) * prefix;
}

IndexPage::IndexPage(ByteSpan page, PageNumber number, const Format& format)
    : page_(page), layout_(&format.indexPage), number_(number),
      prefixLength_(layout_->prefixLengthSize == 1 ? page[layout_->prefixLength] : LoadU16(page, layout_->prefixLength))
{
    if (page[0] != static_cast<Byte>(PageType::IndexNode) && page[0] != static_cast<Byte>(PageType::IndexLeaf))
        throw CorruptPage(number, "an index page is expected here, but its type is " + std::to_string(page[0]));
    const std::size_t free = LoadU16(page, 2);
    if (free > layout_->room)
        throw CorruptPage(number, "the index page says that " + std::to_string(free) + " bytes are free");
    used_ = layout_->room - free;
    if (prefixLength_ > used_)
        throw CorruptPage(number, "the index page's prefix of " + std::to_string(prefixLength_) + " bytes is too long");
}

ByteSpan IndexPage::Stored(std::size_t begin, std::size_t end) const noexcept
{
    return page_.subspan(layout_->entries + begin, end - begin);
}

void IndexPage::ReadEnds(std::vector<std::uint16_t>& ends) const
{
    ends.clear();
    const ByteSpan mask = page_.subspan(layout_->mask, layout_->maskSize);
    const std::size_t smallest = IsLeaf() ? kRowPointerSize : kRowPointerSize + kChildSize;
    std::size_t begin = 0;
    // Eight bytes of the mask at a time: a page of some hundred entries is read on every insert that is no append.
    for (std::size_t at = 0; at < mask.size() && at * 8 <= used_; at += 8) {
        std::uint64_t word = 0;
        if (at + 8 <= mask.size())
            word = LoadU64(mask, at);
        else
            for (std::size_t i = at; i < mask.size(); ++i)
                word |= static_cast<std::uint64_t>(mask[i]) << 8 * (i - at);
        for (; word != 0; word &= word - 1) {
            const std::size_t end = at * 8 + static_cast<std::size_t>(std::countr_zero(word));
            if (end > used_)
                break;
            const std::size_t prefix = ends.empty() ? 0 : prefixLength_;
            if (end - begin + prefix <= smallest || (ends.empty() && end < prefixLength_))
                throw CorruptPage(number_, "index entry " + std::to_string(ends.size()) + " is too short");
            ends.push_back(static_cast<std::uint16_t>(end));
            begin = end;
        }
    }
    if (begin != used_)
        throw CorruptPage(number_, "the index page's entries end at byte " + std::to_string(begin) + ", not at " +
                                       std::to_string(used_));
}

void IndexPage::ReadEntry(std::size_t index, const std::vector<std::uint16_t>& ends, Bytes& entry) const
{
    entry.clear();
    if (index > 0)
        AppendBytes(entry, Prefix());
    AppendBytes(entry, Stored(index == 0 ? 0 : ends[index - 1], ends[index]));
}

void IndexPage::ReadEntries(IndexEntries& entries) const
{
    std::vector<std::uint16_t> ends;
    ReadEnds(ends);
    entries.Clear();
    Bytes entry;
    for (std::size_t i = 0; i < ends.size(); ++i) {
        ReadEntry(i, ends, entry);
        entries.Append(entry);
    }
}

void IndexPage::ReadLast(Bytes& entry) const
{
    entry.clear();
    if (used_ == 0)
        return;
    const ByteSpan mask = page_.subspan(layout_->mask, layout_->maskSize);
    std::size_t begin = used_ - 1;
    while (begin > 0 && !TestBit(mask, begin))
        --begin;
    if (begin > 0)
        AppendBytes(entry, Prefix());
    AppendBytes(entry, Stored(begin, used_));
    if (entry.size() <= (IsLeaf() ? kRowPointerSize : kRowPointerSize + kChildSize))
        throw CorruptPage(number_, "the last index entry is too short");
}

std::size_t IndexPage::LowerBound(ByteSpan target, const std::vector<std::uint16_t>& ends) const
{
    if (ends.empty())
        return 0;
    const std::size_t behind = IsLeaf() ? 0 : kChildSize;
    if (Compare(Stored(0, ends[0] - behind), target) >= 0)
        return 0;
    // Every entry begins with the prefix: where the target differs from it, all entries lie on one side.
    const std::size_t shared = std::min(prefixLength_, target.size());
    if (const int order = shared == 0 ? 0 : std::memcmp(Prefix().data(), target.data(), shared); order != 0)
        return order > 0 ? 1 : ends.size();
    if (target.size() < prefixLength_)
        return 1;
    const ByteSpan rest = target.subspan(prefixLength_);
    std::size_t low = 1;
    std::size_t high = ends.size();
    while (low < high) {
        const std::size_t middle = (low + high) / 2;
        // A prefix that reaches into the child page number leaves nothing of the part that is compared.
        const std::size_t begin = ends[middle - 1];
        const std::size_t end = std::max<std::size_t>(begin, ends[middle] - behind);
        if (Compare(Stored(begin, end), rest) < 0)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

PageNumber IndexPage::Child(std::size_t index, const std::vector<std::uint16_t>& ends) const
{
    if (index == ends.size())
        return Tail();
    if (index > 0 && ends[index] < ends[index - 1] + kChildSize) {
        Bytes entry;
        ReadEntry(index, ends, entry);
        return LoadBigU32(entry, entry.size() - kChildSize);
    }
    return LoadBigU32(page_, layout_->entries + ends[index] - kChildSize);
}

void IndexPageEditor::MakeEmpty(PageNumber definitionPage, std::uint8_t level)
{
    const MutableBytes page = page_.Data();
    std::ranges::fill(page, Byte{0});
    page[0] = static_cast<Byte>(level == 0 ? PageType::IndexLeaf : PageType::IndexNode);
    page[1] = 1;
    StoreU16(page, 2, static_cast<std::uint16_t>(format_->indexPage.room));
    StoreU32(page, 4, definitionPage);
    page[format_->indexPage.level] = level;
}

void IndexPageEditor::WriteEntries(const IndexEntries& entries, std::size_t prefix)
{
    const Format::IndexPageLayout& layout = format_->indexPage;
    const MutableBytes page = page_.Data();
    const MutableBytes mask = page.subspan(layout.mask, layout.maskSize);
    const std::size_t used = entries.PackedSize(prefix);
    assert(used <= layout.room);
    std::ranges::fill(page.subspan(layout.mask), Byte{0});
    std::size_t at = 0;
    for (std::size_t i = 0; i < entries.Count(); ++i) {
        const ByteSpan stored = entries[i].subspan(i == 0 ? 0 : prefix);
        std::ranges::copy(stored, page.begin() + static_cast<std::ptrdiff_t>(layout.entries + at));
        at += stored.size();
        SetBit(mask, at);
    }
    StoreU16(page, 2, static_cast<std::uint16_t>(layout.room - used));
    if (layout.prefixLengthSize == 1)
        page[layout.prefixLength] = static_cast<Byte>(prefix);
    else
        StoreU16(page, layout.prefixLength, static_cast<std::uint16_t>(prefix));
}

bool IndexPageEditor::InsertInPlace(std::size_t index, std::size_t at, ByteSpan entry)
{
    const Format::IndexPageLayout& layout = format_->indexPage;
    const MutableBytes page = page_.Data();
    const IndexPage view(page, page_.Number(), *format_);
    const std::size_t prefix = view.PrefixLength();
    if (prefix > 0 &&
        (index == 0 || entry.size() <= prefix || std::memcmp(entry.data(), page.data() + layout.entries, prefix) != 0))
        return false;
    const ByteSpan stored = entry.subspan(prefix);
    if (view.Used() + stored.size() > layout.room)
        return false;
    Byte* const place = page.data() + layout.entries + at;
    std::memmove(place + stored.size(), place, view.Used() - at);
    std::memcpy(place, stored.data(), stored.size());
    ShiftMask(at + 1, stored.size());
    SetBit(page.subspan(layout.mask, layout.maskSize), at + stored.size());
    StoreU16(page, 2, static_cast<std::uint16_t>(layout.room - view.Used() - stored.size()));
    return true;
}

/// Moves the mask's bits from `fromBit` on by `by` places towards the end; the places that become free are cleared.
void IndexPageEditor::ShiftMask(std::size_t fromBit, std::size_t by)
{
    const Format::IndexPageLayout& layout = format_->indexPage;
    const MutableBytes mask = page_.Data().subspan(layout.mask, layout.maskSize);
    const std::size_t last = layout.room - (LoadU16(page_.Data(), 2)); // the highest bit that can be set
    for (std::size_t bit = last + 1; bit-- > fromBit;) {
        if (bit % 8 == 7 && bit >= fromBit + 7 && mask[bit / 8] == 0) {
            bit -= 7; // eight places without an end
            continue;
        }
        if (TestBit(mask, bit)) {
            ClearBit(mask, bit);
            SetBit(mask, bit + by);
        }
    }
}

} // namespace jet
