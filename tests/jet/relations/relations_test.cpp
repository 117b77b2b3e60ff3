#include "jet/face/database.h"

namespace jet {
namespace {

using testing::Database;
using testing::ErrorOf;
using testing::kVersions;

constexpr std::string_view kLink =
    "ALTER TABLE [child] ADD CONSTRAINT [child_LINK] FOREIGN KEY ([FKEY]) REFERENCES [parent] "
    "([PKEY]) ON UPDATE CASCADE ON DELETE CASCADE;";

void MakeTables(Database& database)
{
    for (const std::string table : {"parent", "child"}) {
        database.Execute("CREATE TABLE [" + table + "] ([PKEY] Counter NOT NULL, [FKEY] Long, [name] String);");
        database.Execute("CREATE UNIQUE INDEX [" + table + "_PKEY] ON [" + table + "] ([PKEY]) WITH PRIMARY;");
    }
}

TEST(Relation, IsInTheCatalogAndInBothTables)
{
    for (const JetVersion version : kVersions) {
        for (const bool indexFirst : {true, false}) {
            SCOPED_TRACE(indexFirst ? "shared index" : "index of its own");
            Database database(version);
            MakeTables(database);
            if (indexFirst)
                database.Execute("CREATE INDEX [child_FKEY] ON [child] ([FKEY]);");
            const std::string before = database.Schema(SchemaKind::Indexes, {}, {"TABLE_NAME", "INDEX_NAME"});
            database.Execute(kLink);
            database.Keep();

            EXPECT_EQ(database.Schema(SchemaKind::ForeignKeys, {},
                                      {"FK_TABLE_NAME", "FK_COLUMN_NAME", "PK_TABLE_NAME", "PK_COLUMN_NAME", "PK_NAME",
                                       "FK_NAME", "UPDATE_RULE", "DELETE_RULE"}),
                      "child|FKEY|parent|PKEY|parent_PKEY|child_LINK|CASCADE|CASCADE\n");
            EXPECT_EQ(database.Schema(SchemaKind::TableConstraints, {"", "", "", "", "", "child", "FOREIGN KEY"},
                                      {"CONSTRAINT_NAME"}),
                      "child_LINK\n");
            EXPECT_EQ(database.Schema(SchemaKind::Indexes, {"", "", "child_LINK"}, {"TABLE_NAME", "COLUMN_NAME"}),
                      "child|FKEY\n");

            database.Reopen();
            EXPECT_EQ(database.Schema(SchemaKind::ReferentialConstraints, {"", "", "CHILD_link"}, {"CONSTRAINT_NAME"}),
                      "child_LINK\n");
            database.Execute("ALTER TABLE [child] DROP CONSTRAINT [child_LINK]");
            EXPECT_EQ(database.Schema(SchemaKind::Indexes, {}, {"TABLE_NAME", "INDEX_NAME"}), before);
            EXPECT_EQ(database.Schema(SchemaKind::ForeignKeys, {}, {"FK_NAME"}), "");
            database.Execute(kLink);
            database.Execute("DROP TABLE [child]"); // which takes its relation with it
            EXPECT_EQ(database.Schema(SchemaKind::ForeignKeys, {}, {"FK_NAME"}), "");
            database.Keep();
            database.Execute("DROP TABLE [parent]");
            EXPECT_TRUE(database.AllSound());
        }
    }
}

/// A table whose records carry an `id`, which is its key, and a `ref` to the id of the table `to`.
void MakeTableWithId(Database& database, const std::string& name, const std::string& to, const std::string& rules)
{
    if (!database.Schema(SchemaKind::Tables, {"", "", name}, {"TABLE_NAME"}).size()) {
        database.Execute("CREATE TABLE [" + name + "] (id Long, ref Long, aim Long)");
        database.Execute("CREATE UNIQUE INDEX [" + name + "_id] ON [" + name + "] (id) WITH PRIMARY");
    }
    if (!to.empty())
        database.Execute("ALTER TABLE [" + name + "] ADD CONSTRAINT [" + name +
                         "_LINK] FOREIGN KEY (ref) REFERENCES [" + to + "] (id) " + rules);
}

constexpr const char* kBoth = "ON UPDATE CASCADE ON DELETE CASCADE";

TEST(Integrity, ARowNeedsTheRowItRefersTo)
{
    for (const JetVersion version : kVersions) {
        Database database(version);
        MakeTableWithId(database, "a", "", "");
        MakeTableWithId(database, "b", "a", kBoth);
        database.Add("a", {{"id", "1"}});
        EXPECT_EQ(ErrorOf([&] { database.Add("b", {{"id", "1"}, {"ref", "1"}}); }), std::nullopt);
        EXPECT_EQ(ErrorOf([&] { database.Add("b", {{"id", "2"}, {"ref", "2"}}); }), ErrorNumber::RelatedRecordRequired);
        EXPECT_EQ(ErrorOf([&] { database.Add("b", {{"id", "3"}}); }), std::nullopt);
        EXPECT_EQ(ErrorOf([&] { database.Add("b", {{"ref", "1"}}); }), ErrorNumber::NullInPrimaryKey);
        // A key that was found once is looked up again after its row has gone.
        EXPECT_EQ(ErrorOf([&] { database.Add("b", {{"id", "4"}, {"ref", "1"}}); }), std::nullopt);
        database.Execute("DELETE * FROM a");
        EXPECT_EQ(ErrorOf([&] { database.Add("b", {{"id", "5"}, {"ref", "1"}}); }), ErrorNumber::RelatedRecordRequired);
        EXPECT_EQ(database.Rows("b"), "3||\n");
        EXPECT_TRUE(database.AllSound());
    }
}

TEST(Integrity, AKeyGivenToAPendingRecordCountsAsPresent)
{
    Database database(JetVersion::Jet4);
    MakeTableWithId(database, "a", "", "");
    MakeTableWithId(database, "b", "a", kBoth);
    Recordset parent = database.Open("a");
    parent.AddNew();
    EXPECT_EQ(ErrorOf([&] { database.Add("b", {{"id", "1"}, {"ref", "7"}}); }), ErrorNumber::RelatedRecordRequired);
    parent.SetLong(0, 7);
    EXPECT_EQ(ErrorOf([&] { database.Add("b", {{"id", "1"}, {"ref", "7"}}); }), std::nullopt);
    // A column added meanwhile moves the pending record's fields, not its key.
    database.Execute("ALTER TABLE a ADD COLUMN more Longtext");
    database.Execute("ALTER TABLE a DROP COLUMN ref");
    EXPECT_EQ(ErrorOf([&] { database.Add("b", {{"id", "2"}, {"ref", "7"}}); }), std::nullopt);
    parent.CancelUpdate();
    EXPECT_EQ(ErrorOf([&] { database.Add("b", {{"id", "3"}, {"ref", "7"}}); }), ErrorNumber::RelatedRecordRequired);
}

TEST(Integrity, OnlyTheReferenceThatItsMakerKnowsIsNotLookedFor)
{
    for (const JetVersion version : kVersions) {
        Database database(version);
        MakeTables(database);
        database.Execute(kLink);
        Recordset parent = database.Open("parent");
        Recordset child = database.Open("child");
        parent.AddNew();
        const std::int32_t number = parent.PendingNumber(0).value();
        const auto add = [&](const auto& fill) {
            child.AddNew();
            fill();
            const auto error = ErrorOf([&] { child.Update(); });
            child.CancelUpdate();
            return error;
        };
        const auto refer = [&] { child.SetReference(1, number, parent); };
        EXPECT_EQ(add(refer), std::nullopt) << "while it is pending";
        parent.Update();
        EXPECT_EQ(add(refer), std::nullopt);
        child.AddNew();
        refer();
        child.CancelUpdate();
        EXPECT_EQ(add([&] { child.SetLong(1, number + 1); }), ErrorNumber::RelatedRecordRequired) << "a record later";
        EXPECT_EQ(add([&] {
                      refer();
                      child.SetLong(1, number + 1);
                  }),
                  ErrorNumber::RelatedRecordRequired);
        EXPECT_EQ(add([&] { child.SetReference(1, number + 1, child); }), ErrorNumber::RelatedRecordRequired)
            << "a record of another table";
        database.Execute("ALTER TABLE [child] ADD COLUMN [other] Long");
        database.Execute(
            "ALTER TABLE [child] ADD CONSTRAINT [second] FOREIGN KEY ([other]) REFERENCES [parent] ([PKEY])");
        EXPECT_EQ(add([&] {
                      refer();
                      child.SetLong(3, number + 1);
                  }),
                  ErrorNumber::RelatedRecordRequired);
        EXPECT_EQ(add(refer), std::nullopt);
        EXPECT_EQ(database.Rows("child"), "1|1||\n2|1||\n3|1||\n");
        EXPECT_TRUE(database.AllSound());
    }
}

TEST(Integrity, ADeleteCascadesThroughAnyDepthAndRoundCycles)
{
    for (const JetVersion version : kVersions) {
        Database database(version);
        // a <- b <- c <- a, and a chain within one table.
        MakeTableWithId(database, "a", "", "");
        MakeTableWithId(database, "b", "a", kBoth);
        MakeTableWithId(database, "c", "b", kBoth);
        MakeTableWithId(database, "a", "c", kBoth);
        MakeTableWithId(database, "chain", "chain", kBoth);
        database.Add("a", {{"id", "1"}});
        database.Add("b", {{"id", "2"}, {"ref", "1"}});
        database.Add("c", {{"id", "3"}, {"ref", "2"}});
        database.Add("a", {{"id", "4"}, {"ref", "3"}});
        database.Add("b", {{"id", "5"}, {"ref", "4"}});
        database.Add("b", {{"id", "6"}});

        Recordset chain = database.Open("chain");
        constexpr int kLength = 1'500;
        for (int i = 0; i < kLength; ++i) {
            chain.AddNew();
            chain.SetLong(0, i);
            chain.SetLong(1, i == 0 ? 0 : i - 1); // the first refers to itself
            chain.Update();
        }
        Recordset first = database.Open("a");
        first.Delete();
        EXPECT_EQ(database.Rows("a"), "");
        EXPECT_EQ(database.Rows("b"), "6||\n");
        EXPECT_EQ(database.Rows("c"), "");
        chain.MoveFirst();
        chain.Delete();
        EXPECT_EQ(database.Count("chain"), 0u);
        EXPECT_TRUE(database.AllSound());
    }
}

TEST(Integrity, AnUpdateCascadesOrIsRefused)
{
    Database database(JetVersion::Jet4);
    MakeTableWithId(database, "a", "a", "ON UPDATE CASCADE");
    MakeTableWithId(database, "b", "a", kBoth);
    MakeTableWithId(database, "strict", "b", "");
    database.Add("a", {{"id", "1"}, {"ref", "1"}, {"aim", "11"}});
    database.Add("a", {{"id", "2"}, {"ref", "1"}, {"aim", "12"}});
    database.Add("b", {{"id", "1"}, {"ref", "1"}, {"aim", "2"}});
    database.Add("strict", {{"id", "1"}, {"ref", "1"}, {"aim", "1"}});

    database.Execute("UPDATE a SET id = aim");
    EXPECT_EQ(database.Rows("a"), "11|11|11\n12|11|12\n");
    EXPECT_EQ(database.Rows("b"), "1|11|2\n");
    EXPECT_EQ(database.Try("UPDATE b SET id = aim"), ErrorNumber::RelatedRecords);
    EXPECT_EQ(database.Try("UPDATE b SET ref = aim"), ErrorNumber::RelatedRecordRequired);
    EXPECT_EQ(database.Rows("b"), "1|11|2\n");
    EXPECT_EQ(database.Rows("strict"), "1|1|1\n");
    EXPECT_TRUE(database.AllSound());
}

} // namespace
} // namespace jet
