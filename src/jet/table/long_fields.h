#pragma once

#include "jet/store/long_values.h"
#include "jet/table/row_codec.h"

#include <memory>
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

} // namespace jet
