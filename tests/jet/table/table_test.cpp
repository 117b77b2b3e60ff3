#include "jet/table/table.h"

#include "table_support.h"

#include <gtest/gtest.h>
#include <limits>

namespace jet::testing {

namespace {

const std::vector<ColumnSpec> kIdAndName = {Col("id", ColumnType::Long, true), Col("name", ColumnType::Text)};

IndexSpec Primary(std::string column)
{
    return {.name = "pk", .columns = {{std::move(column), SortOrder::Ascending}}, .primary = true};
}

/// Refuses whatever it is told to.
struct RefusingHook final : RowHook {
    void BeforeInsert(Table&, const Record&) override { Refuse(); }
    void BeforeUpdate(Table&, RowId, const Record&, const Record&) override { Refuse(); }
    void BeforeDelete(Table&, RowId, const Record&) override { Refuse(); }
    static void Refuse() { throw Error(ErrorNumber::RelatedRecords, {"child"}); }
};

} // namespace

class TableTest : public ::testing::TestWithParam<JetVersion> {
protected:
    Memory memory{GetParam()};
};

TEST_P(TableTest, ValuesOfAllTypesComeBack)
{
    std::vector<ColumnSpec> columns = {
        Col("flag", ColumnType::Boolean),  Col("byte", ColumnType::Byte),      Col("int", ColumnType::Integer),
        Col("long", ColumnType::Long),     Col("money", ColumnType::Currency), Col("single", ColumnType::Single),
        Col("double", ColumnType::Double), Col("date", ColumnType::DateTime),  Col("text", ColumnType::Text),
        Col("memo", ColumnType::Memo),     Col("ole", ColumnType::Ole),        Col("guid", ColumnType::Guid),
        Col("binary", ColumnType::Binary)};
    auto table = memory.Create(columns);
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
    for (const std::vector<Value>& row : rows)
        table->Insert(MakeRecord(*table, row));
    table = memory.Reopen(std::move(table));
    const std::vector<RowId> ids = AllRows(*table);
    ASSERT_EQ(ids.size(), rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i)
        EXPECT_EQ(Values(*table, ids[i]), rows[i]) << "row " << i;
}

TEST_P(TableTest, ARefusedRecordLeavesNothingBehind)
{
    auto table = memory.Create(
        {Col("id", ColumnType::Long, true), Col("code", ColumnType::Text), Col("note", ColumnType::Memo)});
    table->CreateIndex(Primary("id"));
    table->CreateIndex({.name = "code", .columns = {{"code", SortOrder::Ascending}}, .unique = true});
    ColumnRules rules;
    rules.required = true;
    table->SetRules(0, rules);
    const RowId first = table->Insert(MakeRecord(*table, {1, std::string("A"), std::string(5000, 'n')}));
    table->Insert(MakeRecord(*table, {2, Null{}, Null{}}));
    table->Insert(MakeRecord(*table, {3, Null{}, Null{}})); // no value is no duplicate
    const auto freeBefore = FreePages(*memory.pager);

    const std::string note(5000, 'z');
    EXPECT_EQ(ErrorOf([&] { table->Insert(MakeRecord(*table, {4, std::string("a"), note})); }), 3022);
    EXPECT_EQ(ErrorOf([&] { table->Insert(MakeRecord(*table, {1, std::string("B"), note})); }), 3022);
    EXPECT_EQ(ErrorOf([&] { table->Insert(MakeRecord(*table, {Null{}, std::string("B"), note})); }), 3314);
    table->SetRules(0, {});
    EXPECT_EQ(ErrorOf([&] { table->Insert(MakeRecord(*table, {Null{}, std::string("B"), note})); }), 3058);
    EXPECT_EQ(ErrorOf([&] { table->Update(first, MakeRecord(*table, {2, std::string("B"), note})); }), 3022);
    RefusingHook hook;
    table->SetHook(&hook);
    EXPECT_EQ(ErrorOf([&] { table->Insert(MakeRecord(*table, {5, std::string("C"), note})); }), 3200);
    EXPECT_EQ(ErrorOf([&] { table->Update(first, MakeRecord(*table, {5, std::string("C"), note})); }), 3200);
    EXPECT_EQ(ErrorOf([&] { table->Delete(first); }), 3200);
    table->SetHook(nullptr);

    EXPECT_EQ(FreePages(*memory.pager), freeBefore);
    EXPECT_EQ(AllRows(*table).size(), 3u);
    EXPECT_EQ(Text(Values(*table, first)), "1|A|" + std::string(5000, 'n'));
    ExpectConsistent(*table);
    // Once it is gone, its code and its number can be used again.
    table->Delete(first);
    EXPECT_EQ(ErrorOf([&] { table->Delete(first); }), 3167);
    table->Insert(MakeRecord(*table, {1, std::string("a"), Null{}}));
    ExpectConsistent(*table);
}

TEST_P(TableTest, ARecordThatFitsNoPageIsRefused)
{
    std::vector<ColumnSpec> columns;
    std::vector<Value> values;
    for (int i = 0; i < 20; ++i) {
        columns.push_back(Col("c" + std::to_string(i), ColumnType::Text));
        values.emplace_back(std::string(200, 'x'));
    }
    auto table = memory.Create(columns);
    EXPECT_EQ(ErrorOf([&] { table->Insert(MakeRecord(*table, values)); }), 3047);
    values.resize(9);
    EXPECT_EQ(ErrorOf([&] { table->Insert(MakeRecord(*table, values)); }), 0);
}

TEST_P(TableTest, ARowThatOutgrowsItsPageKeepsItsName)
{
    auto table = memory.Create(kIdAndName);
    table->CreateIndex(Primary("id"));
    std::vector<RowId> rows;
    for (int i = 1; i <= 60; ++i)
        rows.push_back(table->Insert(MakeRecord(*table, {i, std::string(20, 'a')})));
    for (const std::size_t length : {250u, 5u, 255u, 0u}) {
        for (std::size_t i = 0; i < rows.size(); ++i)
            table->Update(rows[i], MakeRecord(*table, {static_cast<int>(i + 1), std::string(length, 'b')}));
        EXPECT_EQ(AllRows(*table), rows);
        for (std::size_t i = 0; i < rows.size(); ++i)
            EXPECT_EQ(Text(Values(*table, rows[i])), std::to_string(i + 1) + "|" + std::string(length, 'b'));
        ExpectConsistent(*table);
    }
    for (const RowId row : rows)
        table->Delete(row);
    table = memory.Reopen(std::move(table));
    EXPECT_EQ(AllRows(*table).size(), 0u);
    const std::size_t pages = memory.pager->PageCount();
    for (int i = 1; i <= 60; ++i)
        table->Insert(MakeRecord(*table, {i, std::string(20, 'a')}));
    EXPECT_LE(memory.pager->PageCount(), pages); // the freed pages are used again
}

TEST_P(TableTest, RowsMayGoWhileTheyAreWalked)
{
    auto table = memory.Create(kIdAndName);
    for (int i = 1; i <= 500; ++i)
        table->Insert(MakeRecord(*table, {i, std::string(30, 'a')}));
    int seen = 0;
    for (std::optional<RowId> row = table->NextRow(std::nullopt); row; row = table->NextRow(row)) {
        ++seen;
        if (seen % 7 == 0)
            table->Update(*row, MakeRecord(*table, {seen, std::string(200, 'b')}));
        else
            table->Delete(*row);
    }
    EXPECT_EQ(seen, 500);
    EXPECT_EQ(AllRows(*table).size(), 500u / 7);
}

TEST_P(TableTest, AutonumbersAreGivenOnceAndRaisedByExplicitOnes)
{
    auto table = memory.Create(kIdAndName);
    EXPECT_EQ(table->TakeAutonumber(), 1);
    EXPECT_EQ(table->TakeAutonumber(), 2);
    table->ReturnAutonumber(1); // not the last: kept
    table->ReturnAutonumber(2);
    EXPECT_EQ(table->TakeAutonumber(), 2);
    table->Insert(MakeRecord(*table, {41, Null{}}));
    table->Insert(MakeRecord(*table, {7, Null{}}));
    table = memory.Reopen(std::move(table));
    EXPECT_EQ(table->TakeAutonumber(), 42);
}

TEST_P(TableTest, ColumnsComeAndGoOnAFilledTable)
{
    auto table = memory.Create(kIdAndName);
    table->CreateIndex(Primary("id"));
    for (int i = 1; i <= 3; ++i)
        table->Insert(MakeRecord(*table, {i, std::string("row")}));
    table->AddColumn(Col("memo", ColumnType::Memo));
    table->AddColumn(Col("count", ColumnType::Long));
    EXPECT_EQ(Text(Values(*table, AllRows(*table)[0])), "1|row||");
    table->Update(AllRows(*table)[0], MakeRecord(*table, {1, std::string("row"), std::string(9000, 'm'), 5}));
    EXPECT_EQ(ErrorOf([&] { table->DropColumn("ID"); }), 3280);
    EXPECT_EQ(ErrorOf([&] { table->DropColumn("nobody"); }), 3381);
    EXPECT_EQ(ErrorOf([&] { table->AddColumn(Col("NAME", ColumnType::Long)); }), 3380);
    EXPECT_EQ(ErrorOf([&] { table->AddColumn(Col("n2", ColumnType::Long, true)); }), 3090);
    const auto freeBefore = FreePages(*memory.pager).size();
    const std::uint64_t generation = table->Generation();
    table->DropColumn("Memo");
    EXPECT_GT(FreePages(*memory.pager).size(), freeBefore);
    EXPECT_GT(table->Generation(), generation);
    table->DropColumn("name");
    table->AddColumn(Col("name", ColumnType::Text));
    table = memory.Reopen(std::move(table));
    EXPECT_EQ(Text(Values(*table, AllRows(*table)[0])), "1|5|");
    ExpectConsistent(*table);
}

TEST_P(TableTest, TheFirstVariableColumnComesToRowsWithoutAVariablePart)
{
    auto table = memory.Create({Col("a", ColumnType::Long), Col("flag", ColumnType::Boolean)});
    table->CreateIndex({.name = "a", .columns = {{"a", SortOrder::Ascending}}});
    for (int i = 0; i < 400; ++i)
        table->Insert(MakeRecord(*table, {i, i % 2 == 0}));
    table->AddColumn(Col("text", ColumnType::Memo));
    const RowId row = AllRows(*table)[7];
    EXPECT_EQ(Values(*table, row), (std::vector<Value>{7, false, Null{}}));
    table->Update(row, MakeRecord(*table, {7, true, std::string("seven")}));
    table = memory.Reopen(std::move(table));
    EXPECT_EQ(Values(*table, row), (std::vector<Value>{7, true, std::string("seven")}));
    ExpectConsistent(*table);
}

TEST_P(TableTest, AnAutonumberColumnNumbersTheRowsThatAreThere)
{
    auto table = memory.Create({Col("name", ColumnType::Text)});
    for (const char* name : {"a", "b", "c"})
        table->Insert(MakeRecord(*table, {std::string(name)}));
    table->AddColumn(Col("id", ColumnType::Long, true));
    std::string all;
    for (const RowId row : AllRows(*table))
        all += Text(Values(*table, row)) + " ";
    EXPECT_EQ(all, "a|1 b|2 c|3 ");
    EXPECT_EQ(table->TakeAutonumber(), 4);
}

TEST_P(TableTest, WideningNeverRunsOutOfColumnNumbers)
{
    auto table = memory.Create(kIdAndName);
    table->CreateIndex(Primary("id"));
    for (int i = 1; i <= 300; ++i)
        table->Insert(MakeRecord(*table, {i, "row " + std::to_string(i)}));
    for (int i = 0; i < 300; ++i) {
        table->AddColumn(Col("tmp", i % 2 == 0 ? ColumnType::Memo : ColumnType::Boolean));
        table->DropColumn("tmp");
    }
    EXPECT_LT(table->Definition().columnsEver, 100);
    table = memory.Reopen(std::move(table));
    int i = 0;
    for (const RowId row : AllRows(*table)) {
        ++i;
        EXPECT_EQ(Text(Values(*table, row)), std::to_string(i) + "|row " + std::to_string(i));
    }
    EXPECT_EQ(i, 300);
    ExpectConsistent(*table);
    for (int c = 2; c < 255; ++c)
        table->AddColumn(Col("c" + std::to_string(c), c % 2 == 0 ? ColumnType::Memo : ColumnType::Text));
    EXPECT_EQ(ErrorOf([&] { table->AddColumn(Col("one more", ColumnType::Long)); }), 3190);
    table = memory.Reopen(std::move(table));
    EXPECT_EQ(table->Definition().columns.size(), 255u);
    // Nothing of all that is left when the table goes.
    table->Destroy();
    EXPECT_EQ(FreePages(*memory.pager).size() + 2, memory.pager->PageCount());
}

TEST_P(TableTest, IndexesOnFilledTablesHoldTheirRules)
{
    auto table = memory.Create({Col("a", ColumnType::Long), Col("b", ColumnType::Text), Col("m", ColumnType::Memo)});
    for (int i = 0; i < 300; ++i)
        table->Insert(MakeRecord(*table, {i % 100, "text " + std::to_string(i), Null{}}));
    const auto freeBefore = FreePages(*memory.pager).size();
    const auto index = [](std::string name, const char* column, bool unique = false, bool primary = false) {
        return IndexSpec{std::move(name), {{column, SortOrder::Ascending}}, unique, primary};
    };
    EXPECT_EQ(ErrorOf([&] { table->CreateIndex(index("u", "a", true)); }), 3022);
    EXPECT_EQ(ErrorOf([&] { table->CreateIndex(index("u", "zz")); }), 3381);
    EXPECT_EQ(ErrorOf([&] { table->CreateIndex(index("u", "m")); }), 3421);
    EXPECT_EQ(FreePages(*memory.pager).size(), freeBefore);
    table->CreateIndex(index("a", "a"));
    EXPECT_EQ(ErrorOf([&] { table->CreateIndex(index("A", "b")); }), 3284);
    table->CreateIndex(index("b", "b", false, true));
    EXPECT_EQ(ErrorOf([&] { table->CreateIndex(index("p", "b", false, true)); }), 3283);
    EXPECT_EQ(table->Definition().realIndexes[0].entriesAtBuild, 300u);
    EXPECT_EQ(table->Definition().realIndexes[0].distinctKeys, 100u);
    table->Insert(MakeRecord(*table, {100, std::string("more"), Null{}}));
    EXPECT_EQ(table->Definition().realIndexes[0].distinctKeys, 101u);
    ExpectConsistent(*table);
    table->DropIndex("A");
    table = memory.Reopen(std::move(table));
    EXPECT_EQ(table->Definition().PrimaryKey()->realIndex, 0u);
    EXPECT_EQ(ErrorOf([&] { table->DropIndex("a"); }), 3372);
    ExpectConsistent(*table);
    for (int i = 1; i < 32; ++i)
        table->CreateIndex(index("i" + std::to_string(i), "a"));
    EXPECT_EQ(ErrorOf([&] { table->CreateIndex(index("last", "a")); }), 3039);
    ExpectConsistent(*table);
}

TEST_P(TableTest, RelationsShareTheIndexThatFits)
{
    auto table =
        memory.Create({Col("id", ColumnType::Long, true), Col("a", ColumnType::Long), Col("b", ColumnType::Long)});
    table->CreateIndex(Primary("id"));
    table->CreateIndex({.name = "a", .columns = {{"a", SortOrder::Ascending}}});
    const auto relation = [&](std::string name, RelationSide side, std::uint16_t column) {
        LogicalIndex entry;
        entry.name = std::move(name);
        entry.side = side;
        entry.partnerTable = table->Definition().pages.front();
        entry.cascadeUpdates = true;
        entry.onDelete = DeleteRule::Cascade;
        return table->AddRelationIndex(std::move(entry), {column});
    };
    EXPECT_EQ(ErrorOf([&] { relation(".rX", RelationSide::Referenced, 2); }), 3374);
    EXPECT_EQ(relation(".rC", RelationSide::Referenced, 0), 2u);
    EXPECT_EQ(relation("shared", RelationSide::Referencing, 1), 3u);
    EXPECT_EQ(relation("own", RelationSide::Referencing, 2), 4u);
    EXPECT_EQ(ErrorOf([&] { relation("OWN", RelationSide::Referencing, 2); }), 3375);
    EXPECT_EQ(ErrorOf([&] { table->DropColumn("b"); }), 3303);
    table->SetPartner(2, 3);
    table->SetPartner(3, 2);
    table = memory.Reopen(std::move(table));
    const TableDef& def = table->Definition();
    std::string order;
    for (const LogicalIndex& index : def.logicalIndexes)
        order += index.name + "/" + std::to_string(index.realIndex) + " ";
    EXPECT_EQ(order, ".rC/0 a/1 own/2 pk/0 shared/1 ");
    EXPECT_EQ(def.IndexByName("shared")->partnerIndex, 2u);
    EXPECT_TRUE(def.IndexByName("shared")->cascadeUpdates);
    table->DropIndex("shared");
    table->DropIndex("own");
    EXPECT_EQ(table->Definition().realIndexes.size(), 2u);
}

TEST_P(TableTest, NamesAndDesignsThatTheFormatRefuses)
{
    const std::string longest(64, 'n');
    for (const std::string name : {"", " a", "a.b", "a!b", "[a", "a]", "a`b", "a\nb",
                                   "nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(ErrorOf([&] { static_cast<void>(Table::Create(*memory.pager, {Col(name, ColumnType::Long)})); }),
                  3125);
    }
    EXPECT_EQ(ErrorOf([&] { static_cast<void>(Table::Create(*memory.pager, {Col(longest, ColumnType::Long)})); }), 0);
    EXPECT_EQ(
        ErrorOf([&] {
            static_cast<void>(Table::Create(*memory.pager, {Col("a", ColumnType::Long), Col("A", ColumnType::Long)}));
        }),
        3191);
    EXPECT_EQ(ErrorOf([&] {
                  static_cast<void>(
                      Table::Create(*memory.pager, std::vector<ColumnSpec>(256, Col("a", ColumnType::Long))));
              }),
              3190);
}

TEST(FullDatabase, LeavesTheRowsAsTheyWere)
{
    Memory memory(JetVersion::Jet3);
    auto table = memory.Create(
        {Col("id", ColumnType::Long, true), Col("name", ColumnType::Text), Col("note", ColumnType::Memo)});
    table->CreateIndex(Primary("id"));
    table->CreateIndex({.name = "n", .columns = {{"name", SortOrder::Ascending}}});
    for (int i = 1; i <= 200; ++i)
        table->Insert(MakeRecord(*table, {i, std::string(60, 'a'), std::string(300, 'n')}));
    while (memory.pager->PageCount() < memory.pager->GetFormat().maxPages || !FreePages(*memory.pager).empty())
        static_cast<void>(memory.pager->Allocate());
    int refused = 0;
    for (int i = 201; i <= 400; ++i) {
        const int error = ErrorOf([&] {
            table->Insert(MakeRecord(*table, {i, std::string(60, 'b'), std::string(300, 'n')}));
        });
        refused += error == 3036;
    }
    EXPECT_GT(refused, 100);
    for (const RowId row : AllRows(*table)) {
        static_cast<void>(ErrorOf([&] {
            table->Update(row,
                          MakeRecord(*table, {Values(*table, row)[0], std::string(250, 'c'), std::string(9000, 'm')}));
        }));
    }
    EXPECT_EQ(ErrorOf([&] { table->Renumber(); }), 3036);
    ExpectConsistent(*table);
}

INSTANTIATE_TEST_SUITE_P(BothFormats, TableTest, ::testing::ValuesIn(kBothVersions),
                         [](const auto& test) { return test.param == JetVersion::Jet3 ? "Jet3" : "Jet4"; });

} // namespace jet::testing
