#include "jet/base/error.h"
#include "jet/index/index_page.h"
#include "jet/index/mask_words.h"
#include "jet/store/bitmap.h"

#include <algorithm>
#include <cassert>
#include <cstring>

namespace jet {

void IndexPageEditor::MakeEmpty(const MutablePageRef& page, const Format& format, PageNumber definitionPage,
                                std::uint8_t level)
{
    const MutableBytes bytes = page.Data();
    std::ranges::fill(bytes, Byte{0});
    bytes[0] = static_cast<Byte>(level == 0 ? PageType::IndexLeaf : PageType::IndexNode);
    bytes[1] = 1;
    bytes[format.indexPage.level] = level;
    StoreU32(bytes, kPageOwner, definitionPage);
    IndexPageEditor(page, format).SetUsed(0);
}

void IndexPageEditor::SetUsed(std::size_t used)
{
    StoreU16(page_.Data(kPageFreeBytes, 2), 0, static_cast<std::uint16_t>(format_->indexPage.room - used));
}

/// As long as the entry shares the page's prefix nothing else has to be rewritten; the prefix is as long as possible
/// only when a page is made, and never grows here.
bool IndexPageEditor::Insert(const IndexPage& view, std::size_t place, ByteSpan entry)
{
    const std::size_t prefixSize = view.prefixSize_;
    if (entry.size() <= prefixSize || entry.size() - prefixSize > view.FreeBytes() ||
        !std::ranges::equal(entry.first(prefixSize), view.Prefix()))
        return false;
    const Format::IndexPageLayout& layout = format_->indexPage;
    const ByteSpan own = entry.subspan(prefixSize);
    const std::size_t used = view.used_;
    if (used == 0) // an empty page's prefix means nothing
        std::ranges::fill(page_.Data(layout.prefixLength, layout.prefixLengthSize), Byte{0});
    if (place == used) {
        Append(page_.AtHand(), *format_, used, own);
        return true;
    }
    const std::size_t end = used + own.size();
    Byte* const page =
        page_.AtHand().Data(UndoLog::Range{layout.entries + place, end - place},
                            UndoLog::Range{layout.mask, layout.maskSize}, UndoLog::Range{kPageFreeBytes, 2});
    Byte* const at = page + layout.entries + place;
    std::memmove(at + own.size(), at, used - place);
    std::memcpy(at, own.data(), own.size());
    const MutableBytes mask(page + layout.mask, layout.maskSize);
    MaskWords words(mask);
    words.MoveUp(place, own.size());
    words.StoreTo(mask);
    SetBit(mask, place + own.size());
    StoreU16({page + kPageFreeBytes, 2}, 0, static_cast<std::uint16_t>(layout.room - end));
    return true;
}

void IndexPageEditor::Remove(const IndexPage& view, std::size_t place)
{
    const Format::IndexPageLayout& layout = format_->indexPage;
    const std::size_t end = view.After(place);
    const std::size_t used = view.used_;
    if (place == view.Begin() && end == used) {
        return EntryWriter(page_, *format_, 0).Finish();
    }
    Byte* const at = page_.Data(layout.entries + place, used - place).data();
    const std::size_t size = end - place;
    std::memmove(at, at + size, used - end);
    std::memset(at + used - end, 0, size);
    const MutableBytes mask = page_.Data(layout.mask, layout.maskSize);
    MaskWords words(mask);
    words.MoveDown(place, size);
    words.StoreTo(mask);
    SetUsed(used - size);
}

void IndexPageEditor::Pack(const IndexPage& view, std::size_t prefixSize)
{
    const Format::IndexPageLayout& layout = format_->indexPage;
    const std::size_t more = prefixSize - view.Begin();
    const ByteSpan shared = view.Stored(view.Begin(), more);
    const MutableBytes page = page_.Data();
    Byte* const entries = page.data() + layout.entries;
    Bytes mask(layout.maskSize); // the page's own still tells where the entries are
    std::size_t place = 0;       // none yet
    std::size_t packedEnd = 0;
    view.ForEachEnd([&](std::size_t end) {
        if (place == 0) {
            packedEnd = end; // the first stays whole
        } else {
            if (end - place <= more || CountShared(view.Stored(place, more), shared) != more)
                throw CorruptPage(page_.Number(), "the entries of the index are not in order");
            CopyBytes(entries + packedEnd, entries + place + more, end - place - more);
            packedEnd += end - place - more;
        }
        SetBit(mask, packedEnd);
        place = end;
    });
    std::memset(entries + packedEnd, 0, view.End() - packedEnd);
    std::ranges::copy(mask, page.begin() + static_cast<std::ptrdiff_t>(layout.mask));
    SetPrefixSize(page, prefixSize);
    SetUsed(packedEnd);
}

void IndexPageEditor::SetPrefixSize(MutableBytes page, std::size_t size)
{
    const Format::IndexPageLayout& layout = format_->indexPage;
    if (layout.prefixLengthSize == 1)
        page[layout.prefixLength] = static_cast<Byte>(size);
    else
        StoreU16(page, layout.prefixLength, static_cast<std::uint16_t>(size));
}

void IndexPageEditor::SetChild(const IndexPage& view, std::size_t place, PageNumber child)
{
    const std::size_t end = format_->indexPage.entries + view.After(place);
    StoreBigU32(page_.Data(end - kChildPointerSize, kChildPointerSize), 0, child);
}

EntryWriter::EntryWriter(const MutablePageRef& page, const Format& format, std::size_t prefixSize)
    : editor_(page, format), prefixSize_(prefixSize)
{
    const Format::IndexPageLayout& layout = format.indexPage;
    const MutableBytes bytes = page.Data();
    std::ranges::fill(bytes.subspan(layout.mask), Byte{0});
    editor_.SetPrefixSize(bytes, prefixSize);
    mask_ = bytes.subspan(layout.mask, layout.maskSize);
    entries_ = bytes.subspan(layout.entries, layout.room);
}

void EntryWriter::Finish()
{
    assert(used_ <= entries_.size());
    editor_.SetUsed(used_);
}

void EntryList::WriteTo(EntryWriter& writer, std::size_t first, std::size_t count) const
{
    for (std::size_t i = first; i < first + count; ++i)
        writer.Add((*this)[i]);
}

} // namespace jet
