#include "jet/table/long_fields.h"

#include "jet/base/error.h"
#include "jet/base/text_codec.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace jet {

void LongFields::Begin(std::size_t columnCount)
{
    heads_.resize(columnCount); // the only place: fields are views of it
    kept_.assign(columnCount, false);
    outside_.clear();
    otherForms_.clear();
}

/// `view`, and what it is a view of stays where it is.
/// MemoInRow() and PlainMemo() may have made another form in memo_, which the next memo will use again.
ByteSpan LongFields::Held(ByteSpan view)
{
    return !view.empty() && view.data() == memo_.data() ? otherForms_.emplace_back(std::move(memo_)) : view;
}

void LongFields::Keep(std::size_t column, ByteSpan oldField, RowField& field)
{
    kept_[column] = true;
    field.head = {};
    field.bytes = oldField;
}

void LongFields::Set(std::size_t column, const Column& kind, const Format& format, ByteSpan stored, RowField& field)
{
    std::optional<ByteSpan> inRow;
    if (kind.neverInline)
        inRow = std::nullopt;
    else if (kind.type == ColumnType::Memo)
        inRow = MemoInRow(stored, format, memo_);
    else if (stored.size() <= format.maxInlineLong)
        inRow = stored;
    if (!inRow)
        return MoveOut(column, kind, format, stored, field);
    heads_[column] = LongValues::InlineHead(inRow->size());
    field.head = heads_[column];
    field.bytes = Held(*inRow);
}

void LongFields::MoveOut(std::size_t column, const Column& kind, const Format& format, ByteSpan stored, RowField& field)
{
    const ByteSpan plain = kind.type == ColumnType::Memo ? PlainMemo(stored, format, memo_) : stored;
    if (plain.size() > kMaxLongValue)
        throw Error(ErrorNumber::RecordTooLarge);
    // Its pages come last, in Write(): until then the record may still be refused, and nothing is to be given back.
    outside_.push_back({column, Held(plain)});
    kept_[column] = false;
    field.head = heads_[column];
    field.bytes = {};
}

void LongFields::Write(std::span<const std::unique_ptr<LongValues>> stores)
{
    for (const Outside& value : outside_)
        heads_[value.column] = stores[value.column]->WriteOutside(value.value);
}

ByteSpan PlainMemo(ByteSpan stored, const Format& format, Bytes& buffer)
{
    if (format.version == JetVersion::Jet3 || !IsCompressed(stored))
        return stored;
    buffer = ExpandUtf16(stored);
    // Plain, a text that begins with U+FEFF would look compressed: it has no other form.
    return IsCompressed(buffer) ? stored : ByteSpan(buffer);
}

std::optional<ByteSpan> MemoInRow(ByteSpan stored, const Format& format, Bytes& buffer)
{
    if (IsCompressed(stored) && format.version == JetVersion::Jet4) {
        // As nearly every short memo comes: one byte for each character, none of them the switch to two.
        const ByteSpan characters = stored.subspan(kCompressedMark.size());
        if (characters.size() >= kMinCompressed && 2 * characters.size() <= format.maxInlineLong &&
            std::memchr(characters.data(), 0, characters.size()) == nullptr)
            return stored;
    }
    const ByteSpan plain = PlainMemo(stored, format, buffer);
    if (plain.size() > format.maxInlineLong)
        return std::nullopt;
    if (format.version == JetVersion::Jet3 || !CanCompress(plain))
        return plain;
    if (plain.data() != stored.data())
        return stored;
    buffer.clear();
    AppendCompressed(buffer, plain);
    return buffer;
}

std::optional<std::vector<std::size_t>> ShrinkToFit(const RowLayout& layout, const Format& format,
                                                    std::vector<std::size_t> candidates, std::span<RowField> fields)
{
    const auto size = [fields](std::size_t column) { return fields[column].Size(); };
    // What is no longer than the head that stays would gain nothing.
    std::erase_if(candidates, [size](std::size_t column) { return size(column) <= kLongValueHeaderSize; });
    // The longest first, so that as few values as possible cost a look at another page.
    std::ranges::stable_sort(candidates, std::ranges::greater(), size);
    std::vector<std::size_t> shrunk;
    for (const std::size_t column : candidates) {
        if (layout.Measure(fields) <= format.maxRecordSize)
            return shrunk;
        fields[column].Shrink();
        shrunk.push_back(column);
    }
    return layout.Measure(fields) <= format.maxRecordSize ? std::optional(std::move(shrunk)) : std::nullopt;
}

std::vector<std::size_t> LongValuesToMoveOut(const RowLayout& layout, const TableDef& def, std::span<RowField> fields)
{
    std::vector<std::size_t> candidates;
    for (std::size_t i = 0; i < def.columns.size(); ++i) {
        if (IsLongValue(def.columns[i].type) && fields[i].isSet)
            candidates.push_back(i);
    }
    std::optional<std::vector<std::size_t>> moved = ShrinkToFit(layout, *def.format, std::move(candidates), fields);
    if (!moved)
        throw Error(ErrorNumber::RecordTooLarge);
    return *std::move(moved);
}

} // namespace jet
