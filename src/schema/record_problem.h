#pragma once

#include "log/runtime_error.h"

#include <cstddef>
#include <string>

namespace velmora {

/// A value that is too long for its column.
struct LongValueOfColumn {
    std::string table;
    std::string column;
    std::size_t characters;
    std::string path;
};

/// Why the column cannot take longer values (an index or a relation, which the engine has named), and what helps.
[[nodiscard]] RuntimeError ExplainWidening(const RuntimeError& error, const LongValueOfColumn& value);

/// A record that does not fit a page even when all that can leave it has left it.
struct LargeRecord {
    std::string table;
    std::string path; ///< of the element
    std::size_t columns;
    bool isAccess97;
};

[[nodiscard]] RuntimeError ExplainTooLarge(const RuntimeError& error, const LargeRecord& record);

} // namespace velmora
