#include "jet/face/database.h"
#include "jet/store/crash_file_system.h"

#include <algorithm>
#include <csignal>
#include <functional>
#include <set>

#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace jet::testing {
namespace {

namespace fs = std::filesystem;
using velmora::testing::ExpectSound;
using velmora::testing::TempFolder;

constexpr const char* kFile = "a.mdb";
constexpr const char* kJournal = "a.mdb.velmora-journal";

void AddRows(Connection& connection, int count, std::size_t textSize)
{
    Recordset rows = connection.OpenTable("t");
    for (int i = 0; i < count; ++i) {
        rows.AddNew();
        rows.SetText(1, std::string(textSize, static_cast<char>('a' + i % 26)));
        rows.Update();
    }
}

/// What a job does, cut where it commits.
const std::function<void(Connection&)> kSteps[] = {
    [](Connection& c) {
        c.Execute("CREATE TABLE t (PKEY Counter NOT NULL, a String)");
        c.Execute("CREATE UNIQUE INDEX PrimaryKey ON t (PKEY) WITH PRIMARY");
        AddRows(c, 40, 10);
    },
    [](Connection& c) {
        AddRows(c, 60, 100);
        c.Execute("ALTER TABLE t ADD COLUMN m LongText");
        c.Execute("CREATE INDEX i ON t (a)");
    },
    [](Connection& c) {
        c.Execute("DELETE * FROM t");
        c.Execute("CREATE TABLE u (b Long)");
        AddRows(c, 30, 200);
    },
    [](Connection& c) {
        c.Execute("DROP TABLE u");
        AddRows(c, 10, 5);
    },
};

/// The tables with their rows.
std::string Contents(Connection& connection)
{
    std::string text;
    for (const std::string& table : UserTables(connection))
        text.append(table).append(":\n").append(RowsOf(connection, table));
    return text;
}

/// What the file holds after each commit; before the first there is none.
std::vector<std::string> ExpectedStates(JetVersion version)
{
    std::vector<std::string> states{""};
    CrashFileSystem system(0);
    const auto connection = Connection::Create(kFile, version, Existing::Refuse, system);
    for (const auto& step : kSteps) {
        step(*connection);
        connection->Commit();
        states.push_back(Contents(*connection));
    }
    return states;
}

/// The job on one disk: goes on where the disk has got to. Counts commits in `done`; throws what the engine throws.
void RunJob(CrashFileSystem& system, JetVersion version, std::size_t& done, std::unique_ptr<Connection>& connection)
{
    connection =
        done == 0 ? Connection::Create(kFile, version, Existing::Refuse, system) : Connection::Open(kFile, system);
    while (done < std::size(kSteps)) {
        kSteps[done](*connection);
        connection->Commit();
        ++done;
    }
}

/// Opens what a crash has left: it is as after commit number `done` or the one that was under way. Files for the
/// checker are collected in `kept`.
void ExpectLastCommit(CrashFileSystem& system, const std::vector<std::string>& states, std::size_t& done,
                      const TempFolder& folder, std::vector<fs::path>& kept)
{
    if (!system.Exists(kFile)) {
        EXPECT_EQ(done, 0u);
        return;
    }
    // A reader finds the same, and leaves everything as it is.
    const std::uint64_t operations = system.Operations();
    const std::string read = Contents(*Connection::OpenReadOnly(kFile, system));
    ASSERT_EQ(system.Operations(), operations);
    auto connection = Connection::Open(kFile, system);
    const std::string contents = Contents(*connection);
    ASSERT_EQ(read, contents);
    if (done + 1 < states.size() && contents == states[done + 1])
        ++done;
    ASSERT_EQ(contents, states[done]);
    connection.reset();
    EXPECT_EQ(system.Files(), std::vector<fs::path>{kFile});
    kept.push_back(folder / ("state" + std::to_string(kept.size()) + ".mdb"));
    system.CopyOut(kFile, kept.back());
}

TEST(Crash, AtEveryOperationLeavesTheLastCommit)
{
    for (const auto& [version, writesBehind] :
         {std::pair(JetVersion::Jet3, false), {JetVersion::Jet4, false}, {JetVersion::Jet4, true}}) {
        const std::vector<std::string> states = ExpectedStates(version);
        const TempFolder folder;
        std::vector<fs::path> kept;
        for (std::uint64_t stop = 1;; ++stop) {
            SCOPED_TRACE("Jet " + std::to_string(version == JetVersion::Jet3 ? 3 : 4) +
                         (writesBehind ? ", with a thread" : "") + ", operation " + std::to_string(stop));
            CrashFileSystem system(static_cast<unsigned>(stop));
            if (writesBehind)
                system.SetWritesBehind();
            system.StopAt(stop);
            std::size_t done = 0;
            std::unique_ptr<Connection> connection;
            try {
                RunJob(system, version, done, connection);
                connection.reset();
            } catch (const Error&) {
                EXPECT_TRUE(system.IsOff());
            }
            const bool isThrough = !system.IsOff();
            system.Crash(connection, stop % 4 == 0 ? Loss::Nothing : Loss::Some);
            ASSERT_NO_FATAL_FAILURE(ExpectLastCommit(system, states, done, folder, kept));
            if (isThrough)
                break;
            // And another crash while the first is repaired, or soon after.
            system.StopAt(system.Operations() + 1 + stop % 12);
            try {
                RunJob(system, version, done, connection);
            } catch (const Error&) {
                EXPECT_TRUE(system.IsOff());
            }
            system.Crash(connection);
            ASSERT_NO_FATAL_FAILURE(ExpectLastCommit(system, states, done, folder, kept));
        }
        EXPECT_GT(kept.size(), 80u);
        EXPECT_TRUE(ExpectSound(kept));
    }
}

TEST(Crash, WhileTheFileIsPutBackLeavesSomethingThatIsPutBack)
{
    const std::vector<std::string> states = ExpectedStates(JetVersion::Jet4);
    // A run is killed when all pages of its second commit have been written but page 0, to which three operations
    // belong with all that comes after; the next open is stopped at each of its operations in turn.
    std::uint64_t operations = 0;
    {
        CrashFileSystem system(0);
        const auto connection = Connection::Create(kFile, JetVersion::Jet4, Existing::Refuse, system);
        kSteps[0](*connection);
        connection->Commit();
        kSteps[1](*connection);
        operations = system.Operations();
        connection->Commit();
        operations = system.Operations() - operations;
    }
    constexpr unsigned kRunsPerOperation = 16;
    bool isThrough = false;
    for (unsigned run = 0; !isThrough; ++run) {
        SCOPED_TRACE(run);
        CrashFileSystem system(run);
        auto connection = Connection::Create(kFile, JetVersion::Jet4, Existing::Refuse, system);
        kSteps[0](*connection);
        connection->Commit();
        const std::size_t size = system.Content(kFile).size();
        kSteps[1](*connection);
        system.StopAt(system.Operations() + operations - 2);
        EXPECT_THROW(connection->Commit(), Error);
        system.Crash(connection, Loss::Nothing);
        ASSERT_TRUE(system.Exists(kJournal));
        system.StopAt(system.Operations() + 1 + run / kRunsPerOperation);
        try {
            connection = Connection::Open(kFile, system);
            isThrough = true;
        } catch (const Error&) {
            EXPECT_TRUE(system.IsOff());
        }
        system.Crash(connection);
        EXPECT_EQ(Contents(*Connection::Open(kFile, system)), states[1]);
        EXPECT_EQ(system.Content(kFile).size(), size);
    }
}

// ---- Journals that are not what they should be ----------------------------------------------------------------------

/// A disk on which a run was killed in the midst of its second commit.
struct Interrupted {
    CrashFileSystem system{7};
    std::string committed;

    explicit Interrupted(JetVersion version)
    {
        auto connection = Connection::Create(kFile, version, Existing::Refuse, system);
        kSteps[0](*connection);
        connection->Commit();
        committed = Contents(*connection);
        kSteps[1](*connection);
        system.StopAt(system.Operations() + 9);
        EXPECT_THROW(connection->Commit(), Error);
        system.Crash(connection, Loss::Nothing);
        EXPECT_TRUE(system.Exists(kJournal));
    }
};

TEST(Journal, ASmallOneStaysUntilTheCloseAndCountsForNothing)
{
    CrashFileSystem system;
    auto connection = Connection::Create(kFile, JetVersion::Jet4, Existing::Refuse, system);
    kSteps[0](*connection);
    connection->Commit();
    EXPECT_FALSE(system.Exists(kJournal)) << "a new file needs none";
    AddRows(*connection, 8000, 200);
    connection->Commit();
    const Bytes small = system.Content(kJournal);
    EXPECT_TRUE(std::ranges::all_of(ByteSpan(small).first(512), [](Byte b) { return b == 0; }));
    connection->Execute("DELETE * FROM t"); // from pages of more than a megabyte
    connection->Commit();
    EXPECT_FALSE(system.Exists(kJournal));
    AddRows(*connection, 10, 10);
    connection->Commit();
    EXPECT_TRUE(system.Exists(kJournal));
    const std::string contents = Contents(*connection);
    connection.reset();
    EXPECT_EQ(system.Files(), std::vector<fs::path>{kFile});
    system.Crash(connection, Loss::All); // brings the file back, whose name nobody waits to be gone
    EXPECT_EQ(Contents(*Connection::Open(kFile, system)), contents);
    EXPECT_EQ(system.Files(), std::vector<fs::path>{kFile});
}

TEST(Journal, OneThatDoesNotFitIsRecognisedAndNothingIsLost)
{
    struct Case {
        const char* name;
        void (*change)(Bytes& journal); ///< empty afterwards: there is none
        const char* message;            ///< "" = the database opens, as at its last commit
    };
    const Case cases[] = {
        {"untouched", [](Bytes&) {}, ""},
        {"gone", [](Bytes& journal) { journal.clear(); }, "no journal of it"},
        {"damaged header", [](Bytes& journal) { journal[30] ^= 1; }, "is not its journal"},
        {"something else", [](Bytes& journal) { journal.assign(3000, 'x'); }, "is not its journal"},
        {"page 0 is damaged", [](Bytes& journal) { journal[600] ^= 1; }, "is damaged"},
        {"a last record that was cut off", [](Bytes& journal) { journal.resize(journal.size() + 1000, 1); }, ""},
    };
    for (const JetVersion version : kVersions)
        for (const Case& c : cases) {
            SCOPED_TRACE(c.name);
            Interrupted run(version);
            Bytes journal = run.system.Content(kJournal);
            c.change(journal);
            run.system.Remove(kJournal);
            if (!journal.empty())
                run.system.Put(kJournal, journal);
            const Bytes database = run.system.Content(kFile);
            EXPECT_EQ(ErrorOf([&] { static_cast<void>(Connection::OpenReadOnly(kFile, run.system)); }),
                      *c.message ? std::optional(ErrorNumber::NotADatabase) : std::nullopt);
            EXPECT_TRUE(run.system.Content(kFile) == database) << "the reader has touched it";
            const std::string error = MessageOf([&] { static_cast<void>(Connection::Open(kFile, run.system)); });
            EXPECT_EQ(error.empty(), *c.message == '\0') << error;
            EXPECT_NE(error.find(c.message), std::string::npos) << error;
            if (error.empty())
                EXPECT_EQ(Contents(*Connection::Open(kFile, run.system)), run.committed);
            else
                EXPECT_TRUE(run.system.Content(kFile) == database) << "the file was touched";
        }
}

TEST(Journal, OneThatIsNotNeededStandsInNobodysWay)
{
    const auto make = [](JetVersion version, Existing existing, CrashFileSystem& system) {
        const auto connection = Connection::Create(kFile, version, existing, system);
        kSteps[0](*connection);
        connection->Commit();
    };
    for (const std::string change : {"replaced", "removed", "made anew"}) {
        SCOPED_TRACE("the database was " + change);
        Interrupted run(JetVersion::Jet4);
        if (change == "replaced") {
            CrashFileSystem elsewhere;
            make(JetVersion::Jet3, Existing::Refuse, elsewhere);
            run.system.Put(kFile, elsewhere.Content(kFile));
        } else {
            if (change == "removed")
                run.system.Remove(kFile);
            make(JetVersion::Jet4, change == "removed" ? Existing::Refuse : Existing::Replace, run.system);
        }
        EXPECT_EQ(Contents(*Connection::Open(kFile, run.system)), run.committed);
        EXPECT_FALSE(run.system.Exists(kJournal));
        EXPECT_EQ(run.system.Exists(std::string(kJournal) + ".old"), change != "made anew") << "it may be of use";
    }
}

#ifndef _WIN32 // where a program is killed instead

// ---- A real process and a real disk ---------------------------------------------------------------------------------

/// Adds records and commits until it is killed; says after each commit how often it has.
[[noreturn]] void AddForEver(const fs::path& path, int report)
{
    const auto connection = Connection::Open(path);
    for (char commits = 1;; ++commits) {
        AddRows(*connection, 300, 150);
        connection->Execute("UPDATE t SET a = a");
        connection->Commit();
        if (::write(report, &commits, 1) != 1)
            ::_exit(1);
    }
}

TEST(Crash, AKilledProcessLeavesItsLastCommit)
{
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const TempFolder folder;
    const fs::path path = folder / kFile;
    {
        const auto connection = Connection::Create(path, JetVersion::Jet4);
        kSteps[0](*connection);
        connection->Commit();
    }
    std::size_t rows = 40;
    std::vector<fs::path> kept;
    for (int round = 0; round < 12; ++round) {
        int pipe[2];
        ASSERT_EQ(::pipe(pipe), 0);
        const pid_t child = ::fork();
        if (child == 0)
            AddForEver(path, pipe[1]);
        ::close(pipe[1]);
        char commits = 0;
        for (auto wanted = 1 + random() % 3; wanted > 0; --wanted)
            ASSERT_EQ(::read(pipe[0], &commits, 1), 1);
        for (auto looks = random() % 3000; looks > 0; --looks) // anywhere within the next one
            static_cast<void>(fs::exists(folder / kJournal));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        while (::read(pipe[0], &commits, 1) == 1)
            continue;
        ::close(pipe[0]);

        std::size_t count = 0;
        {
            const auto connection = Connection::Open(path);
            for (Recordset t = connection->OpenTable("t"); !t.Eof(); t.MoveNext())
                ++count;
        }
        const std::size_t reported = rows + 300u * static_cast<unsigned>(commits);
        EXPECT_TRUE(count == reported || count == reported + 300) << count << " rows, " << reported << " reported";
        rows = count;
        EXPECT_EQ(std::distance(fs::directory_iterator(folder.Path()), {}), 1 + round) << "something stayed behind";
        kept.push_back(folder / ("state" + std::to_string(round) + ".mdb"));
        fs::copy_file(path, kept.back());
    }
    EXPECT_TRUE(ExpectSound(kept));
}
#endif

} // namespace
} // namespace jet::testing
