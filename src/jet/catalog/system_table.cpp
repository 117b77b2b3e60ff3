#include "jet/catalog/system_table.h"

#include "jet/base/error.h"
#include "jet/base/value_codec.h"

#include <utility>

namespace jet {

/// By number, not by name: the numbers are the same in every file, and Jet 4 keeps the columns in another order.
SystemTable::SystemTable(Pager& pager, PageNumber definitionPage, std::string name, std::size_t columnCount)
    : table_(pager, definitionPage, std::move(name))
{
    for (std::size_t number = 0; number < columnCount; ++number) {
        const auto position = table_.Definition().ColumnByNumber(static_cast<std::uint16_t>(number));
        if (!position)
            throw CorruptPage(definitionPage, table_.Name() + " has no column " + std::to_string(number));
        positions_[number] = *position;
    }
}

Record SystemTable::Blank() const
{
    Record record;
    record.Reset(table_.Definition().columns.size());
    return record;
}

std::int32_t SystemTable::Long(const Record& record, std::uint16_t column) const
{
    const Value value = table_.Get(record, positions_[column]);
    const auto* number = std::get_if<std::int32_t>(&value);
    return number ? *number : 0;
}

std::string SystemTable::Text(const Record& record, std::uint16_t column) const
{
    Value value = table_.Get(record, positions_[column]);
    auto* text = std::get_if<std::string>(&value);
    return text ? std::move(*text) : std::string();
}

DateTime SystemTable::Date(const Record& record, std::uint16_t column) const
{
    const Value value = table_.Get(record, positions_[column]);
    const auto* date = std::get_if<DateTime>(&value);
    return date ? *date : DateTime{};
}

Bytes SystemTable::Binary(const Record& record, std::uint16_t column) const
{
    const std::optional<ByteSpan> stored = record.Stored(positions_[column]);
    return stored ? Bytes(stored->begin(), stored->end()) : Bytes();
}

bool SystemTable::Boolean(const Record& record, std::uint16_t column) const
{
    const Value value = table_.Get(record, positions_[column]);
    const auto* flag = std::get_if<bool>(&value);
    return flag && *flag;
}

void SystemTable::Set(Record& record, std::uint16_t column, const Value& value) const
{
    const std::size_t position = positions_[column];
    if (IsNull(value))
        return record.SetNull(position);
    if (const auto* flag = std::get_if<bool>(&value)) {
        const Byte byte = *flag ? 1 : 0;
        return record.SetStored(position, {&byte, 1});
    }
    Bytes stored;
    EncodeValue(stored, *table_.Definition().format, ColumnOf(column).GetValueType(), value);
    record.SetStored(position, stored);
}

bool SystemTable::Overwrite(RowId row, std::uint16_t column, const Value& value)
{
    Bytes stored;
    EncodeValue(stored, *table_.Definition().format, ColumnOf(column).GetValueType(), value);
    return table_.Overwrite(row, positions_[column], stored);
}

/// The ids are collected before anybody acts on them: a row that is deleted takes its entry out of the walked tree.
std::vector<RowId> SystemTable::RowsWith(std::uint16_t column, const Value& value)
{
    const std::vector<RealIndex>& indexes = table_.Definition().realIndexes;
    for (std::size_t i = 0; i < indexes.size(); ++i) {
        if (indexes[i].columns.size() != 1 || indexes[i].columns[0].column != column)
            continue;
        Record record = Blank();
        Set(record, column, value);
        const std::optional<Bytes> key = table_.KeyOf(i, record);
        std::vector<RowId> rows;
        if (key)
            for (auto at = table_.Tree(i).Seek(*key); !at.AtEnd() && std::ranges::equal(at.Key(), *key); at.Next())
                rows.push_back(at.Row());
        return rows;
    }
    // Every engine makes these indexes with the file.
    throw CorruptPage(table_.Definition().pages.front(), table_.Name() + " lacks an index");
}

} // namespace jet
