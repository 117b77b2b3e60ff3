#include "jet/table/rewrite.h"
#include "jet/base/error.h"
#include "jet/base/value_text.h"
#include "jet/table/index_build.h"
#include "jet/table/long_fields.h"
#include "jet/table/row_codec.h"
#include "jet/table/table_def.h"

#include <algorithm>

namespace jet {

/// Columns that were dropped keep their numbers and their places in the row until here: rows that were written with
/// them stay readable, and dropping one touches no row.
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

Table::Rewrite::Rewrite(Table& table, TableDef def)
    : table_(table), pager_(*table.pager_), def_(std::move(def)), fields_(def_.columns.size()),
      heads_(def_.columns.size()), otherForms_(def_.columns.size())
{
    for (const Column& column : def_.columns) {
        const std::vector<Column>& old = table.def_.columns;
        const auto source = std::ranges::find(old, column.name, &Column::name);
        sources_.push_back(source == old.end() ? std::nullopt
                                               : std::optional(static_cast<std::size_t>(source - old.begin())));
        longValues_.emplace_back();
        if (IsLongValue(column.type))
            longValues_.back().emplace(pager_, column.longValueOwned, column.longValueFree);
    }
}

bool Table::Rewrite::BecomesMemo(std::size_t column) const
{
    return longValues_[column] && sources_[column] && !IsLongValue(table_.def_.columns[*sources_[column]].type);
}

bool Table::Rewrite::BecomesText(std::size_t column) const
{
    return def_.columns[column].type == ColumnType::Text && sources_[column] &&
           table_.def_.columns[*sources_[column]].type != ColumnType::Text;
}

void Table::Rewrite::Run()
{
    // Maps of their own, so that the new pages are never taken for those of the old rows, which are freed by theirs.
    def_.ownedPages = PlaceMapRecord(pager_, def_);
    def_.freeSpacePages = PlaceMapRecord(pager_, def_);
    rows_.emplace(pager_, def_.pages.front(), def_.ownedPages, def_.freeSpacePages);
    CopyRows();
    PlantTrees();
    WriteTableDef(pager_, def_);
    FreeOld();
    table_.moves_.push_back({table_.def_.ownedPages, std::move(moves_)});
    table_.Adopt(std::move(def_));
    ++table_.generation_;
}

void Table::Rewrite::CopyRows()
{
    // All indexes are collected in one walk over the rows, and share the memory for it.
    for (const RealIndex& index : def_.realIndexes)
        builds_.emplace_back(pager_.System(), KeyPlan(def_, index), EntrySorter::kBudget / def_.realIndexes.size());
    const RowLayout layout(def_);
    Record record;
    std::uint32_t count = 0;
    for (std::optional<RowId> row = table_.NextRow(std::nullopt); row; row = table_.NextRow(row), ++count) {
        const RowStore::Found found = table_.parts_->rows.Find(*row);
        const RowId at = CopyRow(found, layout);
        // Ascending by the old id, since that is the order of the walk: Relocated() searches by halves.
        moves_.emplace_back(*row, at);
        for (IndexBuild& build : builds_) { // by what the row holds now: a number that became a text has another key
            ReadRecord(pager_, def_, rows_->Find(at), build.Plan().Columns(), record);
            build.Add(record, at);
        }
    }
    def_.rowCount = count;
}

/// A row that fitted may not fit any more, when a text that lay in the fixed area has become a variable one or a column
/// was added: then the longest of its long values leave it, as when it would be written now.
RowId Table::Rewrite::CopyRow(const RowStore::Found& found, const RowLayout& layout)
{
    TakeFields(found);
    if (layout.Measure(fields_) > def_.format->maxRecordSize) {
        const std::vector<RowField> whole = fields_;
        for (const std::size_t column : LongValuesToMoveOut(layout, def_, fields_))
            MoveOut(column, whole[column], found.at.page);
    }
    const RowStore::Room room = rows_->Insert(layout.Measure(fields_));
    layout.Encode(fields_, room.bytes);
    return room.at;
}

/// Brings the fields of an old row into the form that the new one holds.
void Table::Rewrite::TakeFields(const RowStore::Found& found)
{
    const RowView view(found.bytes, table_.def_, found.at.page);
    for (std::size_t i = 0; i < fields_.size(); ++i) {
        fields_[i] = {};
        if (!sources_[i])
            continue;
        const Column& column = table_.def_.columns[*sources_[i]];
        fields_[i].isSet = view.IsSet(column);
        const bool isBoolean = column.type == ColumnType::Boolean;
        if (fields_[i].isSet && !isBoolean)
            fields_[i].bytes = view.Field(column).value();
        if (BecomesText(i) && (fields_[i].isSet || isBoolean))
            TakeAsText(i, column);
        else if (BecomesMemo(i) && fields_[i].isSet)
            TakeAsMemo(i);
    }
}

void Table::Rewrite::TakeAsMemo(std::size_t column)
{
    RowField& field = fields_[column];
    const ByteSpan text = field.bytes;
    const std::optional<ByteSpan> inRow = MemoInRow(text, *def_.format, otherForms_[column]);
    heads_[column] = inRow ? LongValues::InlineHead(inRow->size())
                           : longValues_[column]->WriteOutside(PlainMemo(text, *def_.format, otherForms_[column]));
    field.head = heads_[column];
    field.bytes = inRow.value_or(ByteSpan());
}

/// A boolean, which is never Null, is one of two texts.
void Table::Rewrite::TakeAsText(std::size_t column, const Column& old)
{
    RowField& field = fields_[column];
    const Value value = old.type == ColumnType::Boolean ? Value(field.isSet)
                                                        : DecodeValue(field.bytes, *def_.format, old.GetValueType());
    Bytes& text = otherForms_[column];
    text.clear();
    EncodeText(text, *def_.format, def_.columns[column].GetValueType(), ToIsoText(value, old.rules.showsTimes));
    field.isSet = true;
    field.bytes = text;
}

/// Gives a long value that stands in the row a record of its own.
void Table::Rewrite::MoveOut(std::size_t column, const RowField& whole, PageNumber page)
{
    // Without a head of its own the field is the old row's, head and value in one.
    const Bytes value = whole.head.empty() ? LongValues::Read(pager_, whole.bytes, page)
                                           : Bytes(whole.bytes.begin(), whole.bytes.end());
    const bool isMemo = def_.columns[column].type == ColumnType::Memo;
    const ByteSpan plain = isMemo ? PlainMemo(value, *def_.format, otherForms_[column]) : ByteSpan(value);
    heads_[column] = longValues_[column]->WriteOutside(plain);
    fields_[column].head = heads_[column];
    fields_[column].bytes = {};
}

void Table::Rewrite::PlantTrees()
{
    for (std::size_t i = 0; i < builds_.size(); ++i) {
        builds_[i].Sort();
        def_.realIndexes[i] = PlantTree(pager_, def_, def_.realIndexes[i], builds_[i]);
    }
}

/// Only now: until the new rows are whole the old ones are what they are copied from.
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
