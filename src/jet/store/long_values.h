#pragma once

#include "jet/base/row_id.h"
#include "jet/store/pages_with_room.h"

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

    /// Stores `value` and appends its field (12 bytes, plus the value when it stays inline) to `field`. `mayStayInline`
    /// is false for values that must have a record of their own. Throws RecordTooLarge over kMaxLongValue bytes.
    void Write(ByteSpan value, Bytes& field, bool mayStayInline = true);
    /// The same for a value whose inline form and stored form differ (a memo is compressed only in the row): stored
    /// inline as `inlineForm` when `value` has at most the format's maxInlineLong bytes.
    void Write(ByteSpan value, ByteSpan inlineForm, Bytes& field);
    /// The value's bytes. Throws CorruptPage when the chain is broken, too long or goes round.
    [[nodiscard]] static Bytes Read(Pager& pager, ByteSpan field, PageNumber rowPage);
    /// Deletes the records that `field` names; pages that hold nothing else are freed.
    void Delete(ByteSpan field);
    /// Frees all pages of the column.
    void DeleteAll();

private:
    void WriteOutside(ByteSpan value, Bytes& field);
    void WriteSingle(ByteSpan value, Bytes& field);
    void WriteChain(ByteSpan value, Bytes& field);
    [[nodiscard]] MutablePageRef PageWithRoom(std::size_t size);
    void DeleteRecord(RowId id);

    Pager* pager_;
    PagesWithRoom pages_;
    std::optional<PageNumber> search_ = 0; ///< pages with room from here on have not been looked at
};

} // namespace jet
