#pragma once

#include "jet/store/file_system.h"

#include <filesystem>
#include <memory>

namespace jet {

/// The lock file beside a database (extension .ldb), in which every user of a shared database has an entry of 64 bytes
/// and a lock on the byte 0x10000001 + number of the entry, far behind the file's end. Only the locks tell who is
/// there: entries stay behind. We hold the bytes of all 255 users, so that Access finds no place and stays out; a file
/// that was left behind is taken over. Removed at the end. Source: published descriptions of Access's locking.
class LockFile {
public:
    /// Throws FileInUse when somebody has the database at `database` open, ReadOnly when no file can be made beside it.
    LockFile(FileSystem& system, const std::filesystem::path& database);
    ~LockFile();
    LockFile(const LockFile&) = delete;
    LockFile& operator=(const LockFile&) = delete;

    /// Does somebody have the database open? Makes nothing. Throws Error when that cannot be told.
    [[nodiscard]] static bool HasUsers(FileSystem& system, const std::filesystem::path& database);
    /// For one who only reads, and locks nothing in it: throws FileInUse, with the name of the user, when somebody has
    /// the database open for writing.
    static void CheckNoUsers(FileSystem& system, const std::filesystem::path& database);

private:
    FileSystem& system_;
    std::filesystem::path path_;
    std::unique_ptr<File> file_;
};

} // namespace jet
