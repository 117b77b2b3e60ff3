#pragma once

#include "jet/error.h"
#include "jet/store/memory_file.h"
#include "jet/table/table.h"

#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace jet::testing {

/// A database in memory that holds tables and nothing else.
struct Memory {
    explicit Memory(JetVersion version) : pager(NewPager(disk, version)) {}

    [[nodiscard]] std::unique_ptr<Table> Create(const std::vector<ColumnSpec>& columns)
    {
        return std::make_unique<Table>(*pager, Table::Create(*pager, columns), "t");
    }
    /// Everything is written, and read again from the disk.
    [[nodiscard]] std::unique_ptr<Table> Reopen(std::unique_ptr<Table> table)
    {
        const PageNumber page = table->Definition().pages.front();
        table->FlushCounters();
        table.reset();
        pager->Commit();
        pager = OpenPager(disk);
        return std::make_unique<Table>(*pager, page, "t");
    }

    MemoryDisk disk;
    std::unique_ptr<Pager> pager;
};

inline ColumnSpec Col(std::string name, ColumnType type, bool autonumber = false)
{
    return {.name = std::move(name), .type = type, .autonumber = autonumber};
}

inline void SetField(const Table& table, Record& record, std::size_t column, const Value& value)
{
    const Column& kind = table.Definition().columns[column];
    if (IsNull(value)) {
        record.SetNull(column);
    } else if (const bool* flag = std::get_if<bool>(&value)) {
        record.SetSized(column, 1)[0] = *flag;
    } else {
        Bytes stored;
        EncodeValue(stored, table.GetPager().GetFormat(), kind.GetValueType(), value);
        record.SetStored(column, stored);
    }
}

inline Record MakeRecord(const Table& table, const std::vector<Value>& values)
{
    Record record;
    record.Reset(table.Definition().columns.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        SetField(table, record, i, values[i]);
    return record;
}

inline std::vector<Value> Values(const Table& table, RowId row)
{
    Record record;
    table.Read(row, record);
    std::vector<Value> values;
    for (std::size_t i = 0; i < record.ColumnCount(); ++i)
        values.push_back(table.Get(record, i));
    return values;
}

inline std::vector<RowId> AllRows(const Table& table)
{
    std::vector<RowId> rows;
    for (std::optional<RowId> row = table.NextRow(std::nullopt); row; row = table.NextRow(row))
        rows.push_back(*row);
    return rows;
}

/// The number of the error that `action` throws; 0 when it throws none.
template <typename Action>
int ErrorOf(Action action)
{
    try {
        action();
    } catch (const Error& error) {
        return static_cast<int>(error.Number());
    }
    return 0;
}

/// Every index holds exactly the keys of the rows, in order; row count and ownership of pages are exact.
inline void ExpectConsistent(const Table& table)
{
    const TableDef& def = table.Definition();
    const std::vector<RowId> rows = AllRows(table);
    EXPECT_EQ(rows.size(), def.rowCount);
    for (std::size_t i = 0; i < def.realIndexes.size(); ++i) {
        const auto entry = [](ByteSpan key, RowId row) {
            return std::string(key.begin(), key.end()) + " " + std::to_string(row.Pointer());
        };
        std::multiset<std::string> expected;
        Record record;
        for (const RowId row : rows) {
            table.Read(row, record);
            if (const std::optional<Bytes> key = table.KeyOf(i, record))
                expected.insert(entry(*key, row));
        }
        std::multiset<std::string> found;
        for (IndexTree::Cursor at = table.Tree(i).First(); !at.AtEnd(); at.Next())
            found.insert(entry(at.Key(), at.Row()));
        EXPECT_EQ(found, expected) << "index " << i;
    }
}

} // namespace jet::testing
