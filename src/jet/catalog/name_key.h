#pragma once

#include "jet/base/format.h"

#include <string>
#include <string_view>

namespace jet {

/// What two names have in common exactly when the database takes them for the same: the key of the sort order, as a
/// text that maps can be ordered and hashed by.
[[nodiscard]] std::string NameKey(const Format& format, std::string_view name);

/// Throws InvalidName unless `name` may name a table, a column, an index or a relation: 1 to 64 characters, none of
/// . ! [ ] ` or a control character, no leading blank, and in Jet 3 only characters of its code page.
void CheckName(const Format& format, std::string_view name);

} // namespace jet
