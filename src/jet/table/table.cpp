#include "jet/table/table.h"

#include "jet/base/error.h"
#include "jet/table/column_design.h"
#include "jet/table/row_codec.h"
#include "jet/table/table_def.h"
#include "jet/table/table_parts.h"

#include <algorithm>
#include <cassert>
#include <map>
#include <numeric>

namespace jet {

Table::Parts::Parts(Pager& pager, const TableDef& def)
    : layout(def), rows(pager, def.pages.front(), def.ownedPages, def.freeSpacePages), allColumns(def.columns.size())
{
    std::iota(allColumns.begin(), allColumns.end(), std::size_t{0});
    indexes.reserve(def.realIndexes.size());
    for (const RealIndex& index : def.realIndexes)
        indexes.push_back(
            {KeyPlan(def, index), IndexTree(pager, index.root, index.usageMap, def.pages.front(), index.distinctKeys)});
    for (std::size_t i = 0; i < def.columns.size(); ++i) {
        const Column& column = def.columns[i];
        longValues.push_back(IsLongValue(column.type)
                                 ? std::make_unique<LongValues>(pager, column.longValueOwned, column.longValueFree)
                                 : nullptr);
        if (column.IsAutonumber())
            autonumber = i;
    }
    TakeRules(def);
}

/// A boolean is never Null, so nothing can be wrong with one.
void Table::Parts::TakeRules(const TableDef& def)
{
    required.clear();
    for (std::size_t i = 0; i < def.columns.size(); ++i)
        if (def.columns[i].rules.required && layout.Kinds()[i] != FieldKind::Boolean)
            required.push_back(i);
}

Table::Table(Pager& pager, PageNumber definitionPage, std::string name, std::shared_ptr<TableGroup> group)
    : pager_(&pager), group_(group ? std::move(group) : std::make_shared<TableGroup>()),
      def_(ReadTableDef(pager, definitionPage)), name_(std::move(name))
{
    parts_ = std::make_unique<Parts>(pager, def_);
}

Table::~Table()
{
    if (isNoted_)
        std::erase(group_->ahead, this);
}

PageNumber Table::Create(Pager& pager, const std::vector<ColumnSpec>& columns)
{
    const Format& format = pager.GetFormat();
    TableDef def;
    def.format = &format;
    if (format.definition.autonumberStep != Format::kAbsent)
        StoreU32(def.rawHeader, format.definition.autonumberStep, 1);
    if (columns.size() > kMaxColumns)
        throw Error(ErrorNumber::TooManyFields);
    // Not the vectors' own order: gcc 12 warns of the comparison that it makes of it.
    const auto sortsBefore = [](const Bytes& a, const Bytes& b) { return CompareBytes(a, b) < 0; };
    std::map<Bytes, std::string_view, decltype(sortsBefore)> names(sortsBefore);
    for (const ColumnSpec& spec : columns) {
        DesignColumn(def, spec, pager.Header());
        const auto [other, isNew] = names.emplace(TextKey(format, spec.name), spec.name);
        if (!isNew)
            throw Error(ErrorNumber::FieldDefinedTwice).About({.columns = {std::string(other->second), spec.name}});
    }

    def.pages.push_back(pager.Allocate().Number());
    // The order of the records is that of Access: rows, then long values by column, then indexes as they are made.
    def.ownedPages = PlaceMapRecord(pager, def);
    def.freeSpacePages = PlaceMapRecord(pager, def);
    for (Column& column : def.columns) {
        if (!IsLongValue(column.type))
            continue;
        column.longValueOwned = PlaceMapRecord(pager, def);
        column.longValueFree = PlaceMapRecord(pager, def);
    }
    WriteTableDef(pager, def);
    return def.pages.front();
}

/// Maps go after what they name: they say which pages there are to free. The first page is marked, so that nothing that
/// still refers to the table takes it for a definition.
void Table::Destroy()
{
    for (const std::unique_ptr<LongValues>& values : parts_->longValues) {
        if (values)
            values->DeleteAll();
    }
    for (Parts::Index& index : parts_->indexes)
        index.tree.Destroy();
    parts_->rows.Clear();
    for (const RealIndex& index : def_.realIndexes)
        RemoveMapRecord(*pager_, index.usageMap);
    for (const Column& column : def_.columns) {
        RemoveMapRecord(*pager_, column.longValueOwned);
        RemoveMapRecord(*pager_, column.longValueFree);
    }
    RemoveMapRecord(*pager_, def_.freeSpacePages);
    RemoveMapRecord(*pager_, def_.ownedPages);
    pager_->Write(def_.pages.front()).Data()[0] = static_cast<Byte>(PageType::FreedDefinition);
    for (const PageNumber page : def_.pages)
        pager_->Free(page);
    parts_.reset();
}

void Table::SetRules(std::vector<ColumnRules> rules)
{
    for (std::size_t i = 0; i < rules.size(); ++i)
        def_.columns[i].rules = std::move(rules[i]);
    parts_->TakeRules(def_);
}

/// To be called before the counters get ahead of the definition page.
void Table::NoteAhead()
{
    if (isNoted_)
        return;
    group_->ahead.push_back(this);
    isNoted_ = true;
}

void Table::FlushCounters()
{
    for (std::vector<Table*>& ahead = group_->ahead; !ahead.empty(); ahead.pop_back()) {
        Table& table = *ahead.back();
        if (table.parts_ != nullptr && (table.isNumberAhead_ || table.areCountsAhead_))
            table.StoreCounters();
        table.isNoted_ = false;
    }
}

void Table::TakeKeyCounts(TableDef& def) const
{
    for (std::size_t i = 0; i < def.realIndexes.size(); ++i)
        def.realIndexes[i].distinctKeys = parts_->indexes[i].tree.DistinctKeys();
}

void Table::StoreCounters()
{
    TakeKeyCounts(def_);
    const MutablePageRef definition = pager_->Write(def_.pages.front());
    WriteTableCounters(definition.AtHand(), def_);
    isNumberAhead_ = areCountsAhead_ = false;
}

void Table::Reread()
{
    assert(group_->usedScratches == 0);
    TableDef def = ReadTableDef(*pager_, def_.pages.front());
    const std::uint32_t numberOnPage = def.lastAutonumber;
    // A number that was given out stays given, though the page has gone back to one before it.
    if (std::ranges::any_of(def.columns, &Column::IsAutonumber))
        def.lastAutonumber = def_.lastAutonumber;
    // Rows are counted ahead of the page only from before the savepoint, and since then nothing has changed here.
    const bool areCountsAhead = areCountsAhead_;
    if (areCountsAhead) {
        def.rowCount = def_.rowCount;
        TakeKeyCounts(def);
    }
    // Rows that had been written anew are where they were. Each time they get maps of their own.
    RowId ownedPages = def_.ownedPages;
    for (; ownedPages != def.ownedPages && !moves_.empty(); moves_.pop_back())
        ownedPages = moves_.back().ownedPages;
    Adopt(std::move(def));
    areCountsAhead_ = areCountsAhead;
    isNumberAhead_ = def_.lastAutonumber != numberOnPage;
    if (isNumberAhead_)
        NoteAhead();
    ++generation_;
}

/// Makes `def`, which has just been written, the table's definition.
void Table::Adopt(TableDef def)
{
    auto parts = std::make_unique<Parts>(*pager_, def);
    def_ = std::move(def);
    parts_ = std::move(parts);
    isNumberAhead_ = areCountsAhead_ = false;
    ++rowChanges_;
}

Value Table::Get(const Record& record, std::size_t column) const
{
    const std::optional<ByteSpan> stored = record.Stored(column);
    const Column& kind = def_.columns[column];
    if (kind.type == ColumnType::Boolean)
        return Value(stored && !stored->empty() && (*stored)[0] != 0);
    return stored ? DecodeValue(*stored, *def_.format, kind.GetValueType()) : Value(Null{});
}

/// Numbers are given out before the record is saved, as whoever fills it may need its key for records that refer to it.
/// One that is not used leaves a gap, unless it was the last and is returned.
std::int32_t Table::TakeAutonumber()
{
    NoteAhead();
    isNumberAhead_ = true;
    return static_cast<std::int32_t>(++def_.lastAutonumber);
}

void Table::ReturnAutonumber(std::int32_t number) noexcept
{
    if (def_.lastAutonumber != static_cast<std::uint32_t>(number))
        return;
    --def_.lastAutonumber;
    NoteAhead();
    isNumberAhead_ = true;
}

/// Whoever holds a row's id over a rewriting of the table finds the row again, through as many rewritings as there
/// were.
std::optional<RowId> Table::Relocated(RowId row, std::uint32_t epoch) const
{
    if (epoch < firstEpoch_)
        return std::nullopt;
    for (; epoch < RowsEpoch(); ++epoch) {
        const auto& moves = moves_[epoch - firstEpoch_].ids;
        const auto found = std::ranges::lower_bound(moves, row, {}, &std::pair<RowId, RowId>::first);
        if (found == moves.end() || found->first != row)
            return std::nullopt;
        row = found->second;
    }
    return row;
}

void Table::ForgetMoves() noexcept
{
    firstEpoch_ = RowsEpoch();
    moves_.clear();
}

std::optional<RowId> Table::NextRow(std::optional<RowId> after) const
{
    return parts_->rows.Next(after);
}

bool Table::Exists(RowId row) const
{
    return static_cast<bool>(parts_->rows.Find(row));
}

void Table::Read(RowId row, Record& record) const
{
    const RowStore::Found found = parts_->rows.Find(row);
    if (!found)
        throw Error(ErrorNumber::RecordDeleted);
    ReadRecord(*pager_, def_, found, parts_->allColumns, record);
}

std::optional<Bytes> Table::KeyOf(std::size_t index, const Record& record) const
{
    Bytes key;
    return MakeKey(index, record, key) ? std::optional<Bytes>(std::move(key)) : std::nullopt;
}

bool Table::MakeKey(std::size_t index, const Record& record, Bytes& key) const
{
    const KeyPlan& plan = parts_->indexes[index].plan;
    return !plan.LeavesOut(plan.Make(key, record));
}

IndexTree& Table::Tree(std::size_t index) const
{
    return parts_->indexes[index].tree;
}

} // namespace jet
