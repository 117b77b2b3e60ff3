#pragma once

#include "jet/base/row_id.h"
#include "jet/base/value.h"

#include <string>
#include <vector>

/// How the dumps write things as text.
namespace jet {

[[nodiscard]] const char* TypeName(ColumnType type);
/// One line of text: what would end it or the field is written as an escape.
[[nodiscard]] std::string Escaped(const std::string& text);
/// "7F 80 00"
[[nodiscard]] std::string Hex(ByteSpan bytes);
/// A place in a page in four digits: "0fe9".
[[nodiscard]] std::string Offset(std::size_t at);
/// Ascending numbers as ranges: "2-5, 9".
[[nodiscard]] std::string PageList(const std::vector<PageNumber>& pages);
/// "page 17 row 3"
[[nodiscard]] std::string Pointer(RowId row);

} // namespace jet
