#pragma once

#include "jet/sql/ast.h"

#include <string_view>

namespace jet::sql {

/// Parses one statement, with or without its closing semicolon. Keywords in any letter case; names bare or in brackets.
///
/// Throws Error with the number of the kind of statement (3290 for CREATE TABLE, 3293 for ALTER TABLE ...) and, in its
/// text, the byte offset of the first token that does not fit.
[[nodiscard]] Statement ParseStatement(std::string_view sql);

} // namespace jet::sql
