#pragma once

#include "jet/base/error.h"
#include "jet/base/format.h"
#include "jet/base/rowset.h"
#include "jet/base/value.h"
#include "jet/recordset.h"
#include "jet/store/file_system.h"

#include <filesystem>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace jet {

/// What to do with a file that stands where a new database is to be.
enum class Existing { Refuse, Replace };

/// The real file system, over which what is written lies unseen and is gone in the end: a connection by it tries out
/// what would become of a database.
[[nodiscard]] std::unique_ptr<FileSystem> MakeTrialFileSystem();

/// One open database, which nobody else can open meanwhile. Everything done since the last Commit() is one unit: after
/// a crash the next Open() finds the database as at that commit. Destroying the connection without Commit() drops what
/// came after the last one. A statement, or a change of a record, that fails for whatever reason has changed nothing,
/// and the connection can be used further. When a commit fails, or a disk error prevents that something is taken back,
/// all that is left is to go back to the last commit: whatever would change something repeats that error. A path that
/// is a symbolic link means the file that it points at. For one thread's calls.
class Connection {
public:
    /// Makes an empty database. It is written under another name beside `path` and takes its place at the first
    /// Commit(), so that a kill leaves no half-written one. Throws DatabaseExists when `path` exists, InvalidPath,
    /// ReadOnly, FileInUse. With Existing::Replace the file that stands there stays until that commit and is then
    /// replaced in one step; nobody can open it meanwhile. With more than one of `threads` the connection has one of
    /// its own that writes pages while its user goes on.
    [[nodiscard]] static std::unique_ptr<Connection> Create(const std::filesystem::path& path, JetVersion version,
                                                            Existing existing = Existing::Refuse,
                                                            FileSystem& system = RealFileSystem(), int threads = 1);
    /// Can the file at `path` be replaced: is it an ordinary one that may be written, does its folder allow it, and has
    /// nobody else it open, as a database or otherwise? Changes nothing.
    [[nodiscard]] static bool CanReplace(const std::filesystem::path& path, FileSystem& system = RealFileSystem());
    /// Has somebody the database at `path` open, or makes one there, which need not stand in its place yet? Changes
    /// nothing.
    [[nodiscard]] static bool IsInUse(const std::filesystem::path& path, FileSystem& system = RealFileSystem());
    /// Does the file at `path` look like a database of Access 97 to 2003, be it damaged, encoded or locked by a
    /// password? True also when it cannot be read: that is for Open() to say. Changes nothing.
    [[nodiscard]] static bool IsDatabase(const std::filesystem::path& path, FileSystem& system = RealFileSystem());
    /// Throws FileNotFound, InvalidPath, NotADatabase, UnrecognizedFormat, NotAValidPassword, ReadOnly (also when no
    /// file can be made beside it), FileInUse. What is refused is left as it is. `threads` as above.
    [[nodiscard]] static std::unique_ptr<Connection> Open(const std::filesystem::path& path,
                                                          FileSystem& system = RealFileSystem(), int threads = 1);
    /// For reading only, beside others who only read: the file and what stands beside it stay as they are. Whatever a
    /// killed run has left behind is read as at the last commit, not put back. Statements and changes of records throw
    /// ReadOnly. Throws FileNotFound, InvalidPath, NotADatabase, UnrecognizedFormat, NotAValidPassword, and FileInUse
    /// as long as somebody has it open for writing.
    [[nodiscard]] static std::unique_ptr<Connection> OpenReadOnly(const std::filesystem::path& path,
                                                                  FileSystem& system = RealFileSystem());
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Runs one statement: CREATE TABLE, CREATE [UNIQUE] INDEX ... [WITH PRIMARY], ALTER TABLE (ADD COLUMN, DROP
    /// COLUMN, ALTER COLUMN, ADD CONSTRAINT ... FOREIGN KEY, DROP CONSTRAINT), DROP TABLE, DROP INDEX, DELETE * FROM,
    /// UPDATE t SET a = b. ALTER COLUMN makes texts longer in their places, or memos, which stand last, several in one
    /// go (ALTER TABLE t ALTER COLUMN a LONGTEXT, b TEXT(255)); numbers, dates and booleans it makes texts, in their
    /// places ("1.5", "2024-03-05T14:07:09", "true"; of a column that Access shows as times "14:07:09"). What else the
    /// columns have stays.
    void Execute(std::string_view sql);
    [[nodiscard]] Rowset OpenSchema(SchemaKind kind, const Restrictions& restrictions = {});
    /// Throws TableNotFound.
    [[nodiscard]] Recordset OpenTable(std::string_view table);

    /// The properties of `table` and of its columns that hold text, as they are stored. Throws TableNotFound.
    [[nodiscard]] std::vector<Property> Properties(std::string_view table);
    /// Adds properties to `table` and its columns, or changes them, all at once: each call writes anew what the table
    /// has. Those that the engine itself goes by (Required, DefaultValue and so on) are made by statements. Throws
    /// NoSuchTable, ReadOnly, NoSuchField, and SizeTooLong for a value of more than about 32,000 characters.
    void SetProperties(std::string_view table, std::span<const Property> properties);

    void Commit();

    [[nodiscard]] JetVersion Version() const noexcept;
    /// What two names have in common exactly when the database takes them for the same.
    [[nodiscard]] std::string NameKey(std::string_view name) const;
    /// The name next to `name` that tables, columns, indexes and relations can have: other characters become "_", and
    /// what is longer than `maxUnits` characters (UTF-16 code units, at most 64) is cut.
    [[nodiscard]] std::string ValidName(std::string_view name, std::size_t maxUnits) const;
    /// Of the file, what is not yet committed included.
    [[nodiscard]] std::uint64_t SizeBytes() const noexcept;
    /// What a database of its format can have at most: 2 GB, or 1 GB.
    [[nodiscard]] std::uint64_t MaxSizeBytes() const noexcept;
    /// Tables, queries and relations that can still be made before the format's limit of objects is reached.
    [[nodiscard]] std::size_t ObjectsLeft();

private:
    friend class Recordset;
    class Impl;
    explicit Connection(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> impl_;
};

} // namespace jet
