#include "jet/face/database.h"

namespace jet {
namespace {

using testing::Database;
using testing::kVersions;

void MakeTables(Database& database)
{
    for (const char* sql : {
             "CREATE TABLE p (PKEY Counter NOT NULL, name String, note Longtext)",
             "CREATE UNIQUE INDEX p_PKEY ON p (PKEY) WITH PRIMARY",
             "CREATE INDEX p_name ON p (name)",
             "CREATE TABLE c (PKEY Counter NOT NULL, FKEY Long, text String, note Longtext)",
             "CREATE UNIQUE INDEX c_PKEY ON c (PKEY) WITH PRIMARY",
             "CREATE INDEX c_FKEY ON c (FKEY)",
             "ALTER TABLE c ADD CONSTRAINT c_LINK FOREIGN KEY (FKEY) REFERENCES p (PKEY) ON UPDATE CASCADE ON DELETE "
             "CASCADE",
         })
        database.Execute(sql);
}

/// The same records each time: short and long texts, memos in the row, on shared pages and on chains of pages.
void Fill(Database& database)
{
    constexpr int kParents = 150;
    Recordset parents = database.Open("p");
    Recordset children = database.Open("c");
    for (int i = 0; i < kParents; ++i) {
        parents.AddNew();
        parents.SetText(1, "name " + std::to_string(i * 7919 % kParents));
        parents.SetText(2, std::string(static_cast<std::size_t>(i * 37 % 9000), 'n'));
        parents.Update();
        for (int k = 0; k < 5; ++k) {
            children.AddNew();
            children.SetLong(1, *parents.LastAutonumber());
            children.SetText(2, std::string(static_cast<std::size_t>((i * 5 + k) % 250), 't'));
            if (k % 2 == 0)
                children.SetText(3, std::string(static_cast<std::size_t>(i % 400), 'm'));
            children.Update();
        }
    }
}

std::uintmax_t SizeAfterCommit(Database& database)
{
    database.Face().Commit();
    return std::filesystem::file_size(database.Path());
}

TEST(Space, EmptyingAndFillingAgainHardlyGrowsTheFile)
{
    for (const JetVersion version : kVersions) {
        // By one statement per table, by the cascade of one, by dropping the tables.
        for (const std::vector<const char*>& emptying :
             {std::vector{"DELETE * FROM c", "DELETE * FROM p"}, std::vector{"DELETE * FROM p"},
              std::vector{"DROP TABLE c", "DROP TABLE p"}}) {
            SCOPED_TRACE(emptying.front());
            const bool drops = std::string_view(emptying.front()).starts_with("DROP");
            Database database(version);
            MakeTables(database);
            Fill(database);
            const std::uintmax_t first = SizeAfterCommit(database);
            for (int round = 0; round < 10; ++round) {
                for (const char* sql : emptying)
                    database.Execute(sql);
                if (drops)
                    MakeTables(database);
                Fill(database);
                if (round % 3 == 2)
                    database.Reopen();
            }
            EXPECT_LT(SizeAfterCommit(database), first + first / 10);
            EXPECT_TRUE(database.AllSound());
        }
    }
}

/// Rows that go one by one, and others that come between them, leave no more room unused than pages that are half full.
TEST(Space, RoomOfSingleRowsIsUsedAgain)
{
    for (const JetVersion version : kVersions) {
        Database database(version);
        MakeTables(database);
        Fill(database);
        const std::uintmax_t first = SizeAfterCommit(database);
        for (int round = 0; round < 20; ++round) {
            Recordset records = database.Open("c");
            std::size_t removed = 0;
            for (records.MoveFirst(); !records.Eof(); records.MoveNext())
                if (std::get<std::int32_t>(records.Get(0)) % 3 == round % 3) {
                    records.Delete();
                    ++removed;
                }
            for (; removed > 0; --removed) {
                records.AddNew();
                records.SetLong(1, 1);
                records.SetText(2, std::string(removed % 250, 'x'));
                records.SetText(3, std::string(removed % 400, 'y'));
                records.Update();
            }
        }
        EXPECT_LT(SizeAfterCommit(database), first + first / 2);
        EXPECT_TRUE(database.AllSound());
    }
}

} // namespace
} // namespace jet
