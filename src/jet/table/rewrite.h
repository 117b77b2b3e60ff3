#pragma once

#include "jet/table/index_build.h"
#include "jet/table/table_parts.h"

#include <optional>
#include <vector>

namespace jet {

/// Writes the rows of a table anew under another definition, onto pages and into trees of their own, and puts these in
/// the place of the old ones when all is done; until then the table is untouched. Long values stay where they are: they
/// belong to columns, not to rows.
class Table::Rewrite {
public:
    /// `def` has the table's columns in the same order, with whatever numbers and places, and perhaps further ones
    /// behind them, which become Null; its indexes are the table's.
    Rewrite(Table& table, TableDef def) : table_(table), pager_(*table.pager_), def_(std::move(def)) {}

    /// Throws RecordTooLarge, DatabaseFull; the table is as it was then.
    void Run();

private:
    void CopyRows();
    RowId CopyRow(const RowStore::Found& found, const RowLayout& layout, std::vector<RowField>& fields);
    void PlantTrees();
    void FreeOld();

    Table& table_;
    Pager& pager_;
    TableDef def_;
    std::optional<RowStore> rows_;
    std::vector<IndexBuild> builds_; ///< by real index
    std::size_t planted_ = 0;        ///< trees of `def_` that are new
    std::vector<std::pair<RowId, RowId>> moves_;
};

} // namespace jet
