#pragma once

#include "jet/table/record.h"
#include "jet/table/row_store.h"

#include <span>

namespace jet {

/// Fills the given columns (indexes) of `record` from a row that was found, long values resolved; the others are Null.
/// Throws CorruptPage.
void ReadRecord(Pager& pager, const TableDef& def, const RowStore::Found& row, std::span<const std::size_t> columns,
                Record& record);

} // namespace jet
