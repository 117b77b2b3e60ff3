#pragma once

#include "schema/database_session.h"

#include <optional>
#include <string>
#include <unordered_set>

namespace velmora {

// What the open database already holds. None of these changes it.

/// What is known of one table's columns: nothing before the first question, then the names of all.
struct TableColumns {
    std::string table;
    std::optional<std::unordered_set<std::string>> names;

    /// A statement has added `column`.
    void NoteAdded(const std::string& column)
    {
        if (names)
            names->insert(column);
    }
};

/// Has the table a column of exactly this name, letter case included? The database is asked once for each `columns`.
[[nodiscard]] bool velCheckExistsColumn(Job& job, DatabaseSession& session, TableColumns& columns,
                                        const std::string& column);

/// Is there a user table of this name? Views, links and system tables do not count.
[[nodiscard]] bool velCheckExistsTable(Job& job, DatabaseSession& session, const std::string& table);

/// Has `child` a foreign key already? Any one counts, whichever table it refers to. Without one, `relation` becomes a
/// free name: when it is taken, `child` and "_LINK_0" in its place; that name being taken as well is a failure.
[[nodiscard]] bool velCheckExistsRelation(Job& job, DatabaseSession& session, const std::string& parent,
                                          const std::string& child, std::string& relation);

/// Does any index of the table cover the column? Without one, `index` becomes a free name: when it is taken, table,
/// "_", column and
/// "_0" in its place; that name being taken as well is a failure.
[[nodiscard]] bool velCheckExistsIndex(Job& job, DatabaseSession& session, const std::string& table,
                                       const std::string& column, std::string& index);

} // namespace velmora
