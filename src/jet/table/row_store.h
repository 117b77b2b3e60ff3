#pragma once

#include "jet/store/data_page.h"
#include "jet/store/pages_with_room.h"

#include <optional>
#include <vector>

namespace jet {

/// The rows of one table on its data pages, as bytes. A row is named by its home slot, which stays the same for life: a
/// row that outgrows its page moves to another, and its home slot keeps the address.
class RowStore {
public:
    RowStore(Pager& pager, PageNumber definitionPage, RowId ownedPages, RowId freeSpacePages);

    /// A row that was found, and where its bytes lie.
    struct Found {
        PageRef page; ///< empty when there is no such row
        RowId at;
        ByteSpan bytes;
        [[nodiscard]] explicit operator bool() const noexcept { return static_cast<bool>(page); }
    };
    /// Room for a row; `bytes` are to be filled at once.
    struct Room {
        MutablePageRef page;
        RowId at;
        MutableBytes bytes;
    };

    /// The row whose home is `home`; nothing when it was deleted or never was. Throws CorruptPage.
    [[nodiscard]] Found Find(RowId home) const;
    /// Appends a row of `size` bytes (at most Format::maxRecordSize).
    [[nodiscard]] Room Insert(std::size_t size) { return Place(size, SlotState::Row); }
    /// Where a row can go without a step that may fail.
    struct PlaceAtHand {
        PageAtHand page;
        DataPage::Place place;
        [[nodiscard]] RowId At() const noexcept { return {page.Number(), static_cast<std::uint8_t>(place.slot)}; }
    };
    /// Where Insert() would put a row of `size` bytes, if that is a page at hand.
    [[nodiscard]] std::optional<PlaceAtHand> FindAtHand(std::size_t size) const
    {
        const PageAtHand page = pages_.Last() != 0 ? pager_->AtHand(pages_.Last()) : PageAtHand();
        if (!page)
            return std::nullopt;
        const auto place = DataPage(page.Bytes(), page.Number(), pager_->GetFormat()).PlaceFor(size);
        return place ? std::optional(PlaceAtHand{page, *place}) : std::nullopt;
    }
    /// Does what Insert() does at a place that was just found. The bytes are to be filled at once.
    [[nodiscard]] MutableBytes InsertAt(const PlaceAtHand& found) const
    {
        return DataPageEditor::Append(found.page, pager_->GetFormat(), found.place);
    }
    /// Gives a row that exists another size, where it is or elsewhere. What the old bytes were is lost.
    [[nodiscard]] Room Replace(RowId home, std::size_t size);
    /// Deletes a row that exists. A page that holds nothing any more is freed.
    void Delete(RowId home);
    /// First row behind `after` in the order of pages (nullopt: from the start); nullopt at the end. `after` may be
    /// gone.
    [[nodiscard]] std::optional<RowId> Next(std::optional<RowId> after) const;
    /// Frees all data pages; the maps are empty then.
    void Clear();

private:
    [[nodiscard]] Room Place(std::size_t size, SlotState state);
    [[nodiscard]] Room Append(MutablePageRef page, std::size_t size, SlotState state) const;
    [[nodiscard]] MutablePageRef PageWithRoom(std::size_t size);
    [[nodiscard]] std::optional<PageNumber> NextCandidate();
    void StorePointer(RowId home, RowId at);
    void DeleteSlot(RowId at);
    void NoteRoom(PageNumber page, std::size_t before, std::size_t after);
    [[nodiscard]] bool IsOurs(const PageRef& page) const noexcept;

    Pager* pager_;
    PageNumber definitionPage_;
    PagesWithRoom pages_;
    std::optional<std::vector<PageNumber>> candidates_; ///< pages with room to be looked at, the next one last
};

} // namespace jet
