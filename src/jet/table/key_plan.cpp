#include "jet/table/key_plan.h"

namespace jet {

KeyMaker::KeyMaker(const TableDef& def, const std::vector<IndexColumn>& columns) : parts_(std::make_unique<Parts>())
{
    parts_->format = def.format;
    for (const IndexColumn& part : columns) {
        const std::size_t position = def.ColumnByNumber(part.column).value();
        const Column& column = def.columns[position];
        parts_->columns.push_back(position);
        parts_->kinds.push_back({.type = column.type, .order = part.order, .collation = column.collation});
    }
    FindNumber();
}

void KeyMaker::FindNumber()
{
    const bool isNumber = parts_->kinds.size() == 1 && parts_->kinds[0].type == ColumnType::Long &&
                          parts_->kinds[0].order == SortOrder::Ascending;
    number_ = isNumber ? static_cast<std::uint32_t>(parts_->columns[0]) : kNone;
}

void KeyMaker::ReadFrom(const TableDef& def, const std::vector<std::uint16_t>& numbers)
{
    parts_->columns.clear();
    for (const std::uint16_t number : numbers)
        parts_->columns.push_back(def.ColumnByNumber(number).value());
    FindNumber();
}

KeyFacts KeyMaker::MakeParts(Bytes& key, const Record& record) const
{
    static constexpr Byte kFalse[] = {0};
    KeyFacts facts;
    key.clear();
    for (std::size_t i = 0; i < parts_->columns.size(); ++i) {
        std::optional<ByteSpan> stored = record.Stored(parts_->columns[i]);
        // A boolean has no Null: one that nobody has set is False, in the key as in the row.
        if (!stored && parts_->kinds[i].type == ColumnType::Boolean)
            stored = ByteSpan(kFalse);
        facts.anyNull |= !stored;
        facts.allNull &= !stored;
        AppendKey(key, *parts_->format, parts_->kinds[i], stored);
    }
    return facts;
}

} // namespace jet
