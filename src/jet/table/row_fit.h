#pragma once

#include "jet/table/row_codec.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace jet {

/// Makes the row of `fields` fit its page: the longest of `candidates` (column indexes) shrinks to the 12 bytes that
/// stay in a row of a long value that stands outside it, then the next, and no more of them than needed. Gives those
/// that shrank, in this order; nullopt when the row is too large even so.
[[nodiscard]] std::optional<std::vector<std::size_t>> ShrinkToFit(const RowLayout& layout, const Format& format,
                                                                  std::vector<std::size_t> candidates,
                                                                  std::span<RowField> fields);

/// The same for the long values that stand in the row. Throws RecordTooLarge when that does not help enough.
[[nodiscard]] std::vector<std::size_t> LongValuesToMoveOut(const RowLayout& layout, const TableDef& def,
                                                           std::span<RowField> fields);

} // namespace jet
