#pragma once

#include "driver/batch.h"

#include <span>
#include <string>

namespace velmora {

/// What happened to each database table, as a text table with a heading and, from two tables on, a line of totals.
/// Lines end in LF; empty without tables.
[[nodiscard]] std::string ClosingTable(std::span<const TableReport> tables);

} // namespace velmora
