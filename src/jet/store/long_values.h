#pragma once

#include "jet/base/row_id.h"
#include "jet/store/pages_with_room.h"

#include <array>
#include <cstdint>
#include <optional>

namespace jet {

/// The long values (memo, OLE) of one column of one table: in the row itself, in a record of a shared LVAL page, or in
/// a chain of such pages.
///
///   field in the row: u32 length and form (top bits: 0x80 inline, 0x40 single, 0 chain) · row pointer · tag · inline
///   bytes
class LongValues {
public:
    /// The column's two usage maps; `freeSpacePages` may be none, as in some system tables.
    LongValues(Pager& pager, RowId ownedPages, RowId freeSpacePages);

    /// The 12 bytes with which every field begins.
    using Head = std::array<Byte, kLongValueHeaderSize>;

    /// Of a value of `size` bytes that follows in the row.
    [[nodiscard]] static Head InlineHead(std::size_t size) noexcept;
    /// Stores `value` in a record of its own, or in a chain, and gives the field. Throws RecordTooLarge over
    /// kMaxLongValue bytes.
    [[nodiscard]] Head WriteOutside(ByteSpan value);
    /// Appends the whole field of `value` to `field`: inline where the format's maxInlineLong allows it, else outside.
    void Write(ByteSpan value, Bytes& field);
    /// The value's bytes. Throws CorruptPage when the chain is broken, too long or goes round.
    [[nodiscard]] static Bytes Read(Pager& pager, ByteSpan field, PageNumber rowPage);
    /// Deletes the records that `field` names; pages that hold nothing else are freed.
    void Delete(ByteSpan field);
    /// Frees all pages of the column.
    void DeleteAll();

private:
    [[nodiscard]] Head WriteSingle(ByteSpan value);
    [[nodiscard]] Head WriteChain(ByteSpan value);
    [[nodiscard]] MutablePageRef PageWithRoom(std::size_t size);
    void DeleteRecord(RowId id);

    Pager* pager_;
    PagesWithRoom pages_;
    std::optional<PageNumber> search_ = 0; ///< pages with room from here on have not been looked at
};

} // namespace jet
