#pragma once

#include "jet/table/table_def.h"

#include <string>
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

} // namespace jet
