#pragma once

#include "jet/table/table_def.h"

namespace jet {

/// Gives a new, empty usage-map record on the map pages of `def`, or on a further page when they are full.
[[nodiscard]] RowId PlaceMapRecord(Pager& pager, const TableDef& def);
/// Deletes the record, with its bitmap pages; the page that held it is freed when no other record is left on it. The
/// pages named in the map are not touched.
void RemoveMapRecord(Pager& pager, RowId record);

} // namespace jet
