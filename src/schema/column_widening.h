#pragma once

#include "schema/database_session.h"

#include <string>

namespace velmora {

/// Turns the text column `column` of the table under `records` into a memo of the same name, which then stands last.
/// The record pending in `records` is there afterwards with the key and the values that it had. Positions change: see
/// Recordset::Layout(). A failure ends in the error report; the record is gone then, and false comes back.
///
/// No other recordset on the table may have a pending record.
[[nodiscard]] bool velChangeColumnToMemo(Job& job, DatabaseSession& session, Recordset& records, std::string column);

} // namespace velmora
