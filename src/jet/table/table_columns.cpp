#include "jet/base/error.h"
#include "jet/table/column_design.h"
#include "jet/table/long_fields.h"
#include "jet/table/rewrite.h"
#include "jet/table/table_def.h"
#include "jet/table/table_parts.h"

#include <algorithm>
#include <array>

namespace jet {

void Table::AddColumn(const ColumnSpec& spec)
{
    if (const std::optional<std::size_t> taken = def_.ColumnIndex(spec.name))
        throw Error(ErrorNumber::FieldExists, {spec.name, name_})
            .About({.table = name_, .columns = {def_.columns[*taken].name}});
    if (def_.columns.size() == kMaxColumns)
        throw Error(ErrorNumber::TooManyFields);
    TableDef def = def_;
    DesignColumn(def, spec, pager_->Header());
    // The numbers are used up, though not all of the columns stand any more.
    if (def.columnsEver > kMaxColumns) {
        Renumber();
        def = def_;
        DesignColumn(def, spec, pager_->Header());
    }
    const Column& column = def.columns.back();
    const bool numbersRows = column.IsAutonumber();
    if (numbersRows)
        def.lastAutonumber = 0;
    // Rows of a table that never had a variable column lack the whole variable part, and nothing in a row tells: so
    // with the first such column the rows are written anew.
    const bool rewrites = !column.IsFixed() && def_.variableColumnsEver == 0 && NextRow(std::nullopt);
    ChangeTo(std::move(def), rewrites);
    if (numbersRows)
        NumberRows(def_.columns.size() - 1);
}

/// Makes `def` the table's definition. `rewrites`: its rows look otherwise than those of the present one.
void Table::ChangeTo(TableDef def, bool rewrites)
{
    for (Column& column : def.columns) {
        if (!IsLongValue(column.type) || !column.longValueOwned.IsNone())
            continue;
        column.longValueOwned = PlaceMapRecord(*pager_, def);
        column.longValueFree = PlaceMapRecord(*pager_, def);
    }
    if (rewrites) {
        Rewrite(*this, std::move(def)).Run();
    } else {
        WriteTableDef(*pager_, def);
        Adopt(std::move(def));
        ++generation_;
    }
}

/// Gives the rows that are there the autonumbers 1, 2, 3 ...
void Table::NumberRows(std::size_t column)
{
    Record record;
    for (std::optional<RowId> row = NextRow(std::nullopt); row; row = NextRow(row)) {
        Read(*row, record);
        StoreI32(record.SetSized(column, sizeof(std::int32_t)), 0, TakeAutonumber());
        // The hook is not asked: nothing refers to a new column yet.
        RowChange change(*this);
        static_cast<void>(change.ReadBefore(*row));
        change.CheckUpdate(record);
        change.Update(*row, record);
    }
}

void Table::DropColumn(std::string_view name)
{
    const std::optional<std::size_t> position = def_.ColumnIndex(name);
    if (!position)
        throw Error(ErrorNumber::NoSuchField, {name, name_});
    const Column column = def_.columns[*position];
    if (const LogicalIndex* const index = def_.IndexOn(column.number))
        throw Error(ErrorNumber::FieldInIndex, {name}).About({.table = name_, .index = index->name});
    if (const LogicalIndex* const side = def_.RelationOn(column.number))
        throw Error(ErrorNumber::FieldInRelation, {name}).About({.table = name_, .relation = side->name});
    // A table needs one column: in the words of that number the field "is needed by the system".
    if (def_.columns.size() == 1 || def_.IsInIndex(column.number))
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

void Table::WidenColumns(const std::vector<ColumnSpec>& specs)
{
    TableDef def = def_;
    bool rewrites = false;
    for (const ColumnSpec& spec : specs) {
        if (!def.ColumnIndex(spec.name))
            throw Error(ErrorNumber::NoSuchField, {spec.name, name_});
        rewrites = WidenColumn(def, spec, pager_->Header()) || rewrites;
    }
    ChangeTo(rewrites ? Renumbered(def) : std::move(def), rewrites);
}

std::optional<std::vector<std::size_t>> Table::TextsToWiden(const Record& record) const
{
    std::vector<RowField> fields(def_.columns.size());
    std::vector<std::size_t> texts;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const std::optional<ByteSpan> stored = record.Stored(i);
        if (!stored)
            continue;
        const Column& column = def_.columns[i];
        // Long values can leave the row all but for their head.
        static constexpr std::array<Byte, kLongValueHeaderSize> kHead{};
        fields[i] = {.bytes = IsLongValue(column.type) ? ByteSpan(kHead) : *stored, .isSet = true};
        if (column.type == ColumnType::Text && !column.IsFixed() && !def_.IsInIndex(column.number))
            texts.push_back(i);
    }
    if (RowLayout(def_).Measure(fields) <= def_.format->maxRecordSize)
        return std::vector<std::size_t>();
    // The places of columns that were dropped are gone when the table has been written anew.
    std::optional<std::vector<std::size_t>> widened =
        ShrinkToFit(RowLayout(Renumbered(def_)), *def_.format, texts, fields);
    if (!widened || !widened->empty() || texts.empty())
        return widened;
    // They alone stand in the way: any column makes that happen.
    return std::vector{
        *std::ranges::max_element(texts, {}, [&record](std::size_t column) { return record.Stored(column)->size(); })};
}

} // namespace jet
