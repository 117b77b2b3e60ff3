#pragma once

#include "plan/origin.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Which names a database takes, and which are the same to it.
struct NameRules {
    /// What two names have in common exactly when they are the same.
    std::function<std::string(std::string_view name)> key;
    /// The valid name next to `name`, of so many characters at most.
    std::function<std::string(std::string_view name, std::size_t maxCharacters)> valid;
};

struct KnownColumn {
    std::string name;
    bool takesText = false;  ///< a text or a memo, or becomes one when it must
    bool needsValue = false; ///< a record without one is refused; not those that number themselves
    bool refusesEmpty = false;
    bool hasRules = false;  ///< by an index or a relation, which may refuse a text
    std::string refersTo{}; ///< the table that a relation makes it refer to
    std::optional<ColumnOrigin> origin{};
};

struct KnownTable {
    std::string name;
    std::optional<TableOrigin> origin;
    std::vector<KnownColumn> columns;
};

/// What stands in the database before a document is imported, as far as a plan goes by it.
struct KnownDatabase {
    NameRules names;
    std::size_t maxDataColumns = 0; ///< of one table, so that no record can be too large
    std::vector<KnownTable> tables;
    std::vector<std::string> otherNames;         ///< of what is no table, but takes a table's name
    std::vector<std::string> relations, indexes; ///< their names
};

} // namespace velmora
