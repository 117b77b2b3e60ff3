#include "jet/table/key_plan.h"

namespace jet {

KeyPlan::KeyPlan(const TableDef& def, const RealIndex& index) : format_(def.format), flags_(index.flags)
{
    for (const IndexColumn& part : index.columns) {
        const std::size_t position = def.ColumnByNumber(part.column).value();
        const Column& column = def.columns[position];
        columns_.push_back(position);
        kinds_.push_back({.type = column.type, .order = part.order, .collation = column.collation});
    }
}

KeyFacts KeyPlan::Append(Bytes& key, const Record& record) const
{
    static constexpr Byte kFalse[] = {0};
    KeyFacts facts;
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
