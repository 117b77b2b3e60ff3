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
            database.Execute(kLink);
            database.Execute("DROP TABLE [child]"); // which takes its relation with it
            EXPECT_EQ(database.Schema(SchemaKind::ForeignKeys, {}, {"FK_NAME"}), "");
            database.Keep();
            database.Execute("DROP TABLE [parent]");
            EXPECT_TRUE(database.AllSound());
        }
    }
}

} // namespace
} // namespace jet
