#pragma once

#include "jet/relations/integrity.h"
#include "jet/table/table.h"

#include <cstddef>

namespace jet::sql {

/// Gives column `target` of every row the value of column `source`, converted to its type. Positions are 0-based.
///
/// Throws what Table::Update and the relations throw, FieldTooSmall and WrongType; the rows that were changed already
/// have their old values again then.
void CopyColumnValues(Table& table, ReferentialIntegrity& integrity, std::size_t target, std::size_t source);

} // namespace jet::sql
