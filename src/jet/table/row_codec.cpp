#include "jet/table/row_codec.h"

#include "jet/base/error.h"
#include "jet/store/bitmap.h"
#include "jet/store/long_values.h"

#include <algorithm>
#include <cassert>
#include <cstring>

namespace jet {

namespace {

/// When a row moves, its place has to hold a pointer.
constexpr std::size_t kMinRowSize = kRowPointerSize;
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
    Record::View record;

    [[nodiscard]] bool HasValue(std::size_t column) const { return !record.IsNull(column); }
    [[nodiscard]] bool IsTrue(std::size_t boolean) const { return HasValue(boolean) && jet::IsTrue(Value(boolean)); }
    [[nodiscard]] static ByteSpan Head(std::size_t) { return {}; }
    [[nodiscard]] ByteSpan Value(std::size_t column) const { return record.Value(column); }
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
    : variableCount_(def.variableColumnsEver), fieldCount_(def.columnsEver),
      maskSize_(static_cast<std::uint16_t>((fieldCount_ + 7) / 8)),
      numberSize_(static_cast<std::uint16_t>(def.format->rowNumberSize)), version_(def.format->version)
{
    std::vector<Step> variable(variableCount_, {kNoColumn, 0});
    std::vector<Step> booleans;
    std::size_t fixedEnd = numberSize_;
    std::size_t filledEnd = numberSize_; // without gaps it would end here
    for (std::size_t i = 0; i < def.columns.size(); ++i) {
        const Column& column = def.columns[i];
        Step step{static_cast<std::uint16_t>(i), column.number};
        kinds_.push_back(KindOf(column));
        hasLongValues_ |= IsLongValue(column.type);
        if (column.type == ColumnType::Boolean) {
            booleans.push_back(step);
            continue;
        }
        SetBit(mask_, column.number);
        if (!column.IsFixed()) {
            variable[column.variableIndex] = step;
        } else {
            step.offset = static_cast<std::uint16_t>(numberSize_ + column.fixedOffset);
            step.size = static_cast<std::uint16_t>(column.FixedSize());
            step.filler = column.type == ColumnType::Text ? Byte{' '} : Byte{0};
            steps_.push_back(step);
            fixedEnd = std::max(fixedEnd, std::size_t{step.offset} + step.size);
            filledEnd += step.size;
        }
    }
    fixedCount_ = static_cast<std::uint16_t>(steps_.size());
    steps_.insert(steps_.end(), variable.begin(), variable.end());
    steps_.insert(steps_.end(), booleans.begin(), booleans.end());
    // Rows of hardly more than booleans: the fixed area is made longer.
    if (variable.empty() && fixedEnd + maskSize_ < kMinRowSize)
        fixedEnd = kMinRowSize - maskSize_;
    fixedEnd_ = static_cast<std::uint16_t>(fixedEnd);
    hasGaps_ = filledEnd != fixedEnd;
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
    std::size_t size = std::size_t{fixedEnd_} + maskSize_;
    if (variableCount_ != 0) {
        size += variableBytes + (std::size_t{variableCount_} + 2) * numberSize_;
        size += JumpTableSize(size);
    }
    return size;
}

std::size_t RowLayout::Measure(std::span<const RowField> fields) const
{
    std::size_t variableBytes = 0;
    for (const Step& step : Variable()) {
        if (step.column != kNoColumn && fields[step.column].isSet)
            variableBytes += fields[step.column].Size();
    }
    return SizeWith(variableBytes);
}

std::size_t RowLayout::Measure(const Record& record) const
{
    const Record::View values = record.Values();
    std::size_t variableBytes = 0;
    for (const Step& step : Variable()) {
        if (step.column != kNoColumn && !values.IsNull(step.column))
            variableBytes += values.Value(step.column).size();
    }
    return SizeWith(variableBytes);
}

void RowLayout::Encode(std::span<const RowField> fields, MutableBytes row) const
{
    if (version_ == JetVersion::Jet3)
        EncodeAll<JetVersion::Jet3>(PreparedFields{fields}, row);
    else
        EncodeAll<JetVersion::Jet4>(PreparedFields{fields}, row);
}

void RowLayout::Encode(const Record& record, MutableBytes row) const
{
    if (version_ == JetVersion::Jet3)
        EncodeAll<JetVersion::Jet3>(RecordFields{record.Values()}, row);
    else
        EncodeAll<JetVersion::Jet4>(RecordFields{record.Values()}, row);
}

template <JetVersion kVersion, typename Fields>
void RowLayout::EncodeAll(const Fields& fields, MutableBytes row) const
{
    const MutableBytes mask = row.last(maskSize_);
    CopyBytes(mask.data(), mask_.data(), mask.size());
    StoreNumber(row, 0, fieldCount_, kVersion);
    EncodeFixed(fields, row, mask);
    if (variableCount_ != 0)
        EncodeVariable<kVersion>(fields, row, mask);
    for (const Step& boolean : Booleans())
        if (fields.IsTrue(boolean.column))
            SetBit(mask, boolean.number);
}

/// The whole area is written, as the page may have held other rows there: a Null's bytes are zeros, and nothing
/// of a deleted row comes back to light.
template <typename Fields>
inline void RowLayout::EncodeFixed(const Fields& fields, MutableBytes row, MutableBytes mask) const
{
    if (hasGaps_)
        std::memset(row.data() + numberSize_, 0, std::size_t{fixedEnd_} - numberSize_);
    for (const Step& fixed : Fixed()) {
        Byte* const at = row.data() + fixed.offset;
        if (!fields.HasValue(fixed.column)) {
            ClearBit(mask, fixed.number);
            std::memset(at, 0, fixed.size);
        } else if (const ByteSpan value = fields.Value(fixed.column); value.size() == fixed.size) {
            CopyBytes(at, value.data(), value.size());
        } else {
            FillFixed(fixed, value, at);
        }
    }
}

/// A value that is not as long as its column.
void RowLayout::FillFixed(const Step& fixed, ByteSpan value, Byte* at) const
{
    const std::size_t size = std::min<std::size_t>(value.size(), fixed.size);
    CopyBytes(at, value.data(), size);
    std::memset(at + size, 0, fixed.size - size);
    if (fixed.filler != 0) {
        const std::size_t unit = version_ == JetVersion::Jet3 ? 1 : 2;
        for (std::size_t i = size; i + unit <= fixed.size; i += unit)
            at[i] = fixed.filler;
    }
}

template <JetVersion kVersion, typename Fields>
inline void RowLayout::EncodeVariable(const Fields& fields, MutableBytes row, MutableBytes mask) const
{
    constexpr std::size_t numberSize = kVersion == JetVersion::Jet3 ? 1 : 2;
    // In a local, as for all that the compiler knows each byte that is written may be one of this object's.
    const Steps steps = Variable();
    // Readers begin at the end of a row, where the mask is as long as the number of fields says, and go backwards.
    const std::size_t numberAt = row.size() - maskSize_ - numberSize;
    StoreNumber(row, numberAt, steps.size(), kVersion);
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
        if (entry == steps.size())
            break;
        const std::size_t column = steps[entry].column;
        if (column == kNoColumn)
            continue;
        if (!fields.HasValue(column)) {
            ClearBit(mask, steps[entry].number);
            continue;
        }
        const ByteSpan head = fields.Head(column);
        CopyBytes(row.data() + at, head.data(), head.size());
        at += head.size();
        const ByteSpan value = fields.Value(column);
        CopyBytes(row.data() + at, value.data(), value.size());
        at += value.size();
    }
    assert(at == offsetAt);
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
