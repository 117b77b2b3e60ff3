#pragma once

#include "jet/relations/relations.h"
#include "jet/table/table.h"

#include <string>
#include <string_view>
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
/// ALTER COLUMN, of one column or several: texts become longer, or memos; numbers, dates and booleans become texts.
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

/// Parses one statement, with or without its closing semicolon. Keywords in any letter case; names bare or in brackets.
///
/// Throws Error with the number of the kind of statement (3290 for CREATE TABLE, 3293 for ALTER TABLE ...) and, in its
/// text, the byte offset of the first token that does not fit.
[[nodiscard]] Statement ParseStatement(std::string_view sql);

} // namespace jet::sql
