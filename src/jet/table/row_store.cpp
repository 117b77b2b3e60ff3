#include "jet/table/row_store.h"

#include "jet/base/error.h"

#include <algorithm>

namespace jet {

namespace {

/// With less than this share of its bytes free a page whose slots are used up leaves the map of pages with room.
constexpr std::size_t kUsedUpShare = 4;
/// A page from which rows go gets back into that map when what is free passes one of these shares.
constexpr std::size_t kMarks[] = {10, kUsedUpShare, 2};
/// How many pages of that map one insert looks at before it begins a new page.
constexpr int kTries = 4;

} // namespace

RowStore::RowStore(Pager& pager, PageNumber definitionPage, RowId ownedPages, RowId freeSpacePages)
    : pager_(&pager), definitionPage_(definitionPage),
      pages_(pager, {.owner = definitionPage, .usedUpShare = kUsedUpShare}, ownedPages, freeSpacePages)
{
}

bool RowStore::IsOurs(const PageRef& page) const noexcept
{
    return page.Type() == PageType::Data && LoadU32(page.Bytes(), kPageOwner) == definitionPage_;
}

RowStore::Found RowStore::Find(RowId home) const
{
    const Format& format = pager_->GetFormat();
    PageRef page = pager_->Read(home.page);
    if (!IsOurs(page))
        return {};
    const DataPage view(page.Bytes(), home.page, format);
    if (home.slot >= view.SlotCount())
        return {};
    const SlotState state = view.State(home.slot);
    // The slots of rows that were moved here are nobody's home: to whoever asks for one there is no such row.
    if (state == SlotState::Row)
        return {std::move(page), home, view.Row(home.slot)};
    if (state != SlotState::Moved)
        return {};
    const ByteSpan pointer = view.Row(home.slot);
    if (pointer.size() < kRowPointerSize)
        throw CorruptPage(home.page, "row " + std::to_string(home.slot) + " has moved, but not said where to");
    const RowId at = RowId::FromPointer(LoadU32(pointer, 0));
    PageRef target = pager_->Read(at.page);
    if (!IsOurs(target))
        throw CorruptPage(at.page, "a row has moved here, but the page belongs to something else");
    const DataPage targetView(target.Bytes(), at.page, format);
    if (at.slot >= targetView.SlotCount() || targetView.State(at.slot) != SlotState::MovedHere)
        throw CorruptPage(at.page, "a row has moved to slot " + std::to_string(at.slot) + ", but is not there");
    return {std::move(target), at, targetView.Row(at.slot)};
}

RowStore::Room RowStore::Append(MutablePageRef page, std::size_t size, SlotState state) const
{
    const auto [slot, bytes] = DataPageEditor(page, pager_->GetFormat()).Append(size, state);
    const RowId at{page.Number(), slot};
    return {std::move(page), at, bytes};
}

RowStore::Room RowStore::Place(std::size_t size, SlotState state)
{
    return Append(PageWithRoom(size), size, state);
}

/// The page of the last insert nearly always has room. Else a few of those with room are looked at, and then a new one
/// is begun: however many pages have a little room, an insert does not pay for all of them.
MutablePageRef RowStore::PageWithRoom(std::size_t size)
{
    if (pages_.Last() != 0)
        if (MutablePageRef page = pages_.UseIfRoom(pages_.Last(), size))
            return page;
    for (int i = 0; i < kTries; ++i) {
        const std::optional<PageNumber> candidate = NextCandidate();
        if (!candidate)
            break;
        if (MutablePageRef page = pages_.UseIfRoom(*candidate, size))
            return page;
    }
    return pages_.Begin();
}

std::optional<PageNumber> RowStore::NextCandidate()
{
    if (!candidates_)
        candidates_ = pages_.HasMapOfRoom() ? pages_.WithRoom().Pages() : std::vector<PageNumber>{};
    while (!candidates_->empty()) {
        const PageNumber page = candidates_->back();
        candidates_->pop_back();
        // It may have been freed since it was noted.
        if (page != pages_.Last() && IsOurs(pager_->Read(page)) && !pager_->IsFree(page))
            return page;
    }
    return std::nullopt;
}

RowStore::Room RowStore::Replace(RowId home, std::size_t size)
{
    const Format& format = pager_->GetFormat();
    const RowId at = Find(home).at;
    const bool moved = at != home;
    const auto resized = [&](RowId place) -> std::optional<Room> {
        MutablePageRef page = pager_->Write(place.page);
        DataPageEditor editor(page, format);
        const std::size_t before = editor.View().FreeBytes();
        if (!editor.Resize(place.slot, size))
            return std::nullopt;
        NoteRoom(place.page, before, editor.View().FreeBytes());
        return Room{std::move(page), place, editor.RowBytes(place.slot)};
    };
    // Where it is; then back home, if it was away; then anywhere. A row never moves twice in a chain: its home points
    // at where it is.
    if (std::optional<Room> room = resized(at))
        return std::move(*room);
    if (moved) {
        if (std::optional<Room> room = resized(home)) {
            DataPageEditor(room->page, format).SetState(home.slot, SlotState::Row);
            DeleteSlot(at);
            return std::move(*room);
        }
    }
    Room room = Place(size, SlotState::MovedHere);
    StorePointer(home, room.at);
    if (moved)
        DeleteSlot(at);
    return room;
}

/// Makes of the home slot a pointer to the row's new place. Jet 3 shortens it to the pointer, Jet 4 leaves its length.
void RowStore::StorePointer(RowId home, RowId at)
{
    const Format& format = pager_->GetFormat();
    DataPageEditor editor(pager_->Write(home.page), format);
    const std::size_t size = editor.View().Row(home.slot).size();
    if (format.version == JetVersion::Jet3 || size < kRowPointerSize) {
        const std::size_t before = editor.View().FreeBytes();
        if (!editor.Resize(home.slot, kRowPointerSize))
            throw CorruptPage(home.page, "row " + std::to_string(home.slot) + " is too short to be moved");
        NoteRoom(home.page, before, editor.View().FreeBytes());
    }
    editor.SetState(home.slot, SlotState::Moved);
    StoreU32(editor.RowBytes(home.slot), 0, at.Pointer());
}

void RowStore::Delete(RowId home)
{
    const RowId at = Find(home).at;
    DeleteSlot(home);
    if (at != home)
        DeleteSlot(at);
}

void RowStore::DeleteSlot(RowId at)
{
    std::size_t before = 0;
    std::size_t after = 0;
    bool empty = true;
    {
        DataPageEditor editor(pager_->Write(at.page), pager_->GetFormat());
        before = editor.View().FreeBytes();
        editor.Delete(at.slot);
        const DataPage view = editor.View();
        after = view.FreeBytes();
        for (std::size_t slot = view.SlotCount(); empty && slot-- > 0;)
            empty = view.State(slot) == SlotState::Deleted;
    }
    if (empty)
        pages_.GiveBack(at.page);
    else
        NoteRoom(at.page, before, after);
}

/// Puts a page that got room back into the search, but only when it passes one of a few marks: so no page is noted more
/// than three times, however many of its rows go.
void RowStore::NoteRoom(PageNumber page, std::size_t before, std::size_t after)
{
    const auto passed = [&](std::size_t share) {
        const std::size_t mark = pager_->GetFormat().pageSize / share;
        return before < mark && after >= mark;
    };
    if (std::ranges::none_of(kMarks, passed))
        return;
    pages_.NoteRoom(page);
    if (candidates_ && page != pages_.Last())
        candidates_->push_back(page);
}

/// Rows that have moved come by their home slots, where their ids are; what lies at the new place is passed over.
std::optional<RowId> RowStore::Next(std::optional<RowId> after) const
{
    std::size_t slot = after ? after->slot + std::size_t{1} : 0;
    std::optional<PageNumber> number = after ? after->page : pages_.Owned().Next(0);
    for (; number; number = pages_.Owned().Next(*number + 1), slot = 0) {
        const PageRef page = pager_->Read(*number);
        if (!IsOurs(page)) {
            if (after && after->page == *number)
                continue; // freed behind the walker's back, and used for something else
            throw CorruptPage(*number, "the table counts it as its own, but it belongs to something else");
        }
        const DataPage view(page.Bytes(), *number, pager_->GetFormat());
        for (; slot < view.SlotCount(); ++slot) {
            const SlotState state = view.State(slot);
            if (state == SlotState::Row || state == SlotState::Moved)
                return RowId{*number, static_cast<std::uint8_t>(slot)};
        }
    }
    return std::nullopt;
}

void RowStore::Clear()
{
    for (const PageNumber page : pages_.Owned().Pages())
        pages_.GiveBack(page);
    candidates_.reset();
}

} // namespace jet
