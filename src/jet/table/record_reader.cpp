#include "jet/table/record_reader.h"

#include "jet/store/long_values.h"
#include "jet/table/row_codec.h"

namespace jet {

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
