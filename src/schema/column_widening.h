#pragma once

#include "schema/database_session.h"

#include <string>

namespace velmora {

/// Turns the text column `column` of the table under `records` into a memo of the same name, which then stands last.
/// The record pending in `records`, and the one pending in `alsoPending` (on the same table; may be null), are there
/// afterwards with the keys and values that they had. Positions change: see Recordset::Layout(). A failure ends in the
/// error report, the records are gone then and false comes back.
[[nodiscard]] bool velChangeColumnToMemo(Job& job, DatabaseSession& session, Recordset& records,
                                         const std::string& column, Recordset* alsoPending);

} // namespace velmora
