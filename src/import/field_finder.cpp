#include "import/field_finder.h"

namespace velmora {

FieldFinder::Slot FieldFinder::LookUp(const TableSink& sink, ColumnNumber column) const
{
    const Recordset& records = *sink.records;
    const std::uint64_t layout = records.Layout();
    const auto field = records.FieldIndex(plan_.columns[column].name);
    if (!field)
        return {layout, 0, LossReason::NoColumn};
    return {layout, static_cast<std::uint32_t>(*field), IsKey(sink, *field) ? LossReason::KeyColumn : LossReason::None};
}

/// Only its type tells a key column from one of the document's own that bears its name, in a table without keys.
bool FieldFinder::IsKey(const TableSink& sink, std::size_t field)
{
    const Recordset& records = *sink.records;
    const PlannedKeys& keys = sink.plan->keys;
    const std::string& name = records.FieldName(field);
    if (name == keys.primary)
        return records.IsAutonumber(field);
    if (name == keys.foreign)
        return records.IsLong(field);
    if (name != keys.master)
        return false;
    const auto primary = records.FieldIndex(keys.primary);
    return primary && records.IsAutonumber(*primary);
}

} // namespace velmora
