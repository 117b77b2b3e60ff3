#include "import/field_finder.h"

namespace velmora {

FieldFinder::Slot FieldFinder::LookUp(const Recordset& records, ColumnNumber column) const
{
    const std::uint64_t layout = records.Layout();
    const auto field = records.FieldIndex(plan_.columns[column].name);
    if (!field)
        return {layout, 0, LossReason::NoColumn};
    return {layout, static_cast<std::uint32_t>(*field),
            IsKey(records, *field) ? LossReason::KeyColumn : LossReason::None};
}

/// Only its type tells a key column from one of the document's own that bears its name, in a table without keys.
bool FieldFinder::IsKey(const Recordset& records, std::size_t field) const
{
    const std::string& name = records.FieldName(field);
    if (name == settings_.strKeyPrimary)
        return records.IsAutonumber(field);
    if (name == settings_.strKeyForeign)
        return records.IsLong(field);
    if (name != kMasterTable)
        return false;
    const auto primary = records.FieldIndex(settings_.strKeyPrimary);
    return primary && records.IsAutonumber(*primary);
}

} // namespace velmora
