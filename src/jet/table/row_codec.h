#pragma once

#include "jet/table/record.h"
#include "jet/table/row_store.h"
#include "jet/table/table_def.h"

#include <array>
#include <optional>
#include <span>
#include <vector>

namespace jet {

/// One field on its way into a row: its bytes as the row holds them, or Null. Of a boolean, whose value is its bit of
/// the null mask, `isSet` is all there is.
struct RowField {
    ByteSpan bytes{};
    bool isSet = false; ///< not Null; boolean: True
    ByteSpan head{};    ///< of a long value, where it does not lie before its bytes

    [[nodiscard]] std::size_t Size() const noexcept { return head.size() + bytes.size(); }
    /// Leaves of a long value only the head that stays when it moves out of the row.
    void Shrink() noexcept { bytes = head.empty() ? bytes.first(kLongValueHeaderSize) : ByteSpan(); }
};

/// What a record holds of a boolean, as its value.
[[nodiscard]] inline bool IsTrue(ByteSpan stored) noexcept
{
    return !stored.empty() && stored[0] != 0;
}

/// How a column's values stand in the rows of its table.
enum class FieldKind : Byte {
    Boolean, ///< as a bit of the null mask
    Fixed,
    Variable,
    LongValue,
};

/// How the fields of one table become a row. Made once per state of the definition.
///
///   Jet 4: u16 field count · fixed area · variable data · u16 offsets, last first · u16 variable fields · null mask
///   Jet 3: the same with u8, and between offsets and number the jump table: one byte per started 256 bytes of the row,
///          the number of the first offset that lies behind that many bytes
///
/// Without variable columns the parts from the data to the number are left out.
/// Source: rows written by Access 97, 2000 and 2003.
class RowLayout {
public:
    explicit RowLayout(const TableDef& def);

    /// By column index.
    [[nodiscard]] std::span<const FieldKind> Kinds() const noexcept { return kinds_; }
    [[nodiscard]] bool HasLongValues() const noexcept { return hasLongValues_; }
    /// Bytes of the row of these fields, given by column index. Only their sizes are looked at.
    [[nodiscard]] std::size_t Measure(std::span<const RowField> fields) const;
    /// Writes the row; `row` has exactly Measure() bytes, none of which belongs to a field. A fixed text or binary
    /// field that is shorter than its column is filled up with blanks or zeros.
    void Encode(std::span<const RowField> fields, MutableBytes row) const;
    /// The same straight from a record, whose columns have no long values.
    [[nodiscard]] std::size_t Measure(const Record& record) const;
    void Encode(const Record& record, MutableBytes row) const;

private:
    /// What is done for one column, or for the place of a variable one that was dropped.
    struct Step {
        std::uint16_t column;     ///< index; kNoColumn where there is none any more
        std::uint16_t number;     ///< bit in the null mask
        std::uint16_t offset = 0; ///< of a fixed field, from the start of the row
        std::uint16_t size = 0;   ///< the same
        Byte filler = 0;          ///< of a fixed field
    };
    using Steps = std::span<const Step>;
    static constexpr std::uint16_t kNoColumn = 0xFFFF;

    [[nodiscard]] Steps Fixed() const noexcept { return {steps_.data(), fixedCount_}; }
    [[nodiscard]] Steps Variable() const noexcept { return {steps_.data() + fixedCount_, variableCount_}; }
    [[nodiscard]] Steps Booleans() const noexcept { return Steps(steps_).subspan(fixedCount_ + variableCount_); }
    [[nodiscard]] std::size_t SizeWith(std::size_t variableBytes) const;
    [[nodiscard]] std::size_t JumpTableSize(std::size_t sizeWithout) const;
    // `Fields` tells of each column whether it has a value, its bytes, and what stands before them. `kVersion`, as
    // nearly every step is another one in the other format.
    template <JetVersion kVersion, typename Fields>
    void EncodeAll(const Fields& fields, MutableBytes row) const;
    template <typename Fields>
    void EncodeFixed(const Fields& fields, MutableBytes row, MutableBytes mask) const;
    template <JetVersion kVersion, typename Fields>
    void EncodeVariable(const Fields& fields, MutableBytes row, MutableBytes mask) const;
    void FillFixed(const Step& fixed, ByteSpan value, Byte* at) const;

    std::vector<Step> steps_; ///< the fixed fields, the variable ones by their place among these, the booleans
    std::uint16_t fixedCount_ = 0;
    std::uint16_t variableCount_;
    std::uint16_t fieldCount_;
    std::uint16_t fixedEnd_; ///< from the start of the row
    std::uint16_t maskSize_;
    std::uint16_t numberSize_;
    JetVersion version_;
    bool hasLongValues_ = false;
    bool hasGaps_ = false;                           ///< between the fixed fields or behind them
    std::array<Byte, (kMaxColumns + 7) / 8> mask_{}; ///< of a row without Nulls, its booleans False
    std::vector<FieldKind> kinds_;
};

/// The parts of a row that was read. A view: valid as long as the row's bytes.
class RowView {
public:
    /// `page` is for messages only. Throws CorruptPage when the parts do not fit each other.
    RowView(ByteSpan row, const TableDef& def, PageNumber page);

    /// Boolean: its value. Others: not Null. False for a column that is younger than the row.
    [[nodiscard]] bool IsSet(const Column& column) const noexcept;
    /// The field as the row holds it; nullopt when Null. Not for booleans. Throws CorruptPage when it lies outside the
    /// row or has another size than its type wants.
    [[nodiscard]] std::optional<ByteSpan> Field(const Column& column) const;

private:
    void ReadOffsets(std::size_t numberAt);
    [[nodiscard]] std::size_t Offset(std::size_t entry) const noexcept;

    ByteSpan row_;
    PageNumber page_;
    JetVersion version_;
    std::size_t fieldCount_;
    std::size_t maskBegin_;
    std::size_t fixedBegin_;
    std::size_t fixedEnd_;
    std::size_t variableCount_ = 0;
    std::size_t offsetsEnd_ = 0; ///< offset of field 0 stands right before it
    ByteSpan jumps_;             ///< in reading order from its end
};

/// Fills the given columns (indexes) of `record` from a row that was found, long values resolved; the others are Null.
/// Throws CorruptPage.
void ReadRecord(Pager& pager, const TableDef& def, const RowStore::Found& row, std::span<const std::size_t> columns,
                Record& record);

} // namespace jet
