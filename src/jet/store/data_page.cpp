#include "jet/store/data_page.h"

#include "jet/base/error.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <string>

namespace jet {

namespace {

// The top two bits of a slot.
constexpr std::uint16_t kMoved = 0x4000;
constexpr std::uint16_t kMovedHere = 0x8000;
constexpr std::uint16_t kDeleted = 0xC000;
constexpr std::uint16_t kStateMask = 0xC000;

constexpr std::uint16_t FlagsOf(SlotState state)
{
    switch (state) {
    case SlotState::Moved:
        return kMoved;
    case SlotState::MovedHere:
        return kMovedHere;
    case SlotState::Deleted:
        return kDeleted;
    case SlotState::Row:
        break;
    }
    return 0;
}

} // namespace

void DataPage::ThrowNoDataPage() const
{
    if (page_[0] != static_cast<Byte>(PageType::Data))
        throw CorruptPage(number_, "a data page is expected here, but its type is " + std::to_string(page_[0]));
    throw CorruptPage(number_, "its " + std::to_string(slotCount_) + " slots overrun it");
}

void DataPage::ThrowOverlap(std::size_t lowest) const
{
    throw CorruptPage(number_, "its lowest row begins at byte " + std::to_string(lowest));
}

SlotState DataPage::State(std::size_t slot) const noexcept
{
    assert(slot < slotCount_);
    switch (LoadU16(page_, format_->dataPage.slots + kSlotSize * slot) & kStateMask) {
    case kMoved:
        return SlotState::Moved;
    case kMovedHere:
        return SlotState::MovedHere;
    case kDeleted:
        return SlotState::Deleted;
    default:
        return SlotState::Row;
    }
}

ByteSpan DataPage::Row(std::size_t slot) const
{
    assert(slot < slotCount_);
    // Checked where a slot is followed, not when the page is opened: most visits look at one slot of many.
    const std::size_t begin = Begin(slot);
    const std::size_t end = End(slot);
    if (begin < SlotsEnd() || begin > end || end > page_.size())
        throw CorruptPage(number_, "row " + std::to_string(slot) + " stands from byte " + std::to_string(begin) +
                                       " to " + std::to_string(end));
    return page_.subspan(begin, end - begin);
}

ByteSpan DataPage::LiveRow(std::size_t slot) const
{
    if (slot >= slotCount_ || State(slot) != SlotState::Row)
        throw CorruptPage(number_, "row " + std::to_string(slot) + " is referred to, but not there");
    return Row(slot);
}

void DataPageEditor::MakeEmpty(const MutablePageRef& page, const Format& format, std::uint32_t owner)
{
    const MutableBytes data = page.Data();
    data[0] = static_cast<Byte>(PageType::Data);
    data[1] = 1;
    StoreU16(data, kPageFreeBytes, static_cast<std::uint16_t>(format.pageSize - format.dataPage.slots));
    StoreU32(data, kPageOwner, owner);
}

DataPageEditor::NewRow DataPageEditor::Append(std::size_t size, SlotState state)
{
    const std::optional<DataPage::Place> place = View().PlaceFor(size);
    assert(place);
    const MutableBytes bytes = Append(page_.AtHand(), *format_, *place);
    if (state != SlotState::Row)
        SetState(place->slot, state);
    return {static_cast<std::uint8_t>(place->slot), bytes};
}

MutableBytes DataPageEditor::RowBytes(std::size_t slot)
{
    const ByteSpan row = View().Row(slot);
    return page_.Data(static_cast<std::size_t>(row.data() - page_.Bytes().data()), row.size());
}

/// Rows have no room between them, so those below this one in the page move by the difference. Slots keep their
/// numbers, which is what indexes name rows by. Bytes that become free are zeroed: what was deleted is not left to be
/// read.
bool DataPageEditor::Resize(std::size_t slot, std::size_t size)
{
    const DataPage view = View();
    for (std::size_t i = slot; i < view.SlotCount(); ++i)
        static_cast<void>(view.Row(i)); // nothing is moved unless all of it lies within the page
    const std::size_t oldSize = view.Row(slot).size();
    if (size > oldSize && size - oldSize > view.FreeBytes())
        return false;

    const std::size_t begin = view.Begin(slot);
    const std::size_t lowest = view.End(view.SlotCount());
    const std::size_t kept =
        begin + std::min(size, oldSize) - lowest; // this row's bytes that stay, and the rows below it
    const std::size_t end = view.End(slot);
    const std::size_t first = std::min(lowest, lowest + oldSize - size);
    Byte* const rows = page_.Data(first, end - first).data() - first; // by offset in the page
    std::memmove(rows + lowest + oldSize - size, rows + lowest, kept);
    if (size > oldSize)
        std::fill_n(rows + end - (size - oldSize), size - oldSize, Byte{0});
    else
        std::fill_n(rows + lowest, oldSize - size, Byte{0});

    const std::size_t slots = format_->dataPage.slots;
    const MutableBytes head = page_.Data(0, slots + kSlotSize * view.SlotCount());
    for (std::size_t i = slot; i < view.SlotCount(); ++i)
        StoreU16(head, slots + kSlotSize * i,
                 static_cast<std::uint16_t>(LoadU16(head, slots + kSlotSize * i) + oldSize - size));
    StoreU16(head, kPageFreeBytes, static_cast<std::uint16_t>(view.FreeBytes()));
    return true;
}

void DataPageEditor::SetState(std::size_t slot, SlotState state)
{
    const DataPage view = View(); // its slots lie in the page
    if (slot >= view.SlotCount())
        throw CorruptPage(page_.Number(), "it has no slot " + std::to_string(slot));
    const std::size_t at = format_->dataPage.slots + kSlotSize * slot;
    const MutableBytes entry = page_.Data(at, kSlotSize);
    StoreU16(entry, 0, static_cast<std::uint16_t>((LoadU16(entry, 0) & ~kStateMask) | FlagsOf(state)));
}

/// The slot stays, as the numbers of those behind it may not change; a page whose slots are used up takes no more rows.
void DataPageEditor::Delete(std::size_t slot)
{
    static_cast<void>(Resize(slot, 0));
    SetState(slot, SlotState::Deleted);
}

} // namespace jet
