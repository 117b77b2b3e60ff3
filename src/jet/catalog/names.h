#pragma once

#include "jet/base/format.h"
#include "jet/table/table_def.h"

#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace jet {

/// What two names have in common exactly when the database takes them for the same: the key of the sort order, as a
/// text that maps can be ordered and hashed by.
[[nodiscard]] std::string NameKey(const Format& format, std::string_view name);

/// Throws InvalidName unless `name` may name a table, a column, an index or a relation: 1 to 64 characters, none of
/// . ! [ ] ` or a control character, no leading blank, and in Jet 3 only characters of its code page.
void CheckName(const Format& format, std::string_view name);

/// The valid name next to `name`: "_" stands for each character that it may not have, and for an empty name; what is
/// longer than `maxUnits` characters (UTF-16 code units, at most 64) is cut.
[[nodiscard]] std::string ValidName(const Format& format, std::string_view name, std::size_t maxUnits);

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
