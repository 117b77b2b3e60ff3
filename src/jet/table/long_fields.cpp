#include "jet/table/long_fields.h"

#include "jet/base/error.h"
#include "jet/table/memo_form.h"

namespace jet {

void LongFields::Begin(std::size_t columnCount)
{
    heads_.resize(columnCount); // the only place: fields are views of it
    kept_.assign(columnCount, false);
    outside_.clear();
    otherForms_.clear();
}

/// `view`, and what it is a view of stays where it is.
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

} // namespace jet
