#pragma once

#include "jet/store/header_page.h"
#include "jet/table/table.h"

namespace jet {

/// Adds the column to `def` as its last: next number, next place in the row, the file's own sort order. A memo or OLE
/// column still wants its usage maps. Throws SizeTooLong, TwoAutoNumbers; that the name is a new and good one, and
/// that there is a number left, is the caller's business.
Column& DesignColumn(TableDef& def, const ColumnSpec& spec, const DatabaseHeader& header);

/// Makes the column of `spec`'s name what `spec` says, as far as every value that it may hold fits that: a text becomes
/// a longer text in its place, or a memo, which stands last and still wants its usage maps; a memo stays one; numbers,
/// dates and booleans become texts in their place. Everything else that the column has stays. True when rows look
/// otherwise then. Throws SizeTooLong, and SyntaxErrorInFieldDefinition for any other change. That there is such a
/// column is the caller's business.
[[nodiscard]] bool WidenColumn(TableDef& def, const ColumnSpec& spec, const DatabaseHeader& header);

/// The end of the fixed area as the columns that stand make it: where the next fixed column goes.
[[nodiscard]] std::uint16_t FixedAreaEnd(const TableDef& def) noexcept;

} // namespace jet
