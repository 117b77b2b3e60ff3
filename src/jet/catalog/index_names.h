#pragma once

#include "jet/table/table_def.h"

#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace jet {

/// Which tables have an index of a given name: so that a question for a name alone need not read every definition.
class IndexNames {
public:
    explicit IndexNames(const Format& format) : format_(&format) {}

    /// Takes in the indexes of a table, in place of what was known of it.
    void Note(const TableDef& def);
    void Forget(PageNumber table);
    /// The definition pages of tables with an index of that name.
    [[nodiscard]] std::vector<PageNumber> TablesWith(std::string_view name) const;

private:
    const Format* format_;
    std::unordered_map<std::string, std::set<PageNumber>> tables_;    ///< by the key of the name
    std::unordered_map<PageNumber, std::vector<std::string>> keysOf_; ///< keys of the table's index names
};

} // namespace jet
