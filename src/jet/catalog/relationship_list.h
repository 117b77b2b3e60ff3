#pragma once

#include "jet/catalog/system_table.h"

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace jet {

/// One relation as MSysRelationships holds it: a row for each pair of columns.
struct Relationship {
    std::string name;
    std::uint32_t flags = 0; ///< relationship_flags
    std::string table;       ///< the referencing one
    std::string referencedTable;
    std::vector<std::pair<std::string, std::string>> columns; ///< referencing, referenced
};

/// All relations, kept in memory beside their rows. Names compare as the sort order does.
class RelationshipList {
public:
    explicit RelationshipList(Pager& pager);

    [[nodiscard]] SystemTable& Rows() noexcept { return table_; }
    [[nodiscard]] const Relationship* Find(std::string_view name) const;
    /// Those whose referencing table this is.
    [[nodiscard]] std::vector<const Relationship*> Referencing(std::string_view table) const;
    /// Those whose referenced table this is.
    [[nodiscard]] std::vector<const Relationship*> ReferencedIn(std::string_view table) const;
    [[nodiscard]] std::vector<const Relationship*> All() const; ///< in the order of their names

    /// Its name is free. Throws DatabaseFull.
    void Add(Relationship relationship);
    void Remove(std::string_view name);
    /// To be called after pages have gone back to a savepoint.
    void Reread();

private:
    /// Keys of a table's name and of the relation's.
    using TableAndName = std::set<std::pair<std::string, std::string>>;

    [[nodiscard]] std::string Key(std::string_view name) const;
    void Load();
    void Enter(const Relationship& relationship);
    [[nodiscard]] Record RowOf(const Relationship& relationship, std::size_t pair) const;
    [[nodiscard]] std::vector<const Relationship*> Of(const TableAndName& index, std::string_view table) const;

    const Format* format_;
    SystemTable table_;
    std::map<std::string, Relationship> byName_;
    TableAndName byTable_;
    TableAndName byReferencedTable_;
};

} // namespace jet
