#include "schema/clear_tables.h"

#include "support/scripted_host.h"
#include "support/shared.h"

#include <optional>

namespace velmora::testing {

namespace {

/// A host that does something before it answers.
class AskingHost : public ScriptedHost {
public:
    std::function<void()> onAsk;

    Answer Ask(std::string_view text, std::string_view caption, Buttons buttons, Icon icon, Answer answer) override
    {
        captions.emplace_back(caption);
        if (onAsk)
            onAsk();
        return ScriptedHost::Ask(text, caption, buttons, icon, answer);
    }
    std::vector<std::string> captions;
};

class WholeDatabase : public ::testing::Test {
protected:
    WholeDatabase()
    {
        session.Create(path, jet::JetVersion::Jet4, jet::Existing::Refuse);
        for (const char* sql :
             {"CREATE TABLE [parent] ([PKEY] Counter NOT NULL);",
              "CREATE UNIQUE INDEX [parent_PKEY] ON [parent] ([PKEY]) WITH PRIMARY;",
              "CREATE TABLE [child] ([FKEY] Long);",
              "ALTER TABLE [child] ADD CONSTRAINT [child_LINK] FOREIGN KEY ([FKEY]) REFERENCES [parent] ([PKEY]) "
              "ON UPDATE CASCADE ON DELETE CASCADE;"})
            session.ExecuteSql(sql);
        Recordset parents = session.OpenTable("parent");
        Recordset children = session.OpenTable("child");
        for (int row = 1; row <= 3; ++row) {
            parents.AddNew();
            parents.Update();
            children.AddNew();
            children.SetLong(0, row);
            children.Update();
        }
    }
    ~WholeDatabase() override
    {
        session.Close();
        EXPECT_SOUND(path);
    }
    [[nodiscard]] bool IsEmpty(std::string_view table) { return session.OpenTable(table).Eof(); }

    TempFolder folder;
    const std::filesystem::path path = folder / "out.mdb";
    AskingHost host;
    Job job{host};
    DatabaseSession session;
};

TEST_F(WholeDatabase, EmptyingEndsWithTheFirstRefusedTable)
{
    session.ExecuteSql("CREATE TABLE [a] ([PKEY] Counter NOT NULL);");
    session.ExecuteSql("CREATE UNIQUE INDEX [a_PKEY] ON [a] ([PKEY]) WITH PRIMARY;");
    session.ExecuteSql("CREATE TABLE [b] ([FKEY] Long);");
    session.ExecuteSql("ALTER TABLE [b] ADD CONSTRAINT [b_LINK] FOREIGN KEY ([FKEY]) REFERENCES [a] ([PKEY]);");
    Recordset a = session.OpenTable("a");
    a.AddNew();
    a.Update();
    Recordset b = session.OpenTable("b");
    b.AddNew();
    b.SetLong(0, 1);
    b.Update();
    a.Close();
    b.Close();

    EXPECT_FALSE(Guarded(job.log, [&] { velEmptyTablesAll(job, session); }));
    ASSERT_EQ(host.errors.size(), 1u);
    EXPECT_EQ(host.errors[0].first, 3200) << host.errors[0].second;
    EXPECT_EQ(host.lines.back(), "Error: velDropTablesAll: DELETE * FROM [a]");
    session.Commit();
}

TEST_F(WholeDatabase, ALockedTableIsAskedAboutUntilItIsFree)
{
    std::optional<Recordset> open(session.OpenTable("parent"));
    host.answers = {Answer::Retry, Answer::Retry};
    host.onAsk = [&] {
        if (host.captions.size() == 2)
            open->Close();
    };
    velDropTablesAll(job, session);
    const std::string question = "Table [parent] is locked.\r\nConstraint [child_LINK] could not be dropped.\r\n"
                                 "Do you want to try to drop the constraint one more time?";
    EXPECT_EQ(host.messages, std::vector<std::string>(2, question));
    EXPECT_EQ(host.captions, std::vector<std::string>(2, "Drop constraint"));
    EXPECT_EQ(host.lines, std::vector<std::string>{"Drop all tables"});
    EXPECT_TRUE(session.UserTables().empty());
    velDropTablesAll(job, session);
    velEmptyTablesAll(job, session);
    EXPECT_EQ(job.log.ErrorCount(), 0) << "a database without tables is dropped and emptied at once";
    session.Commit();
}

TEST_F(WholeDatabase, ALockedTableEndsTheRunWhenNobodyWantsToWait)
{
    struct Case {
        const char* name;
        const char* locked;
        bool quiet;
        const char* lastLine;
        const char* left; ///< each followed by a blank
    };
    const Case cases[] = {
        {"the user gives up a relation", "parent", false,
         "Error: Drop constraint [child_LINK] failed. Table [parent] is locked. No retry.", "child parent wide "},
        {"the user gives up a table", "wide", false, "Error: Drop table [wide] failed. Table is locked. No retry.",
         "wide "},
        {"nobody is asked", "wide", true, "Error: velDropTablesAll: Drop all tables", "wide "},
    };
    session.ExecuteSql("CREATE TABLE [wide] ([x] Long);");
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        host.messages.clear();
        job.settings.blAbort = false;
        job.settings.blQuiet = c.quiet;
        Recordset open = session.OpenTable(c.locked);
        EXPECT_FALSE(Guarded(job.log, [&] { velDropTablesAll(job, session); }));
        EXPECT_EQ(host.lines.back(), c.lastLine);
        EXPECT_EQ(host.messages.size(), c.quiet ? 0u : 1u);
        EXPECT_EQ(host.errors.size(), c.quiet ? 1u : 0u);
        std::string left;
        for (const std::string& table : session.UserTables())
            left += table + " ";
        EXPECT_EQ(left, c.left);
        open.Close();
    }
    session.Commit();
}

TEST_F(WholeDatabase, AFileInUseStaysAsItIs)
{
    session.Commit();
    const std::string before = ReadFile(path);
    job.settings.targetFile = path.string();
    job.settings.blRecreateDatabase = true;
    for (const bool quiet : {true, false}) {
        SCOPED_TRACE(quiet);
        job.settings.blQuiet = quiet;
        job.settings.blAbort = false;
        host.lines.clear();
        host.errors.clear();
        DatabaseSession second;
        EXPECT_FALSE(Guarded(job.log, [&] { velOpenDatabase(job, second); }));
        EXPECT_EQ(host.lines.front(), "Could not delete MDB file");
        EXPECT_EQ(host.captions.size(), quiet ? 0u : 1u);
        ASSERT_EQ(host.errors.size(), quiet ? 1u : 0u) << "the user's Cancel is no error";
        if (quiet) {
            EXPECT_EQ(host.errors[0].first, 3045) << host.errors[0].second;
        }
        EXPECT_EQ(ReadFile(path), before);
    }
}

TEST_F(WholeDatabase, AFileInUseIsAskedAboutUntilItIsFree)
{
    session.Commit();
    job.settings.targetFile = path.string();
    host.answers = {Answer::Retry, Answer::Retry};
    host.onAsk = [&] {
        if (host.captions.size() == 2)
            session.Close();
    };
    DatabaseSession second;
    velOpenDatabase(job, second);
    EXPECT_EQ(host.captions, std::vector<std::string>(2, "Open database"));
    EXPECT_EQ(job.log.ErrorCount(), 0);
    ASSERT_TRUE(second.IsOpen());
    EXPECT_EQ(second.UserTables().size(), 2u);
}

/// A file that stays where it is: nothing can be written beside it.
TEST_F(WholeDatabase, AFileThatCannotBeReplacedIsOpenedAndLosesItsTables)
{
    session.Commit();
    session.Close();
    std::filesystem::create_directory(path.string() + ".velmora-new");
    job.settings.targetFile = path.string();
    job.settings.databaseFormat = "Access 2000";
    job.settings.blRecreateDatabase = true;
    velOpenDatabase(job, session);
    EXPECT_EQ(host.lines, (std::vector<std::string>{"Could not delete MDB file", "Drop all tables"}));
    ASSERT_TRUE(session.IsOpen());
    EXPECT_TRUE(session.UserTables().empty());
    session.Commit();
}

} // namespace

} // namespace velmora::testing
