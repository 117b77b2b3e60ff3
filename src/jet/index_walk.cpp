#include "jet/index_walk.h"

#include "jet/base/error.h"

#include <algorithm>
#include <utility>

namespace jet {

namespace {

/// Asked for anew at each use, as numbers of real indexes move when one is dropped. Tables have few of them.
std::optional<std::size_t> IndexOn(const TableDef& def, std::uint16_t column)
{
    const auto fits = [&](const RealIndex& index) {
        return index.columns.size() == 1 && index.columns[0].column == column &&
               index.columns[0].order == SortOrder::Ascending;
    };
    const auto found = std::ranges::find_if(def.realIndexes, fits);
    if (found == def.realIndexes.end())
        return std::nullopt;
    return static_cast<std::size_t>(found - def.realIndexes.begin());
}

} // namespace

std::optional<IndexWalk> IndexWalk::By(const Table& table, std::size_t column)
{
    const std::uint16_t number = table.Definition().columns[column].number;
    if (!IndexOn(table.Definition(), number))
        return std::nullopt;
    return IndexWalk(number);
}

/// Indexes may come and go meanwhile.
std::size_t IndexWalk::Index(const Table& table) const
{
    const std::optional<std::size_t> index = IndexOn(table.Definition(), column_);
    if (!index)
        throw Error(ErrorNumber::NoSuchIndex, {"", table.Name()});
    return *index;
}

std::optional<RowId> IndexWalk::Take(const Table& table, IndexTree::Cursor cursor)
{
    cursor_ = std::move(cursor);
    changes_ = table.RowChanges();
    if (cursor_.AtEnd())
        return std::nullopt;
    row_ = cursor_.Row();
    return row_;
}

std::optional<RowId> IndexWalk::First(const Table& table)
{
    return Take(table, table.Tree(Index(table)).First());
}

std::optional<RowId> IndexWalk::Seek(const Table& table, ByteSpan stored)
{
    const TableDef& def = table.Definition();
    const Column& column = def.columns[def.ColumnByNumber(column_).value()];
    key_.clear();
    AppendKey(key_, *def.format, {column.type, SortOrder::Ascending, column.collation}, stored);
    return Take(table, table.Tree(Index(table)).Seek(key_));
}

void IndexWalk::GoOnFrom(const Table& table, RowId row, const Record& record)
{
    const std::size_t index = Index(table);
    if (!table.MakeKey(index, record, key_))
        throw Error(ErrorNumber::NoCurrentRecord, {}, "(The index has no entry for it.)");
    Take(table, table.Tree(index).Seek(key_, row));
}

std::optional<RowId> IndexWalk::Next(const Table& table)
{
    if (changes_ == table.RowChanges()) {
        cursor_.Next();
        if (cursor_.AtEnd())
            return std::nullopt;
        row_ = cursor_.Row();
        return row_;
    }
    // The entry that was read last is still here, whatever its page holds now.
    key_.assign(cursor_.Key().begin(), cursor_.Key().end());
    const RowId last = row_;
    std::optional<RowId> row = Take(table, table.Tree(Index(table)).Seek(key_, last));
    // The row is still there: what comes next is wanted. When it has gone, the one found is the next already.
    if (row == last && std::ranges::equal(cursor_.Key(), key_))
        row = Next(table);
    return row;
}

bool IndexWalk::IsInStorageOrder(const Table& table) const
{
    std::optional<RowId> last;
    for (auto at = table.Tree(Index(table)).First(); !at.AtEnd(); at.Next()) {
        if (last && at.Row() < *last)
            return false;
        last = at.Row();
    }
    return true;
}

} // namespace jet
