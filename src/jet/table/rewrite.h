#pragma once

#include "jet/table/index_build.h"
#include "jet/table/table_parts.h"

#include <optional>
#include <vector>

namespace jet {

/// The same columns in the same order with numbers, places in the row and places in the fixed area from 0.
[[nodiscard]] TableDef Renumbered(const TableDef& old);

/// Writes the rows of a table anew under another definition, onto pages and into trees of their own, and puts these in
/// the place of the old ones when all is done. Long values stay where they are: they
/// belong to columns, not to rows. Only where a row would not fit otherwise they leave it.
class Table::Rewrite {
public:
    /// `def` has the table's columns, found again by their names, in whatever order and with whatever numbers and
    /// places; a text may have become a memo, a number, date or boolean a text. Further ones become Null. Its indexes
    /// are the table's.
    Rewrite(Table& table, TableDef def);

    /// Throws RecordTooLarge, DatabaseFull.
    void Run();

private:
    [[nodiscard]] bool BecomesMemo(std::size_t column) const;
    [[nodiscard]] bool BecomesText(std::size_t column) const;
    void CopyRows();
    RowId CopyRow(const RowStore::Found& found, const RowLayout& layout);
    void TakeFields(const RowStore::Found& found);
    void TakeAsMemo(std::size_t column);
    void TakeAsText(std::size_t column, const Column& old);
    void MoveOut(std::size_t column, const RowField& whole, PageNumber page);
    void PlantTrees();
    void FreeOld();

    Table& table_;
    Pager& pager_;
    TableDef def_;
    std::optional<RowStore> rows_;
    std::vector<IndexBuild> builds_; ///< by real index
    std::vector<std::pair<RowId, RowId>> moves_;

    // By column index of `def_`.
    std::vector<std::optional<std::size_t>> sources_; ///< the table's columns; none for a new one
    std::vector<std::optional<LongValues>> longValues_;
    std::vector<RowField> fields_;
    std::vector<LongValues::Head> heads_; ///< of long values whose fields are not those of the old row
    std::vector<Bytes> otherForms_;       ///< memos in their other form
};

} // namespace jet
