#include "schema/database_view.h"

#include "jet/connection.h"
#include "jet/store/crash_file_system.h"
#include "log/runtime_error.h"
#include "support/shared.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

namespace velmora::testing {
namespace {

const DatabaseView::GoesOn kAlways = [] { return true; };

std::size_t FilesIn(const std::filesystem::path& folder)
{
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

/// Whatever Access has written can be looked at to its last row, and neither the file nor its folder changes by it.
TEST(DatabaseView, ReadsRealDatabasesToTheirLastRow)
{
    REQUIRE_SHARED(shared);
    const TempFolder folder;
    int tables = 0;
    for (const std::filesystem::path& original : RealDatabases(shared)) {
        SCOPED_TRACE(original.string());
        const std::filesystem::path copy = folder / "a.mdb";
        std::filesystem::copy_file(original, copy, std::filesystem::copy_options::overwrite_existing);
        DatabaseView view(copy.string());
        for (const DatabaseContents::Table& table : view.Read().tables) {
            if (table.isLinked)
                continue;
            SCOPED_TRACE(table.name);
            ++tables;
            std::uint64_t rows = 0;
            for (std::uint64_t page = 0;; ++page) {
                const auto read = view.ReadPage(table.name, page, kAlways);
                rows += read.size();
                if (!read.empty()) {
                    EXPECT_EQ(read.back().size(), table.columns.size());
                }
                if (read.size() < DatabaseView::kPageRows)
                    break;
            }
            EXPECT_EQ(rows, table.rows);
        }
        EXPECT_EQ(ReadFile(copy), ReadFile(original));
        EXPECT_EQ(FilesIn(folder.Path()), 1U);
    }
    EXPECT_GT(tables, 50);
}

class SmallDatabase : public ::testing::Test {
protected:
    SmallDatabase()
    {
        const auto connection = jet::Connection::Create(folder / "a.mdb", jet::JetVersion::Jet4);
        connection->Execute("CREATE TABLE [parent] ([PKEY] Counter NOT NULL, [name] Text(50));");
        connection->Execute("CREATE UNIQUE INDEX [PK] ON [parent] ([PKEY]) WITH PRIMARY;");
        connection->Execute("CREATE TABLE [child] ([FKEY] Long, [note] Memo);");
        connection->Execute(
            "ALTER TABLE [child] ADD CONSTRAINT [rel] FOREIGN KEY ([FKEY]) REFERENCES [parent] ([PKEY]);");
        jet::Recordset records = connection->OpenTable("parent");
        for (int i = 0; i < 2500; ++i) {
            records.AddNew();
            records.SetText(1, "Name " + std::to_string(i));
            records.Update();
        }
        records.Close();
        connection->Commit();
    }

    TempFolder folder;
    DatabaseView view{(folder / "a.mdb").string()};
};

TEST_F(SmallDatabase, TellsOfColumnsKeysAndRelations)
{
    const DatabaseContents contents = view.Read();
    EXPECT_EQ(contents.format, "Access 2000");
    std::string text;
    for (const DatabaseContents::Table& table : contents.tables) {
        text += table.name + " " + std::to_string(table.rows) + ":";
        for (const DatabaseContents::Column& column : table.columns)
            text += " " + column.name + " " + column.type + (column.isRequired ? " required" : "") +
                    (column.isPrimaryKey ? " primary" : "") + (column.isForeignKey ? " foreign" : "") + ";";
        text += "\n";
    }
    EXPECT_EQ(text, "child 0: FKEY Long Integer foreign; note Memo;\n"
                    "parent 2500: PKEY Long Integer required primary; name Text (50);\n");
    ASSERT_EQ(contents.relations.size(), 1U);
    EXPECT_EQ(contents.relations[0].table + ">" + contents.relations[0].referencedTable, "child>parent");
}

TEST_F(SmallDatabase, JumpsToPagesSearchesAndStops)
{
    static_cast<void>(view.Read());
    const auto first = [&](std::uint64_t page) { return *view.ReadPage("parent", page, kAlways).at(0).at(1); };
    EXPECT_EQ(first(2), "Name 2000");
    EXPECT_EQ(first(0), "Name 0");
    EXPECT_EQ(first(1), "Name 1000");
    EXPECT_EQ(view.ReadPage("parent", 2, kAlways).size(), 500U);
    EXPECT_TRUE(view.ReadPage("parent", 3, kAlways).empty());

    EXPECT_EQ(view.Find("parent", "NAME 1234", 0, kAlways), 1234U);
    EXPECT_EQ(view.Find("parent", "name 12", 1235, kAlways), 1235U);
    EXPECT_EQ(view.Find("parent", "nobody", 0, kAlways), std::nullopt);
    EXPECT_EQ(view.Find("parent", "Name 2400", 0, [] { return false; }), std::nullopt);
}

TEST_F(SmallDatabase, RefusesWhatHasChangedOrIsNoDatabaseAndKeepsNobodyOut)
{
    static_cast<void>(view.Read());
    {
        const auto other = jet::Connection::Open(folder / "a.mdb");
        EXPECT_THROW(static_cast<void>(view.Read()), RuntimeError) << "it is being written";
        other->Execute("CREATE TABLE [more] ([a] Long);");
        other->Commit();
    }
    EXPECT_THROW(static_cast<void>(view.ReadPage("parent", 0, kAlways)), RuntimeError);
    EXPECT_EQ(view.Read().tables.size(), 3U);
    WriteFile(folder / "b.mdb", "no database");
    EXPECT_THROW(static_cast<void>(DatabaseView((folder / "b.mdb").string()).Read()), RuntimeError);
    REQUIRE_SHARED(shared);
    EXPECT_THROW(static_cast<void>(DatabaseView((shared / "corpus/mdb/V2000_with-password.mdb").string()).Read()),
                 RuntimeError);
}

/// A table of another database bears its type in the list of objects; its pages are not asked.
TEST_F(SmallDatabase, NamesLinkedTablesAndDoesNotFollowThem)
{
    std::string bytes = ReadFile(folder / "a.mdb");
    const std::string ofTable("\x01\0\0\x0F\x01\0", 6); // in the folder of tables, of type 1
    constexpr std::size_t kName = 26;                   // behind two dates and the flags
    std::size_t patched = 0;
    for (std::size_t at = bytes.find(ofTable); at != bytes.npos; at = bytes.find(ofTable, at + 1))
        if (bytes.compare(at + kName, 10, std::string("c\0h\0i\0l\0d\0", 10)) == 0) {
            bytes[at + 4] = 6;
            ++patched;
        }
    ASSERT_EQ(patched, 1U);
    WriteFile(folder / "a.mdb", bytes);
    const DatabaseContents contents = view.Read();
    ASSERT_EQ(contents.tables.size(), 2U);
    EXPECT_TRUE(contents.tables[0].name == "child" && contents.tables[0].isLinked);
    EXPECT_FALSE(contents.tables[1].isLinked);
}

TEST_F(SmallDatabase, ReadsThroughTheJournalOfAKilledRunAndLeavesItThere)
{
    jet::testing::CrashFileSystem disk;
    const std::string before = ReadFile(folder / "a.mdb");
    disk.Put("a.mdb", jet::Bytes(before.begin(), before.end()));
    auto connection = jet::Connection::Open("a.mdb", disk);
    connection->Execute("DELETE * FROM [parent]");
    disk.StopAt(disk.Operations() + 9);
    EXPECT_THROW(connection->Commit(), jet::Error);
    disk.Crash(connection, jet::testing::Loss::Nothing);
    for (const char* name : {"a.mdb", "a.mdb.velmora-journal"})
        disk.CopyOut(name, folder / name);
    const std::string killed = ReadFile(folder / "a.mdb"), journal = ReadFile(folder / "a.mdb.velmora-journal");
    EXPECT_NE(killed, before);

    EXPECT_EQ(view.Read().tables.at(1).rows, 2500U);
    EXPECT_EQ(view.ReadPage("parent", 2, kAlways).size(), 500U);
    EXPECT_EQ(ReadFile(folder / "a.mdb"), killed);
    EXPECT_EQ(ReadFile(folder / "a.mdb.velmora-journal"), journal);
    EXPECT_EQ(FilesIn(folder.Path()), 2U);
}

/// Wherever a file is cut off, it is read or refused.
TEST_F(SmallDatabase, SurvivesDamage)
{
    const std::string whole = ReadFile(folder / "a.mdb");
    int refused = 0;
    for (std::size_t size = 1000; size < whole.size(); size += 4096) {
        WriteFile(folder / "a.mdb", whole.substr(0, size));
        try {
            for (const DatabaseContents::Table& table : view.Read().tables)
                static_cast<void>(view.Find(table.name, "nobody", 0, kAlways));
        } catch (const RuntimeError&) {
            ++refused;
        }
    }
    EXPECT_GT(refused, 10);
}

} // namespace
} // namespace velmora::testing
