#pragma once

#include "schema/table_report.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace velmora {

/// What `--help` writes. Lines end in LF.
[[nodiscard]] std::string HelpText();

/// What happened to each database table, as a text table with a heading and, from two tables on, a line of totals.
/// Lines end in LF; empty without tables. With `columns`, no line is longer: headings get short and names are cut.
[[nodiscard]] std::string ClosingTable(std::span<const TableReport> tables,
                                       std::optional<std::size_t> columns = std::nullopt);

} // namespace velmora
