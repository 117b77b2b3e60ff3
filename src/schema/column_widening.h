#pragma once

#include "schema/database_session.h"

#include <cstddef>
#include <string>
#include <vector>

namespace velmora {

/// A text column that is to hold longer values, and the value that does not fit.
struct ColumnToWiden {
    enum class Target { Text255, Memo };

    std::string column;
    Target target;
    std::size_t characters; ///< of the value
    std::string path;       ///< of the value in the document
};

/// Makes text columns of `table` texts of 255 characters, in their places, or memos, which stand last then; what the
/// design says about them stays. All or none are changed: an index or a relation that forbids it is found before
/// anything is done. Records pending in recordsets on the table keep their values; positions change, see
/// Recordset::Layout().
void velChangeColumnToMemo(Job& job, DatabaseSession& session, const std::string& table,
                           const std::vector<ColumnToWiden>& columns);

/// Makes a column whose type the program chose a text of 255 characters, in its place, for `reason`: its values as a
/// document writes them. Records pending in recordsets on the table keep their values, but for those of this column.
/// Throws 3421 when the column has to stay what it is.
void TurnIntoText(Job& job, DatabaseSession& session, const std::string& table, const ChosenType& column,
                  const std::string& reason);

/// Adds the memo column `name` to `table`, for values that do not fit the type of `besides`, the first of them at
/// `path` in the document. Records pending in recordsets on the table keep their values.
void AddColumnBeside(Job& job, DatabaseSession& session, const std::string& table, const std::string& besides,
                     const std::string& name, const std::string& path);

} // namespace velmora
