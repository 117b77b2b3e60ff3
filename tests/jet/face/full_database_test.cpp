#include "jet/face/database.h"
#include "jet/store/crash_file_system.h"

namespace jet::testing {
namespace {

constexpr const char* kFile = "full.mdb";

/// Makes a database of Access 97 by `statements` in which some dozen pages are left: most of the others are counted as
/// used and are zero.
void MakeAlmostFull(CrashFileSystem& disk, const std::vector<std::string>& statements)
{
    constexpr std::uint64_t kMaxSize = std::uint64_t{1} << 30;
    {
        const auto connection = Connection::Create(kFile, JetVersion::Jet3, Existing::Refuse, disk);
        for (const std::string& sql : statements)
            connection->Execute(sql);
        // Behind what a new database's map of free pages covers.
        connection->Execute("CREATE TABLE first (m Longtext)");
        Recordset rows = connection->OpenTable("first");
        rows.AddNew();
        rows.SetText(0, std::string(2'500'000, 'x'));
        rows.Update();
        rows.Close();
        connection->Commit();
    }
    disk.Open(kFile, OpenMode::ReadWrite)->Truncate(kMaxSize);
    const auto connection = Connection::Open(kFile, disk);
    int fillers = 0;
    while (!ErrorOf([&] { connection->Execute("CREATE TABLE filler" + std::to_string(fillers) + " (a Long)"); }))
        ++fillers;
    while (fillers > 0)
        connection->Execute("DROP TABLE filler" + std::to_string(--fillers));
    connection->Commit();
}

TEST(FullDatabase, KeepsEveryRecordSavedBeforeItsEnd)
{
    CrashFileSystem disk;
    MakeAlmostFull(disk, {"CREATE TABLE t (PKEY Counter NOT NULL, name String, note Longtext)",
                          "CREATE UNIQUE INDEX t_PKEY ON t (PKEY) WITH PRIMARY", "CREATE INDEX t_name ON t (name)"});
    auto connection = Connection::Open(kFile, disk);
    std::string expected;
    int saved = 0;
    Recordset rows = connection->OpenTable("t");
    for (int i = 1, refused = 0; refused < 20; ++i) {
        rows.AddNew();
        rows.SetLong(0, i);
        // Now and then one that needs a page of its own for each index entry or part of a memo.
        const std::string name = std::to_string(i * 7919 % 1000) + std::string(static_cast<std::size_t>(i % 90), 'x');
        const std::string note(static_cast<std::size_t>(i * 37 % 5000), 'n');
        rows.SetText(1, name);
        rows.SetText(2, note);
        if (const auto error = ErrorOf([&] { rows.Update(); })) {
            EXPECT_EQ(error, ErrorNumber::DatabaseFull);
            EXPECT_TRUE(rows.IsPending());
            rows.CancelUpdate();
            ++refused;
            continue;
        }
        expected.append(std::to_string(i)).append("|").append(name).append("|").append(note).append("\n");
        ++saved;
    }
    // A change that finds no room leaves the record as it was.
    for (rows.MoveFirst(); !rows.Eof(); rows.MoveNext()) {
        rows.SetText(2, std::string(90'000, 'm'));
        EXPECT_EQ(ErrorOf([&] { rows.Update(); }), ErrorNumber::DatabaseFull);
        rows.CancelUpdate();
    }
    rows.Close();
    EXPECT_GT(saved, 10);
    connection->Commit();
    connection.reset();
    connection = Connection::Open(kFile, disk);
    EXPECT_EQ(RowsOf(*connection, "t"), expected);
    // And there is room again once something has gone.
    connection->Execute("DELETE * FROM t");
    Recordset again = connection->OpenTable("t");
    again.AddNew();
    again.SetText(2, std::string(9000, 'm'));
    again.Update();
}

} // namespace
} // namespace jet::testing
