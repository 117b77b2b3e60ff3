#include "jet/face/database.h"

namespace jet {
namespace {

using testing::Database;
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
            EXPECT_TRUE(database.AllSound());
        }
    }
}

TEST(Relation, IsRefusedWithNothingChanged)
{
    struct Case {
        const char* name;
        std::string_view sql;
        ErrorNumber number;
    };
    const Case cases[] = {
        {"no such child", "ALTER TABLE x ADD CONSTRAINT n FOREIGN KEY (FKEY) REFERENCES parent (PKEY)",
         ErrorNumber::NoSuchTableOrConstraint},
        {"no such parent", "ALTER TABLE child ADD CONSTRAINT n FOREIGN KEY (FKEY) REFERENCES x (PKEY)",
         ErrorNumber::NoSuchTableOrConstraint},
        {"no such column", "ALTER TABLE child ADD CONSTRAINT n FOREIGN KEY (x) REFERENCES parent (PKEY)",
         ErrorNumber::NoSuchField},
        {"types differ", "ALTER TABLE child ADD CONSTRAINT n FOREIGN KEY (name) REFERENCES parent (PKEY)",
         ErrorNumber::RelationTypesDiffer},
        {"numbers differ", "ALTER TABLE child ADD CONSTRAINT n FOREIGN KEY (FKEY) REFERENCES parent (PKEY, FKEY)",
         ErrorNumber::RelationTypesDiffer},
        {"not the key", "ALTER TABLE child ADD CONSTRAINT n FOREIGN KEY (FKEY) REFERENCES parent (FKEY)",
         ErrorNumber::NotUniquelyIndexed},
        {"no key at all", "ALTER TABLE child ADD CONSTRAINT n FOREIGN KEY (FKEY) REFERENCES keyless (a)",
         ErrorNumber::NoPrimaryKey},
        {"its name is an index",
         "ALTER TABLE child ADD CONSTRAINT child_PKEY FOREIGN KEY (FKEY) REFERENCES parent (PKEY)",
         ErrorNumber::IndexNameTaken},
        {"its name is bad", "ALTER TABLE child ADD CONSTRAINT [a.b] FOREIGN KEY (FKEY) REFERENCES parent (PKEY)",
         ErrorNumber::InvalidName},
        {"a row has no parent", kLink, ErrorNumber::DataViolatesRelation},
    };
    for (const JetVersion version : kVersions) {
        Database database(version);
        MakeTables(database);
        database.Execute("CREATE TABLE keyless (a Long)");
        database.Add("child", {{"name", "Null refers to nothing"}});
        database.Add("child", {{"FKEY", "0"}});
        const auto state = [&] {
            return database.Schema(SchemaKind::Indexes, {}, {"TABLE_NAME", "INDEX_NAME"}) +
                   database.Schema(SchemaKind::ForeignKeys, {}, {"FK_NAME"});
        };
        const std::string before = state();
        for (const Case& c : cases) {
            SCOPED_TRACE(c.name);
            EXPECT_EQ(database.Try(c.sql), c.number);
            EXPECT_EQ(state(), before);
        }
        database.Execute("DELETE * FROM child");
        database.Add("child", {{"name", "Null refers to nothing"}});
        EXPECT_EQ(database.Try(kLink), std::nullopt);
        EXPECT_EQ(database.Try(kLink), ErrorNumber::RelationExists);
        EXPECT_TRUE(database.AllSound());
    }
}

TEST(Relation, CountsAmongTheIndexesOfBothTables)
{
    Database database(JetVersion::Jet4);
    MakeTables(database);
    // The parent's key and 31 relations fill its 32 places.
    for (int i = 0; i < 32; ++i) {
        const std::string child = "c" + std::to_string(i);
        database.Execute("CREATE TABLE [" + child + "] ([FKEY] Long)");
        const auto refused = database.Try("ALTER TABLE [" + child + "] ADD CONSTRAINT [" + child +
                                          "_LINK] FOREIGN KEY ([FKEY]) REFERENCES [parent] ([PKEY])");
        EXPECT_EQ(refused, i < 31 ? std::nullopt : std::optional(ErrorNumber::TooManyIndexes)) << i;
    }
    EXPECT_TRUE(database.AllSound());
}

TEST(Relation, KeepsItsTablesAndColumns)
{
    for (const JetVersion version : kVersions) {
        Database database(version);
        MakeTables(database);
        database.Execute(kLink);
        EXPECT_EQ(database.Try("DROP TABLE parent"), ErrorNumber::TableInRelation);
        EXPECT_EQ(database.Try("DROP INDEX parent_PKEY ON parent"), ErrorNumber::TableInRelation);
        EXPECT_EQ(database.Try("ALTER TABLE child DROP COLUMN FKEY"), ErrorNumber::FieldInRelation);
        EXPECT_EQ(database.Try("ALTER TABLE child DROP CONSTRAINT x"), ErrorNumber::NoSuchRelation);
        EXPECT_EQ(database.Try("ALTER TABLE parent DROP CONSTRAINT child_LINK"), ErrorNumber::NoSuchRelation);
        database.Keep();
        // The referencing table takes its relation with it.
        database.Execute("DROP TABLE child");
        EXPECT_EQ(database.Schema(SchemaKind::ForeignKeys, {}, {"FK_NAME"}), "");
        database.Keep();
        database.Execute("DROP TABLE parent");
        EXPECT_TRUE(database.AllSound());
    }
}

} // namespace
} // namespace jet
