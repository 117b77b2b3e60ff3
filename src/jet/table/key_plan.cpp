#include "jet/table/key_plan.h"

namespace jet {

KeyMaker::KeyMaker(const TableDef& def, const std::vector<IndexColumn>& columns) : format_(def.format)
{
    for (const IndexColumn& part : columns) {
        const std::size_t position = def.ColumnByNumber(part.column).value();
        const Column& column = def.columns[position];
        columns_.push_back(position);
        kinds_.push_back({.type = column.type, .order = part.order, .collation = column.collation});
    }
    FindNumber();
}

void KeyMaker::FindNumber()
{
    const bool isNumber =
        kinds_.size() == 1 && kinds_[0].type == ColumnType::Long && kinds_[0].order == SortOrder::Ascending;
    number_ = isNumber ? static_cast<std::uint32_t>(columns_[0]) : kNone;
}

void KeyMaker::ReadFrom(const TableDef& def, const std::vector<std::uint16_t>& numbers)
{
    columns_.clear();
    for (const std::uint16_t number : numbers)
        columns_.push_back(def.ColumnByNumber(number).value());
    FindNumber();
}

KeyFacts KeyMaker::MakeParts(Bytes& key, const Record& record) const
{
    static constexpr Byte kFalse[] = {0};
    KeyFacts facts;
    key.clear();
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        std::optional<ByteSpan> stored = record.Stored(columns_[i]);
        // A boolean has no Null: one that nobody has set is False, in the key as in the row.
        if (!stored && kinds_[i].type == ColumnType::Boolean)
            stored = ByteSpan(kFalse);
        facts.anyNull |= !stored;
        facts.allNull &= !stored;
        AppendKey(key, *format_, kinds_[i], stored);
    }
    return facts;
}

} // namespace jet
