#pragma once

#include "jet/connection.h"
#include "plan/known_database.h"
#include "schema/database_view.h"
#include "schema/lock_retry.h"
#include "schema/origin.h"
#include "schema/recordset.h"
#include "schema/table_report.h"
#include "settings/job.h"

#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace velmora {

/// The one open database of a run: every statement, catalog query and recordset goes through it. The engine's failures
/// come out as RuntimeError.
class DatabaseSession {
public:
    DatabaseSession() = default;
    explicit DatabaseSession(LockSeam locks) : locks_(std::move(locks)) {}
    /// What is made, opened and written from now on is only tried out: it is gone in the end, and no file was touched.
    void BeginTrial() { trial_ = jet::MakeTrialFileSystem(); }
    /// How many threads may be at work on what is made and opened from now on.
    void SetThreads(int threads) { threads_ = threads; }
    DatabaseSession(const DatabaseSession&) = delete;
    DatabaseSession& operator=(const DatabaseSession&) = delete;

    /// Makes an empty database at `path`. It appears there with the first Commit(): until then an old one stays, so
    /// that there is a whole database at every moment.
    void Create(const std::filesystem::path& path, jet::JetVersion version, jet::Existing existing);
    void Open(const std::filesystem::path& path);
    /// For reading only: changes nothing at all, see jet::Connection::OpenReadOnly().
    void OpenReadOnly(const std::filesystem::path& path);
    [[nodiscard]] jet::JetVersion Version() const noexcept { return connection_->Version(); }
    [[nodiscard]] bool IsOpen() const noexcept { return connection_ != nullptr; }
    /// Which names the database takes. The rules are good as long as it is open.
    [[nodiscard]] NameRules Names() const;
    [[nodiscard]] bool IsAccess97() const noexcept { return connection_->Version() == jet::JetVersion::Jet3; }
    /// Drops what came after the last Commit(). Every recordset must be closed before.
    void Close() noexcept { connection_.reset(); }

    /// Closes it, and forgets what came after the last Commit(): to be opened again.
    void TakeBack();

    /// Runs one statement and leaves its failure to the caller.
    void ExecuteSql(std::string_view sql);
    /// Another number when the schema, or what the database knows of itself, may be another one.
    [[nodiscard]] std::uint64_t SchemaState() const noexcept { return schemaState_; }
    [[nodiscard]] jet::Rowset OpenSchema(jet::SchemaKind kind, const jet::Restrictions& restrictions);
    /// The names of all user tables, in the engine's order: no views, links or system tables.
    [[nodiscard]] std::vector<std::string> UserTables();
    [[nodiscard]] Recordset OpenTable(std::string_view table);
    /// What the database knows of the table and of its columns: nothing, unless SetOrigins() has told it.
    [[nodiscard]] Origins OriginsOf(std::string_view table);
    /// Lets the database know, all in one go, with descriptions for people. What is not named stays.
    void SetOrigins(std::string_view table, const Origins& origins);
    /// By position, the types of those columns of `records` that the program has chosen and that still have them; the
    /// others, `key` among them, count as texts.
    [[nodiscard]] std::vector<ColumnType> ChosenTypes(const Recordset& records, std::optional<std::size_t> key = {});
    void Commit();
    /// What it holds, for a person to look at.
    [[nodiscard]] DatabaseContents Contents();
    /// Of the file, what is not yet committed included.
    [[nodiscard]] std::uint64_t SizeBytes() const noexcept { return connection_->SizeBytes(); }
    /// What a file of its format can have.
    [[nodiscard]] std::uint64_t MaxSizeBytes() const noexcept { return connection_->MaxSizeBytes(); }
    /// Tables and relations that the file can still take.
    [[nodiscard]] std::size_t ObjectsLeft();

    [[nodiscard]] const LockSeam& Locks() const noexcept { return locks_; }

    /// Notes that `table` gets no relation in this run: a later file need not try again, at the cost of another look at
    /// all rows.
    void LeaveOutRelation(const std::string& table) { Note(leftOut_, table); }
    [[nodiscard]] bool IsRelationLeftOut(const std::string& table) const { return leftOut_.contains(table); }

    /// Notes that this run has made the relation `relation`.
    void NoteRelation(const std::string& relation) { Note(made_, relation); }
    [[nodiscard]] bool HasMadeRelation(const std::string& relation) const { return made_.contains(relation); }

    /// A protocol line that becomes true with the next Commit().
    void AnnounceWithCommit(std::string line) { announced_.push_back(std::move(line)); }
    /// The lines that have become true since the last question.
    [[nodiscard]] std::vector<std::string> TakeAnnouncements() { return std::exchange(becomeTrue_, {}); }

    /// The account of `table` for what is not yet committed; the names that the database takes for one table have one
    /// account. Valid until the next Commit().
    [[nodiscard]] TableReport& Report(const std::string& table);
    /// What was committed in each table, in order of first use.
    [[nodiscard]] std::vector<TableReport> Reports() const { return committed_; }

private:
    [[nodiscard]] jet::FileSystem& Files() const { return trial_ ? *trial_ : jet::RealFileSystem(); }
    /// The files of a trial are for one thread.
    [[nodiscard]] int Threads() const { return trial_ ? 1 : threads_; }

    LockSeam locks_;
    int threads_ = 1;
    std::unique_ptr<jet::FileSystem> trial_; ///< none: the real one
    std::unique_ptr<jet::Connection> connection_;
    /// Adds `name` to one of the sets below, until TakeBack().
    void Note(std::unordered_set<std::string>& names, const std::string& name)
    {
        if (names.insert(name).second)
            noted_.emplace_back(&names, name);
    }
    /// The name under which `table` stands in the database.
    [[nodiscard]] std::string OwnName(const std::string& table);

    std::uint64_t schemaState_ = 0;
    std::vector<TableReport> committed_;
    std::unordered_map<std::string, std::size_t> committedAt_; ///< positions, by table
    std::deque<TableReport> pending_;                          ///< since the last commit; they stay where they are
    std::unordered_map<std::string, TableReport*> pendingBy_;  ///< by table
    std::unordered_map<std::string, std::string> ownNames_;    ///< by spelling
    std::vector<std::string> announced_, becomeTrue_;
    std::unordered_set<std::string> leftOut_;                                     ///< tables
    std::unordered_set<std::string> made_;                                        ///< relations
    std::vector<std::pair<std::unordered_set<std::string>*, std::string>> noted_; ///< since the last commit
};

/// Opens the target database that the settings name: made anew, made because there is none, or as it is. A file that is
/// to be made anew and cannot be replaced is opened and loses all its tables instead. A run that may ask waits for one
/// that somebody else has open, as long as the user wants. `moveOn`, where any database of many would do, is asked
/// instead of that, and instead of a loss of tables: it says whether the settings name another one by now.
void velOpenDatabase(Job& job, DatabaseSession& session, const std::function<bool()>& moveOn = {});

/// Opens the target database as it is now, after TakeBack().
void velReopenDatabase(Job& job, DatabaseSession& session);

} // namespace velmora
