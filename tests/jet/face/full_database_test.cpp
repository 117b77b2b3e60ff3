#include "jet/face/database.h"
#include "jet/store/crash_file_system.h"

namespace jet::testing {
namespace {

constexpr const char* kFile = "full.mdb";

/// A database of Access 97 that has no page left: most of them are counted as used and are zero, the last ones belong
/// to tables that may be dropped.
class FullDatabase {
public:
    explicit FullDatabase(const std::vector<std::string>& statements)
    {
        constexpr std::uint64_t kMaxSize = std::uint64_t{1} << 30;
        connection_ = Connection::Create(kFile, JetVersion::Jet3, Existing::Refuse, system_);
        for (const std::string& sql : statements)
            connection_->Execute(sql);
        // Behind what a new database's map of free pages covers.
        connection_->Execute("CREATE TABLE first (m Longtext)");
        {
            Recordset rows = connection_->OpenTable("first");
            rows.AddNew();
            rows.SetText(0, std::string(2'500'000, 'x'));
            rows.Update();
        }
        connection_->Commit();
        connection_.reset();
        system_.Open(kFile, OpenMode::ReadWrite)->Truncate(kMaxSize);
        connection_ = Connection::Open(kFile, system_);
        while (!ErrorOf([&] { connection_->Execute("CREATE TABLE filler" + std::to_string(fillers_) + " (a Long)"); }))
            ++fillers_;
        connection_->Commit();
    }

    [[nodiscard]] Connection& Face() { return *connection_; }
    void Reopen()
    {
        connection_.reset();
        connection_ = Connection::Open(kFile, system_);
    }
    /// Two pages, or more when a page of a system table goes as well. False when there is no more to be had.
    [[nodiscard]] bool MakeRoom()
    {
        if (fillers_ == 0)
            return false;
        connection_->Execute("DROP TABLE filler" + std::to_string(--fillers_));
        connection_->Commit();
        return true;
    }

private:
    CrashFileSystem system_{1};
    std::unique_ptr<Connection> connection_;
    int fillers_ = 0;
};

std::string Schema(Connection& connection)
{
    std::string text;
    for (const auto& [kind, field] : {std::pair{SchemaKind::Columns, "COLUMN_NAME"},
                                      {SchemaKind::Indexes, "INDEX_NAME"},
                                      {SchemaKind::ForeignKeys, "FK_NAME"}})
        for (Rowset rows = connection.OpenSchema(kind); !rows.Eof(); rows.MoveNext())
            text += rows.Text(field) + "\n";
    return text;
}

TEST(FullDatabase, AStatementThatFindsNoRoomHasChangedNothing)
{
    FullDatabase database({"CREATE TABLE parent (PKEY Counter NOT NULL)",
                           "CREATE UNIQUE INDEX parent_PKEY ON parent (PKEY) WITH PRIMARY",
                           "CREATE TABLE child (FKEY Long)"});
    const std::string statements[] = {
        "CREATE TABLE [" + std::string(64, 'a') + "] (PKEY Counter NOT NULL, note Longtext NOT NULL)",
        "ALTER TABLE child ADD CONSTRAINT [" + std::string(64, 'k') + "] FOREIGN KEY (FKEY) REFERENCES parent (PKEY)",
        "ALTER TABLE child ADD COLUMN [" + std::string(64, 'n') + "] Longtext NOT NULL",
        "CREATE INDEX i ON child (FKEY)",
    };
    int refused = 0;
    for (const std::string& sql : statements) {
        SCOPED_TRACE(sql);
        for (;;) {
            const std::string before = Schema(database.Face());
            const std::optional<ErrorNumber> error = ErrorOf([&] { database.Face().Execute(sql); });
            if (!error)
                break;
            ++refused;
            EXPECT_EQ(error, ErrorNumber::DatabaseFull);
            EXPECT_EQ(Schema(database.Face()), before);
            ASSERT_TRUE(database.MakeRoom());
        }
    }
    EXPECT_GE(refused, 3);
}

TEST(FullDatabase, KeepsEveryRecordSavedBeforeItsEnd)
{
    FullDatabase database({"CREATE TABLE t (PKEY Counter NOT NULL, name String, note Longtext)",
                           "CREATE UNIQUE INDEX t_PKEY ON t (PKEY) WITH PRIMARY", "CREATE INDEX t_name ON t (name)"});
    while (database.MakeRoom())
        continue;
    std::string expected;
    int saved = 0;
    {
        Recordset rows = database.Face().OpenTable("t");
        int refused = 0;
        for (int i = 1; refused < 20; ++i) {
            rows.AddNew();
            rows.SetLong(0, i);
            // Now and then one that needs a page of its own for each index entry or part of a memo.
            const std::string name =
                std::to_string(i * 7919 % 1000) + std::string(static_cast<std::size_t>(i % 90), 'x');
            rows.SetText(1, name);
            rows.SetText(2, std::string(static_cast<std::size_t>(i * 37 % 5000), 'n'));
            if (const auto error = ErrorOf([&] { rows.Update(); })) {
                EXPECT_EQ(error, ErrorNumber::DatabaseFull);
                EXPECT_TRUE(rows.IsPending());
                rows.CancelUpdate();
                ++refused;
                continue;
            }
            expected += std::to_string(i) + "|" + name + "\n";
            ++saved;
        }
        // A change that finds no room leaves the record as it was.
        for (rows.MoveFirst(); !rows.Eof(); rows.MoveNext()) {
            rows.SetText(2, std::string(90'000, 'm'));
            EXPECT_EQ(ErrorOf([&] { rows.Update(); }), ErrorNumber::DatabaseFull);
            rows.CancelUpdate();
        }
    }
    EXPECT_GT(saved, 10);
    database.Face().Commit();
    database.Reopen();
    std::string found;
    std::size_t noteBytes = 0;
    for (Recordset rows = database.Face().OpenTable("t"); !rows.Eof(); rows.MoveNext()) {
        found += ToText(rows.Get(0)) + "|" + ToText(rows.Get(1)) + "\n";
        noteBytes += ToText(rows.Get(2)).size();
        EXPECT_EQ(ToText(rows.Get(2)).find_first_not_of('n'), std::string::npos);
    }
    EXPECT_EQ(found, expected);
    EXPECT_GT(noteBytes, 1'000u);
    // And there is room again once something has gone.
    database.Face().Execute("DELETE * FROM t");
    Recordset rows = database.Face().OpenTable("t");
    rows.AddNew();
    rows.SetText(2, std::string(9000, 'm'));
    rows.Update();
}

} // namespace
} // namespace jet::testing
