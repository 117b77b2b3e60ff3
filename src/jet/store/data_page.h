#pragma once

#include "jet/base/format.h"
#include "jet/store/page_cache.h"

#include <optional>
#include <utility>

namespace jet {

/// What a slot of a data page holds.
enum class SlotState {
    Row,
    Moved,     ///< the row pointer to where the row is now; its number stays valid
    MovedHere, ///< reached through such a pointer only: whoever goes through all rows passes it over
    Deleted,   ///< nothing, and the number is not given out again
};

inline constexpr std::size_t kSlotSize = 2;

/// The rows of one data page. A view: it owns nothing and is cheap to copy.
///
///   Jet 4  Jet 3  size  field (little-endian)
///       0      0     1  page type, 0x01
///       2      2     2  free bytes between the slots and the lowest row
///       4      4     4  page number of the owning table definition; "LVAL"; 0 on pages of usage maps
///       8      -     4  on the first page of a long value's chain its tag, else 0
///      12      8     2  number of slots, n
///      14     10   2*n  slots: byte offset of each row, flags in the top bits
///
/// Invariant: rows fill the page from its end downwards; row i ends where row i-1 begins.
/// Source: pages written by Access 97, 2000 and 2003.
class DataPage {
public:
    /// Views `page`, one whole page of type 0x01; `number` is for messages only. Throws CorruptPage when the slots
    /// overrun the page.
    DataPage(ByteSpan page, PageNumber number, const Format& format)
        : page_(page), number_(number), format_(&format), slotCount_(LoadU16(page, format.dataPage.rowCount))
    {
        if (page_[0] != static_cast<Byte>(PageType::Data) || SlotsEnd() > page_.size())
            ThrowNoDataPage();
    }

    [[nodiscard]] std::size_t SlotCount() const noexcept { return slotCount_; }
    [[nodiscard]] std::uint32_t Owner() const noexcept { return LoadU32(page_, kPageOwner); }
    /// Bytes between the slots and the lowest row, as they are (the page's own count may be wrong in a damaged file).
    /// Throws CorruptPage when the two overlap.
    [[nodiscard]] std::size_t FreeBytes() const
    {
        const std::size_t lowest = End(slotCount_);
        if (lowest < SlotsEnd() || lowest > page_.size())
            ThrowOverlap(lowest);
        return lowest - SlotsEnd();
    }
    [[nodiscard]] SlotState State(std::size_t slot) const noexcept;
    /// The bytes in `slot` (0 to SlotCount() - 1), whatever its state; of a moved row its 4-byte new address first.
    /// Throws CorruptPage when the slot points outside the page.
    [[nodiscard]] ByteSpan Row(std::size_t slot) const;
    /// Where a new row goes.
    struct Place {
        std::size_t slot;
        std::size_t begin; ///< offset in the page
        std::size_t size;
    };
    /// Of a row of `size` bytes; nullopt when there is no room for it and its slot. Throws CorruptPage when the lowest
    /// row overlaps the slots.
    [[nodiscard]] std::optional<Place> PlaceFor(std::size_t size) const
    {
        if (slotCount_ >= kMaxRowsPerPage || size + kSlotSize > FreeBytes())
            return std::nullopt;
        return Place{slotCount_, End(slotCount_) - size, size};
    }
    [[nodiscard]] bool Fits(std::size_t size) const { return PlaceFor(size).has_value(); }
    /// The row that a pointer promises in `slot`. Throws CorruptPage when there is no such slot, or it holds no
    /// ordinary row.
    [[nodiscard]] ByteSpan LiveRow(std::size_t slot) const;

private:
    friend class DataPageEditor;
    // A slot's offset has 13 bits, enough for 4096, which is where an empty first row begins; the top two are its
    // state.
    static constexpr std::uint16_t kOffsetMask = 0x1FFF;

    [[nodiscard]] std::size_t SlotsEnd() const noexcept { return format_->dataPage.slots + kSlotSize * slotCount_; }
    [[nodiscard]] std::size_t Begin(std::size_t slot) const noexcept
    {
        return LoadU16(page_, format_->dataPage.slots + kSlotSize * slot) & kOffsetMask;
    }
    [[nodiscard]] std::size_t End(std::size_t slot) const noexcept
    {
        return slot == 0 ? page_.size() : Begin(slot - 1);
    }
    [[noreturn]] void ThrowNoDataPage() const;
    [[noreturn]] void ThrowOverlap(std::size_t lowest) const;

    ByteSpan page_;
    PageNumber number_;
    const Format* format_;
    std::size_t slotCount_;
};

/// Changes to one data page. Row numbers stay with their rows for life: a deleted slot is not given out again.
class DataPageEditor {
public:
    DataPageEditor(MutablePageRef page, const Format& format) : page_(std::move(page)), format_(&format) {}

    /// Makes an empty data page of a zeroed one.
    static void MakeEmpty(const MutablePageRef& page, const Format& format, std::uint32_t owner);

    [[nodiscard]] DataPage View() const { return {page_.Bytes(), page_.Number(), *format_}; }
    [[nodiscard]] bool Fits(std::size_t size) const { return View().Fits(size); }
    struct NewRow {
        std::uint8_t slot;
        MutableBytes bytes;
    };
    /// Appends a row of `size` bytes, which Fits. Its bytes are still to be written.
    NewRow Append(std::size_t size, SlotState state = SlotState::Row);
    /// Makes a row at `place`, which PlaceFor() has just given, and gives its bytes, which are still to be written.
    static MutableBytes Append(const PageAtHand& page, const Format& format, const DataPage::Place& place)
    {
        const std::size_t slotAt = format.dataPage.slots + kSlotSize * place.slot;
        const std::size_t headEnd = format.dataPage.rowCount + kSlotSize;
        // Asked for in one call, as it happens with every record: the row, its slot, the counts in the head.
        Byte* const bytes = page.Data(UndoLog::Range{place.begin, place.size}, UndoLog::Range{slotAt, kSlotSize},
                                      UndoLog::Range{kPageFreeBytes, headEnd - kPageFreeBytes});
        const MutableBytes head(bytes, slotAt + kSlotSize);
        StoreU16(head, slotAt, static_cast<std::uint16_t>(place.begin));
        StoreU16(head, format.dataPage.rowCount, static_cast<std::uint16_t>(place.slot + 1));
        StoreU16(head, kPageFreeBytes, static_cast<std::uint16_t>(place.begin - slotAt - kSlotSize));
        return {bytes + place.begin, place.size};
    }
    [[nodiscard]] MutableBytes RowBytes(std::size_t slot);
    /// Gives `slot` another size: the rows behind it are shifted, its content up to the smaller size stays, bytes that
    /// join are zero. False, and nothing changed, when the page has no room.
    [[nodiscard]] bool Resize(std::size_t slot, std::size_t size);
    void SetState(std::size_t slot, SlotState state);
    /// Marks the slot deleted and takes its bytes back.
    void Delete(std::size_t slot);

private:
    MutablePageRef page_;
    const Format* format_;
};

inline constexpr std::uint32_t kUsageMapOwner = 0;           ///< of pages that hold records of usage maps
inline constexpr std::uint32_t kGlobalMapOwner = 1;          ///< of page 1
inline constexpr std::uint32_t kLongValueOwner = 0x4C41564C; ///< "LVAL"
inline constexpr std::size_t kLongValueTag = 8;              ///< Jet 4: where the first page of a chain has its tag

} // namespace jet
