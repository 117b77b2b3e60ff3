#pragma once

#include "jet/base/bytes.h"
#include "jet/base/format.h"
#include "jet/store/long_values.h"
#include "jet/table/row_codec.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace jet {

/// The long values of a row that is about to be written. Those that stay in the row are not copied: their fields are
/// views of the record, or of the row as it was. Those that need pages of their own get them last, when nothing can
/// refuse the record any more; until then their fields only have the right size. Kept from row to row.
class LongFields {
public:
    /// A new row, of so many columns.
    void Begin(std::size_t columnCount);

    /// The value is the one that the row had: its field stays as it was, and its record with it.
    void Keep(std::size_t column, ByteSpan oldField, RowField& field);
    /// `stored`, of the column `kind`, which lies in the row when it is short enough. Throws RecordTooLarge.
    void Set(std::size_t column, const Column& kind, const Format& format, ByteSpan stored, RowField& field);
    /// A value that was to stand in the row leaves it after all.
    void MoveOut(std::size_t column, const Column& kind, const Format& format, ByteSpan stored, RowField& field);
    [[nodiscard]] bool IsKept(std::size_t column) const { return kept_[column]; }
    /// Is there something to Write()?
    [[nodiscard]] bool AnyOutside() const noexcept { return !outside_.empty(); }

    /// Writes what stands outside the row, and with that its fields are true. `stores`: by column index.
    void Write(std::span<const std::unique_ptr<LongValues>> stores);

private:
    struct Outside {
        std::size_t column;
        ByteSpan value;
    };

    [[nodiscard]] ByteSpan Held(ByteSpan view);

    std::vector<LongValues::Head> heads_; ///< by column index
    std::vector<bool> kept_;              ///< by column index
    std::vector<Outside> outside_;
    Bytes memo_;                    ///< a memo in its other form
    std::vector<Bytes> otherForms_; ///< those that fields are views of
};

// A memo is compressed only in the row, and exactly when all its characters are 0x01 to 0xFF and there are at least 3
// of them; `stored` may come in either form. What is given is a view of it or of `buffer`, where the other form is
// made. Source: memos written by Access 2000 and 2003, of which none outside a row is compressed.

/// The memo as it stands in the row; nullopt when it is too long for that.
[[nodiscard]] std::optional<ByteSpan> MemoInRow(ByteSpan stored, const Format& format, Bytes& buffer);
/// The memo as it stands outside the row.
[[nodiscard]] ByteSpan PlainMemo(ByteSpan stored, const Format& format, Bytes& buffer);

/// Makes the row of `fields` fit its page: the longest of `candidates` (column indexes) shrinks to the 12 bytes that
/// stay in a row of a long value that stands outside it, then the next, and no more of them than needed. Gives those
/// that shrank, in this order; nullopt when the row is too large even so.
[[nodiscard]] std::optional<std::vector<std::size_t>> ShrinkToFit(const RowLayout& layout, const Format& format,
                                                                  std::vector<std::size_t> candidates,
                                                                  std::span<RowField> fields);

/// The same for the long values that stand in the row. Throws RecordTooLarge when that does not help enough.
[[nodiscard]] std::vector<std::size_t> LongValuesToMoveOut(const RowLayout& layout, const TableDef& def,
                                                           std::span<RowField> fields);

} // namespace jet
