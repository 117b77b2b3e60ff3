#pragma once

#include "jet/catalog/catalog.h"

#include <string>
#include <string_view>
#include <vector>

namespace jet {

/// A relation as a statement asks for it: `columns` of `table` refer to `referencedColumns` of `referencedTable`.
struct RelationSpec {
    std::string name;
    std::string table;
    std::vector<std::string> columns;
    std::string referencedTable;
    std::vector<std::string> referencedColumns;
    bool cascadeUpdates = false;
    DeleteRule onDelete = DeleteRule::NoAction;
};

/// Makes a relation that is enforced: an index entry in each of the two tables, the rows of MSysRelationships, and an
/// object. The referencing side shares the index on exactly its columns, or gets one of its own.
///
/// Throws, with nothing changed: NoSuchTableOrConstraint, NoSuchField, InvalidName, RelationExists, IndexNameTaken,
/// RelationTypesDiffer, NoPrimaryKey, NotUniquelyIndexed, TooManyIndexes, DataViolatesRelation, DatabaseFull.
void CreateRelation(Catalog& catalog, const RelationSpec& spec);

/// Removes the relation `name` of the referencing table `table`; or, as the other kind of constraint, its unique or
/// primary index of that name. Throws NoSuchTableOrConstraint, NoSuchRelation, TableInRelation, and TableLocked while a
/// recordset is open on one of the tables.
void DropConstraint(Catalog& catalog, std::string_view table, std::string_view name);

/// Removes a table with the relations in which it is the referencing side. Throws NoSuchTable, TableLocked, and
/// TableInRelation while another table refers to it.
void DropTableAndRelations(Catalog& catalog, std::string_view name);

} // namespace jet
