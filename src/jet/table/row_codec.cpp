#include "jet/table/row_codec.h"

#include "jet/base/error.h"
#include "jet/store/long_values.h"

#include <algorithm>
#include <cassert>
#include <cstring>

namespace jet {

namespace {

/// When a row moves, its place has to hold a pointer.
constexpr std::size_t kMinRowSize = kRowPointerSize;
constexpr std::size_t kBitsAtOnce = 64;
constexpr std::size_t kJumpUnit = 256;
constexpr Byte kJumpFiller = 0xFF;

FieldKind KindOf(const Column& column)
{
    if (column.type == ColumnType::Boolean)
        return FieldKind::Boolean;
    if (column.IsFixed())
        return FieldKind::Fixed;
    return IsLongValue(column.type) ? FieldKind::LongValue : FieldKind::Variable;
}

struct PreparedFields {
    std::span<const RowField> fields;

    [[nodiscard]] bool HasValue(std::size_t column) const { return fields[column].isSet; }
    [[nodiscard]] bool IsTrue(std::size_t boolean) const { return fields[boolean].isSet; }
    [[nodiscard]] ByteSpan Head(std::size_t column) const { return fields[column].head; }
    [[nodiscard]] ByteSpan Value(std::size_t column) const { return fields[column].bytes; }
};

struct RecordFields {
    const Record& record;

    [[nodiscard]] bool HasValue(std::size_t column) const { return !record.IsNull(column); }
    [[nodiscard]] bool IsTrue(std::size_t boolean) const
    {
        return !record.IsNull(boolean) && jet::IsTrue(*record.Stored(boolean));
    }
    [[nodiscard]] static ByteSpan Head(std::size_t) { return {}; }
    [[nodiscard]] ByteSpan Value(std::size_t column) const { return *record.Stored(column); }
};

std::size_t LoadNumber(ByteSpan row, std::size_t at, JetVersion version)
{
    return version == JetVersion::Jet3 ? row[at] : LoadU16(row, at);
}

void StoreNumber(MutableBytes row, std::size_t at, std::size_t value, JetVersion version)
{
    if (version == JetVersion::Jet3)
        row[at] = static_cast<Byte>(value);
    else
        StoreU16(row, at, static_cast<std::uint16_t>(value));
}

} // namespace

RowLayout::RowLayout(const TableDef& def)
    : version_(def.format->version), numberSize_(def.format->rowNumberSize), fieldCount_(def.columnsEver),
      maskSize_((fieldCount_ + 7) / 8), variable_(def.variableColumnsEver, kNoColumn)
{
    std::size_t fixedSize = 0;
    std::size_t filled = 0;
    for (std::size_t i = 0; i < def.columns.size(); ++i) {
        const Column& column = def.columns[i];
        numbers_.push_back(column.number);
        kinds_.push_back(KindOf(column));
        hasLongValues_ |= IsLongValue(column.type);
        if (column.type == ColumnType::Boolean) {
            booleans_.push_back(i);
        } else if (!column.IsFixed()) {
            variable_[column.variableIndex] = i;
        } else {
            const Byte filler = column.type == ColumnType::Text ? Byte{' '} : Byte{0};
            fixed_.push_back({i, column.fixedOffset, column.FixedSize(), filler});
            fixedSize = std::max(fixedSize, column.fixedOffset + column.FixedSize());
            filled += column.FixedSize();
        }
    }
    fixedEnd_ = numberSize_ + fixedSize;
    // Rows of hardly more than booleans: the fixed area is made longer.
    if (variable_.empty() && fixedEnd_ + maskSize_ < kMinRowSize)
        fixedEnd_ = kMinRowSize - maskSize_;
    hasGaps_ = numberSize_ + filled != fixedEnd_;
}

/// The table's own bytes count: one more jump may be what makes the next one necessary.
std::size_t RowLayout::JumpTableSize(std::size_t sizeWithout) const
{
    std::size_t jumps = 0;
    if (version_ == JetVersion::Jet3) {
        while (jumps != (sizeWithout + jumps - 1) / kJumpUnit)
            ++jumps;
    }
    return jumps;
}

std::size_t RowLayout::SizeWith(std::size_t variableBytes) const
{
    std::size_t size = fixedEnd_ + maskSize_;
    if (!variable_.empty()) {
        size += variableBytes + (variable_.size() + 2) * numberSize_;
        size += JumpTableSize(size);
    }
    return size;
}

std::size_t RowLayout::Measure(std::span<const RowField> fields) const
{
    std::size_t variableBytes = 0;
    for (const std::size_t column : variable_) {
        if (column != kNoColumn && fields[column].isSet)
            variableBytes += fields[column].Size();
    }
    return SizeWith(variableBytes);
}

std::size_t RowLayout::Measure(const Record& record) const
{
    std::size_t variableBytes = 0;
    for (const std::size_t column : variable_) {
        if (column != kNoColumn && !record.IsNull(column))
            variableBytes += record.Stored(column)->size();
    }
    return SizeWith(variableBytes);
}

void RowLayout::Encode(std::span<const RowField> fields, MutableBytes row) const
{
    EncodeAll(PreparedFields{fields}, row);
}

void RowLayout::Encode(const Record& record, MutableBytes row) const
{
    EncodeAll(RecordFields{record}, row);
}

template <typename Fields>
void RowLayout::EncodeAll(const Fields& fields, MutableBytes row) const
{
    StoreNumber(row, 0, fieldCount_, version_);
    EncodeFixed(fields, row);
    if (variable_.empty())
        return EncodeMask(fields, row);
    if (version_ == JetVersion::Jet3)
        EncodeVariable<JetVersion::Jet3>(fields, row);
    else
        EncodeVariable<JetVersion::Jet4>(fields, row);
    EncodeMask(fields, row);
}

/// The whole area is written, as the page may have held other rows there: a Null's bytes are zeros, and nothing
/// of a deleted row comes back to light.
template <typename Fields>
void RowLayout::EncodeFixed(const Fields& fields, MutableBytes row) const
{
    if (hasGaps_)
        std::memset(row.data() + numberSize_, 0, fixedEnd_ - numberSize_);
    for (const Fixed& fixed : fixed_) {
        Byte* const at = row.data() + numberSize_ + fixed.offset;
        if (!fields.HasValue(fixed.column))
            std::memset(at, 0, fixed.size);
        else if (const ByteSpan value = fields.Value(fixed.column); value.size() == fixed.size)
            CopyBytes(at, value.data(), fixed.size);
        else
            FillFixed(fixed, value, at);
    }
}

/// A value that is not as long as its column.
void RowLayout::FillFixed(const Fixed& fixed, ByteSpan value, Byte* at) const
{
    const std::size_t size = std::min(value.size(), fixed.size);
    CopyBytes(at, value.data(), size);
    std::memset(at + size, 0, fixed.size - size);
    if (fixed.filler != 0) {
        const std::size_t unit = version_ == JetVersion::Jet3 ? 1 : 2;
        for (std::size_t i = size; i + unit <= fixed.size; i += unit)
            at[i] = fixed.filler;
    }
}

template <JetVersion kVersion, typename Fields>
void RowLayout::EncodeVariable(const Fields& fields, MutableBytes row) const
{
    constexpr std::size_t numberSize = kVersion == JetVersion::Jet3 ? 1 : 2;
    // In a local, as for all that the compiler knows each byte that is written may be one of this object's.
    const std::span<const std::size_t> columns = variable_;
    // Readers begin at the end of a row, where the mask is as long as the number of fields says, and go backwards.
    const std::size_t numberAt = row.size() - maskSize_ - numberSize;
    StoreNumber(row, numberAt, columns.size(), kVersion);
    const std::size_t jumps = kVersion == JetVersion::Jet3 ? (row.size() - 1) / kJumpUnit : 0;
    if (jumps != 0)
        std::memset(row.data() + numberAt - jumps, kJumpFiller, jumps);
    std::size_t jumped = 0;
    std::size_t offsetAt = numberAt - jumps;
    std::size_t at = fixedEnd_;
    for (std::size_t entry = 0;; ++entry) {
        for (; jumped < jumps && at >= kJumpUnit * (jumped + 1); ++jumped)
            row[numberAt - 1 - jumped] = static_cast<Byte>(entry);
        offsetAt -= numberSize;
        StoreNumber(row, offsetAt, at, kVersion);
        if (entry == columns.size())
            break;
        const std::size_t column = columns[entry];
        if (column == kNoColumn || !fields.HasValue(column))
            continue;
        const ByteSpan head = fields.Head(column);
        CopyBytes(row.data() + at, head.data(), head.size());
        at += head.size();
        const ByteSpan value = fields.Value(column);
        CopyBytes(row.data() + at, value.data(), value.size());
        at += value.size();
    }
    assert(at == offsetAt);
}

template <typename Fields>
void RowLayout::EncodeMask(const Fields& fields, MutableBytes row) const
{
    const MutableBytes mask = row.last(maskSize_);
    std::uint64_t first = 0; // the bits of the first 64 fields
    if (mask.size() > sizeof first)
        std::memset(mask.data(), 0, mask.size());
    const std::span<const std::uint16_t> numbers = numbers_;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const std::size_t number = numbers[i];
        if (number < kBitsAtOnce)
            first |= std::uint64_t{fields.HasValue(i)} << number;
        else
            mask[number >> 3] |= static_cast<Byte>(fields.HasValue(i) << (number & 7));
    }
    for (std::size_t i = 0; i < std::min(mask.size(), sizeof first); ++i)
        mask[i] = static_cast<Byte>(first >> 8 * i);
    for (const std::size_t boolean : booleans_)
        if (!fields.IsTrue(boolean))
            mask[numbers[boolean] >> 3] &= static_cast<Byte>(~(1u << (numbers[boolean] & 7)));
}

RowView::RowView(ByteSpan row, const TableDef& def, PageNumber page)
    : row_(row), page_(page), version_(def.format->version), fixedBegin_(def.format->rowNumberSize)
{
    if (row.size() < fixedBegin_ + 1)
        throw CorruptPage(page, "a row of " + std::to_string(row.size()) + " bytes is too short");
    fieldCount_ = LoadNumber(row, 0, version_);
    const std::size_t maskSize = (fieldCount_ + 7) / 8;
    // The number is what the table had when the row was written: it need not be what it has now.
    if (fieldCount_ == 0 || fieldCount_ > kMaxColumns || row.size() < fixedBegin_ + maskSize)
        throw CorruptPage(page, "a row says that it has " + std::to_string(fieldCount_) + " fields");
    maskBegin_ = row.size() - maskSize;
    fixedEnd_ = maskBegin_;
    if (def.variableColumnsEver != 0) {
        if (maskBegin_ < 2 * fixedBegin_)
            throw CorruptPage(page, "a row has no room for the number of its variable fields");
        ReadOffsets(maskBegin_ - fixedBegin_);
    }
}

void RowView::ReadOffsets(std::size_t numberAt)
{
    variableCount_ = LoadNumber(row_, numberAt, version_);
    std::size_t jumpBytes = version_ == JetVersion::Jet3 ? (row_.size() - 1) / kJumpUnit : 0;
    // The offsets stand before the jump table, one more than there are fields: the last one is the end of the data.
    const std::size_t tail = jumpBytes + (variableCount_ + 1) * fixedBegin_;
    if (numberAt < fixedBegin_ + tail)
        throw CorruptPage(page_, "the offsets of a row's variable fields do not fit the row");
    const std::size_t offsetsBegin = numberAt - tail;
    offsetsEnd_ = numberAt - jumpBytes;
    jumps_ = row_.subspan(offsetsEnd_, jumpBytes);
    // Only offsets up to where the table begins need a jump. More bytes than those are fillers, by what most say in
    // front; by one description behind.
    const std::size_t needed = offsetsBegin / kJumpUnit;
    if (jumpBytes > needed) {
        const bool fillersBehind = needed != 0 && jumps_.back() == kJumpFiller && variableCount_ != kJumpFiller;
        jumps_ = fillersBehind ? jumps_.first(needed) : jumps_.last(needed);
    }
    std::size_t previous = fixedBegin_;
    for (std::size_t i = 0; i <= variableCount_; ++i) {
        const std::size_t offset = Offset(i);
        if (offset < previous || offset > offsetsBegin)
            throw CorruptPage(page_, "the offsets of a row's variable fields contradict each other");
        previous = offset;
    }
    fixedEnd_ = Offset(0);
}

std::size_t RowView::Offset(std::size_t entry) const noexcept
{
    const std::size_t low = LoadNumber(row_, offsetsEnd_ - (entry + 1) * fixedBegin_, version_);
    if (jumps_.empty())
        return low;
    std::size_t jumped = 0;
    // An entry lies behind as many multiples of 256 as there are jumps to it or to an entry before it.
    while (jumped < jumps_.size() && jumps_[jumps_.size() - 1 - jumped] <= entry)
        ++jumped;
    return low + kJumpUnit * jumped;
}

/// A row keeps the columns that the table had when it was written: those that were added later are Null in it, without
/// its having been touched.
bool RowView::IsSet(const Column& column) const noexcept
{
    return column.number < fieldCount_ && (row_[maskBegin_ + (column.number >> 3)] >> (column.number & 7) & 1);
}

std::optional<ByteSpan> RowView::Field(const Column& column) const
{
    if (!IsSet(column))
        return std::nullopt;
    if (column.IsFixed()) {
        const std::size_t begin = fixedBegin_ + column.fixedOffset;
        if (begin + column.FixedSize() > fixedEnd_)
            throw CorruptPage(page_, "field '" + column.name + "' lies outside the fixed part of its row");
        return row_.subspan(begin, column.FixedSize());
    }
    if (column.variableIndex >= variableCount_)
        throw CorruptPage(page_, "field '" + column.name + "' is missing in its row");
    const std::size_t begin = Offset(column.variableIndex);
    const std::size_t size = Offset(column.variableIndex + std::size_t{1}) - begin;
    const bool anySize =
        column.type == ColumnType::Text || column.type == ColumnType::Binary || IsLongValue(column.type);
    // Some system tables keep numbers and dates in the variable part.
    if (!anySize && size != column.FixedSize())
        throw CorruptPage(page_, "field '" + column.name + "' has " + std::to_string(size) + " bytes");
    return row_.subspan(begin, size);
}

/// Only the columns that were asked for: a key needs one or two of them, and a memo that nobody wants is not fetched
/// from its pages.
void ReadRecord(Pager& pager, const TableDef& def, const RowStore::Found& row, std::span<const std::size_t> columns,
                Record& record)
{
    const RowView view(row.bytes, def, row.at.page);
    record.Reset(def.columns.size());
    for (const std::size_t i : columns) {
        const Column& column = def.columns[i];
        if (column.type == ColumnType::Boolean) {
            record.SetSized(i, 1)[0] = view.IsSet(column) ? 1 : 0;
        } else if (const std::optional<ByteSpan> field = view.Field(column)) {
            if (IsLongValue(column.type))
                record.SetStored(i, LongValues::Read(pager, *field, row.at.page));
            else
                record.SetStored(i, *field);
        }
    }
}

} // namespace jet
