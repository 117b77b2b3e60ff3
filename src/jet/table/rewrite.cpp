#include "jet/table/rewrite.h"
#include "jet/error.h"
#include "jet/table/index_build.h"
#include "jet/table/map_records.h"
#include "jet/table/record_reader.h"

namespace jet {

namespace {

/// The same columns in the same order with numbers, places in the row and places in the fixed area from 0. Positions in
/// the vector of columns stay, so records and key plans fit both definitions.
TableDef Renumbered(const TableDef& old)
{
    TableDef def = old;
    const auto newNumber = [&old](std::uint16_t number) {
        return static_cast<std::uint16_t>(old.ColumnByNumber(number).value());
    };
    std::uint16_t fixedEnd = 0;
    def.variableColumnsEver = 0;
    for (std::size_t i = 0; i < def.columns.size(); ++i) {
        Column& column = def.columns[i];
        column.number = static_cast<std::uint16_t>(i);
        column.variableIndex = def.variableColumnsEver;
        if (!column.IsFixed()) {
            ++def.variableColumnsEver;
        } else if (column.type != ColumnType::Boolean) {
            column.fixedOffset = fixedEnd;
            fixedEnd = static_cast<std::uint16_t>(fixedEnd + column.FixedSize());
        }
    }
    def.columnsEver = static_cast<std::uint16_t>(def.columns.size());
    for (std::uint16_t& number : def.longValueOrder)
        number = newNumber(number);
    for (RealIndex& index : def.realIndexes) {
        for (IndexColumn& part : index.columns)
            part.column = newNumber(part.column);
    }
    return def;
}

} // namespace

void Table::Rewrite::Run()
{
    RowId owned;
    RowId freeSpace;
    try {
        owned = PlaceMapRecord(pager_, def_);
        def_.ownedPages = owned;
        freeSpace = PlaceMapRecord(pager_, def_);
        def_.freeSpacePages = freeSpace;
        rows_.emplace(pager_, def_.pages.front(), owned, freeSpace);
        CopyRows();
        PlantTrees();
        WriteTableDef(pager_, def_);
    } catch (...) {
        for (std::size_t i = 0; i < planted_; ++i)
            UprootTree(pager_, def_.pages.front(), def_.realIndexes[i]);
        if (rows_)
            rows_->Clear();
        RemoveMapRecord(pager_, freeSpace);
        RemoveMapRecord(pager_, owned);
        throw;
    }
    FreeOld();
    table_.Adopt(std::move(def_));
    table_.moves_.push_back(std::move(moves_));
    ++table_.generation_;
}

void Table::Rewrite::CopyRows()
{
    const std::vector<KeyPlan>& plans = table_.parts_->keyPlans;
    for (const KeyPlan& plan : plans)
        builds_.emplace_back(plan, EntrySorter::kBudget / plans.size());
    const RowLayout layout(def_);
    std::vector<RowField> fields(def_.columns.size());
    Record record;
    std::uint32_t count = 0;
    for (std::optional<RowId> row = table_.NextRow(std::nullopt); row; row = table_.NextRow(row), ++count) {
        const RowStore::Found found = table_.parts_->rows.Find(*row);
        const RowId at = CopyRow(found, layout, fields);
        moves_.emplace_back(*row, at);
        for (IndexBuild& build : builds_) {
            ReadRecord(pager_, table_.def_, found, build.Plan().Columns(), record);
            build.Add(record, at);
        }
    }
    def_.rowCount = count;
}

RowId Table::Rewrite::CopyRow(const RowStore::Found& found, const RowLayout& layout, std::vector<RowField>& fields)
{
    const RowView view(found.bytes, table_.def_, found.at.page);
    for (std::size_t i = 0; i < table_.def_.columns.size(); ++i) {
        const Column& column = table_.def_.columns[i];
        fields[i] = {.bytes = {}, .isSet = view.IsSet(column)};
        if (fields[i].isSet && column.type != ColumnType::Boolean)
            fields[i].bytes = view.Field(column).value();
    }
    const std::size_t size = layout.Measure(fields);
    if (size > def_.format->maxRecordSize)
        throw Error(ErrorNumber::RecordTooLarge);
    const RowStore::Room room = rows_->Insert(size);
    layout.Encode(fields, room.bytes);
    return room.at;
}

void Table::Rewrite::PlantTrees()
{
    for (; planted_ < builds_.size(); ++planted_) {
        builds_[planted_].Sort();
        def_.realIndexes[planted_] = PlantTree(pager_, def_, def_.realIndexes[planted_], builds_[planted_]);
    }
}

void Table::Rewrite::FreeOld()
{
    const TableDef& old = table_.def_;
    table_.parts_->rows.Clear();
    for (const RealIndex& index : old.realIndexes)
        UprootTree(pager_, old.pages.front(), index);
    RemoveMapRecord(pager_, old.freeSpacePages);
    RemoveMapRecord(pager_, old.ownedPages);
}

void Table::Renumber()
{
    Rewrite(*this, Renumbered(def_)).Run();
}

} // namespace jet
