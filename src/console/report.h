#pragma once

#include "schema/table_report.h"

#include <span>
#include <string>

namespace velmora {

/// What `--help` writes. Lines end in LF.
[[nodiscard]] std::string HelpText();

/// What happened to each database table, as a text table with a heading and, from two tables on, a line of totals.
/// Lines end in LF; empty without tables.
[[nodiscard]] std::string ClosingTable(std::span<const TableReport> tables);

} // namespace velmora
