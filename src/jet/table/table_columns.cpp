#include "jet/error.h"
#include "jet/table/column_design.h"
#include "jet/table/map_records.h"
#include "jet/table/rewrite.h"

#include <algorithm>
#include <utility>

namespace jet {

namespace {

/// The logical index that stands on a column: a plain or primary one when there is one of these, else a relation's;
/// null when there is none.
const LogicalIndex* IndexOn(const TableDef& def, std::uint16_t column)
{
    const LogicalIndex* found = nullptr;
    for (const LogicalIndex& index : def.logicalIndexes) {
        const std::vector<IndexColumn>& columns = def.realIndexes[index.realIndex].columns;
        const bool uses = std::any_of(columns.begin(), columns.end(),
                                      [column](const IndexColumn& part) { return part.column == column; });
        if (uses && (found == nullptr || found->type == IndexType::Relation))
            found = &index;
    }
    return found;
}

} // namespace

void Table::AddColumn(const ColumnSpec& spec)
{
    if (const std::optional<std::size_t> taken = def_.ColumnIndex(spec.name))
        throw Error(ErrorNumber::FieldExists, {spec.name, name_})
            .About({.table = name_, .columns = {def_.columns[*taken].name}});
    if (def_.columns.size() == kMaxColumns)
        throw Error(ErrorNumber::TooManyFields);
    TableDef def = def_;
    DesignColumn(def, spec, pager_->Header());
    if (def.columnsEver > kMaxColumns) {
        Renumber();
        def = def_;
        DesignColumn(def, spec, pager_->Header());
    }
    Column& column = def.columns.back();
    const bool numbersRows = column.IsAutonumber();
    if (numbersRows)
        def.lastAutonumber = 0;
    // Rows of a table that never had a variable column lack the whole variable part, and nothing in a row tells: so
    // with the first such column the rows are written anew.
    const bool rewrites = !column.IsFixed() && def_.variableColumnsEver == 0 && NextRow(std::nullopt);
    try {
        if (IsLongValue(column.type)) {
            column.longValueOwned = PlaceMapRecord(*pager_, def);
            column.longValueFree = PlaceMapRecord(*pager_, def);
        }
        if (rewrites)
            Rewrite(*this, def).Run();
        else
            WriteTableDef(*pager_, def);
    } catch (...) {
        RemoveMapRecord(*pager_, column.longValueOwned);
        RemoveMapRecord(*pager_, column.longValueFree);
        throw;
    }
    if (!rewrites) {
        Adopt(std::move(def));
        ++generation_;
    }
    if (!numbersRows)
        return;
    try {
        NumberRows(def_.columns.size() - 1);
    } catch (...) {
        DropColumn(spec.name);
        throw;
    }
}

/// Gives the rows that are there the autonumbers 1, 2, 3 ...
void Table::NumberRows(std::size_t column)
{
    RowHook* const hook = std::exchange(hook_, nullptr); // nothing refers to a new column yet
    try {
        Record record;
        for (std::optional<RowId> row = NextRow(std::nullopt); row; row = NextRow(row)) {
            Read(*row, record);
            StoreI32(record.SetSized(column, sizeof(std::int32_t)), 0, TakeAutonumber());
            Update(*row, record);
        }
    } catch (...) {
        hook_ = hook;
        throw;
    }
    hook_ = hook;
}

void Table::DropColumn(std::string_view name)
{
    const std::optional<std::size_t> position = def_.ColumnIndex(name);
    if (!position)
        throw Error(ErrorNumber::NoSuchField, {name, name_});
    const Column column = def_.columns[*position];
    if (const LogicalIndex* index = IndexOn(def_, column.number)) {
        if (index->type == IndexType::Relation)
            throw Error(ErrorNumber::FieldInRelation, {name}).About({.table = name_, .relation = index->name});
        throw Error(ErrorNumber::FieldInIndex, {name}).About({.table = name_, .index = index->name});
    }
    if (def_.columns.size() == 1)
        throw Error(ErrorNumber::FieldInIndex, {name});

    TableDef def = def_;
    def.columns.erase(def.columns.begin() + static_cast<std::ptrdiff_t>(*position));
    std::erase(def.longValueOrder, column.number);
    WriteTableDef(*pager_, def);
    if (IsLongValue(column.type)) {
        parts_->longValues[*position]->DeleteAll();
        RemoveMapRecord(*pager_, column.longValueOwned);
        RemoveMapRecord(*pager_, column.longValueFree);
    }
    Adopt(std::move(def));
    ++generation_;
}

} // namespace jet
