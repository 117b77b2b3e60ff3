#pragma once

#include "jet/store/pager.h"
#include "jet/store/usage_map.h"

namespace jet {

/// The data pages of one owner, which may be the rows of a table or the long values of a column: two usage maps say
/// which pages these are, and which of them have room. The maps change only when a page is begun, is full, gets room
/// again or is given back. In what order pages are tried is the owner's business.
class PagesWithRoom {
public:
    /// How a kind of owner writes its pages.
    struct Kind {
        std::uint32_t owner;     ///< stands in the head of each page
        std::size_t usedUpShare; ///< a page whose slots are used up leaves the search with less than this share free
    };

    /// `freeSpacePages` may be none, as in some system tables: then no page is found again.
    PagesWithRoom(Pager& pager, const Kind& kind, RowId ownedPages, RowId freeSpacePages)
        : pager_(&pager), kind_(kind), owned_(pager, ownedPages), freeSpace_(pager, freeSpacePages)
    {
    }

    [[nodiscard]] const UsageMap& Owned() const noexcept { return owned_; }
    [[nodiscard]] const UsageMap& WithRoom() const noexcept { return freeSpace_; } ///< only when HasMapOfRoom()
    [[nodiscard]] bool HasMapOfRoom() const noexcept { return !freeSpace_.Record().IsNone(); }
    /// The page that was used last, 0 when there is none or it was given back: where the next row is tried first.
    [[nodiscard]] PageNumber Last() const noexcept { return last_; }

    /// `page`, which is the last one now, when it takes a row of `size` bytes; else none, and when it is as good as
    /// full, it leaves the search.
    [[nodiscard]] MutablePageRef UseIfRoom(PageNumber page, std::size_t size);
    /// A new, empty page, the last one now.
    [[nodiscard]] MutablePageRef Begin();
    /// A new, empty page that never takes part in the search.
    [[nodiscard]] MutablePageRef BeginAlone();
    /// Puts `page` back into the search.
    void NoteRoom(PageNumber page);
    /// Frees a page that holds nothing any more.
    void GiveBack(PageNumber page);

private:
    Pager* pager_;
    PageNumber last_ = 0;
    Kind kind_;
    UsageMap owned_;
    UsageMap freeSpace_;
};

} // namespace jet
