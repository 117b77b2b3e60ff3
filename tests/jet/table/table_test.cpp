#include "jet/table/table.h"

#include "table_support.h"

#include <gtest/gtest.h>

namespace jet::testing {

TEST(Table, ValuesOfAllTypesComeBack)
{
    std::vector<ColumnSpec> columns = {
        Col("flag", ColumnType::Boolean),  Col("byte", ColumnType::Byte),      Col("int", ColumnType::Integer),
        Col("long", ColumnType::Long),     Col("money", ColumnType::Currency), Col("single", ColumnType::Single),
        Col("double", ColumnType::Double), Col("date", ColumnType::DateTime),  Col("text", ColumnType::Text),
        Col("memo", ColumnType::Memo),     Col("ole", ColumnType::Ole),        Col("guid", ColumnType::Guid),
        Col("binary", ColumnType::Binary)};
    Guid guid;
    guid.bytes[3] = 7;
    const std::vector<std::vector<Value>> rows = {
        {true, 200, -3, 1 << 30, Currency{-12345}, 0.5f, 1e300, DateTime{-1.25}, std::string("caf\u00E9"),
         std::string("a memo of less than 32"), Bytes{1, 2, 3}, guid, Bytes{0, 255}},
        {false, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}, Null{}},
        {true, 0, 0, 0, Currency{}, 0.0f, 0.0, DateTime{}, std::string(), std::string(40, 'm'), Bytes(50, 9), Guid{},
         Bytes{1}},
        {true, 1, 1, 1, Currency{1}, 1.0f, 1.0, DateTime{1}, std::string(255, 'x'), std::string(100'000, 'y'),
         Bytes(3000, 1), guid, Bytes(255, 2)},
    };
    for (const JetVersion version : kBothVersions) {
        Memory memory(version);
        auto table = memory.Create(columns);
        for (const std::vector<Value>& row : rows)
            table->Insert(MakeRecord(*table, row));
        table = memory.Reopen(std::move(table));
        const std::vector<RowId> ids = AllRows(*table);
        ASSERT_EQ(ids.size(), rows.size());
        for (std::size_t i = 0; i < rows.size(); ++i)
            EXPECT_EQ(Values(*table, ids[i]), rows[i]) << "row " << i;
    }
}

} // namespace jet::testing
