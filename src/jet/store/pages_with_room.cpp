#include "jet/store/pages_with_room.h"

#include "jet/store/data_page.h"

namespace jet {

namespace {

/// A page with less than this share of its bytes free takes part in the search no longer: a search that finds nothing
/// costs more than the bytes are worth.
constexpr std::size_t kFullShare = 10;

} // namespace

MutablePageRef PagesWithRoom::UseIfRoom(PageNumber page, std::size_t size)
{
    MutablePageRef ref = pager_->Write(page);
    const DataPage view(ref.Bytes(), page, pager_->GetFormat());
    // Nothing is taken out of the search as long as rows fit, however little is left: files of Access are so too.
    if (view.Fits(size)) {
        last_ = page;
        return ref;
    }
    const std::size_t share = view.SlotCount() >= kMaxRowsPerPage ? kind_.usedUpShare : kFullShare;
    if (HasMapOfRoom() && view.FreeBytes() < pager_->GetFormat().pageSize / share)
        freeSpace_.Remove(page);
    return {};
}

MutablePageRef PagesWithRoom::BeginAlone()
{
    MutablePageRef page = pager_->Allocate();
    DataPageEditor::MakeEmpty(page, pager_->GetFormat(), kind_.owner);
    owned_.Add(page.Number());
    return page;
}

MutablePageRef PagesWithRoom::Begin()
{
    MutablePageRef page = BeginAlone();
    NoteRoom(page.Number());
    last_ = page.Number();
    return page;
}

void PagesWithRoom::NoteRoom(PageNumber page)
{
    if (HasMapOfRoom())
        freeSpace_.Add(page);
}

void PagesWithRoom::GiveBack(PageNumber page)
{
    owned_.Remove(page);
    if (HasMapOfRoom())
        freeSpace_.Remove(page);
    if (last_ == page)
        last_ = 0;
    pager_->Free(page);
}

} // namespace jet
