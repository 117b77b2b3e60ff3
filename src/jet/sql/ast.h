#pragma once

#include "jet/relations/relation.h"
#include "jet/table/table.h"

#include <string>
#include <variant>
#include <vector>

/// The statements of the engine's SQL, as plain structs. Names are as the statement gives them, without brackets;
/// whether they exist or are allowed is not looked at here.
namespace jet::sql {

struct CreateTable {
    std::string table;
    std::vector<ColumnSpec> columns; ///< in storage order
};
struct DropTable {
    std::string table;
};
struct AddColumn {
    std::string table;
    ColumnSpec column;
};
struct DropColumn {
    std::string table;
    std::string column;
};
/// ALTER COLUMN, of one column or several: texts become longer, or memos.
struct WidenColumns {
    std::string table;
    std::vector<ColumnSpec> columns;
};
struct CreateIndex {
    std::string table;
    IndexSpec index;
};
struct DropIndex {
    std::string table;
    std::string index;
};
/// ALTER TABLE ... ADD CONSTRAINT ... FOREIGN KEY.
struct AddForeignKey {
    RelationSpec relation;
};
struct DropConstraint {
    std::string table;
    std::string constraint;
};
/// DELETE * FROM: all rows.
struct DeleteRows {
    std::string table;
};
/// UPDATE ... SET target = source, in all rows.
struct CopyColumn {
    std::string table;
    std::string target;
    std::string source;
};

using Statement = std::variant<CreateTable, DropTable, AddColumn, DropColumn, WidenColumns, CreateIndex, DropIndex,
                               AddForeignKey, DropConstraint, DeleteRows, CopyColumn>;

} // namespace jet::sql
