#pragma once

#include "jet/base/error.h"
#include "jet/store/file_system.h"

#include <filesystem>
#include <memory>
#include <string_view>

namespace jet {

// What becomes of a database in which a run was interrupted, see docs/file-format/journal.md.

/// Puts `database`, the file at `path`, which has just been opened and locked, back to its last commit when a run that
/// was killed has left it in the midst of a write. A journal that is of no use is removed; one of another database is
/// set aside under another name. Throws NotADatabase when the database needs a journal that is not there or not whole,
/// and what ReadHeader throws; nothing has been changed then.
void Recover(FileSystem& system, const std::filesystem::path& path, File& database);

/// The same for one who only reads, and changes nothing on the disk: gives the file as it was at its last commit,
/// `database` itself when it is at rest. Throws as Recover().
[[nodiscard]] std::unique_ptr<File> AsCommitted(FileSystem& system, const std::filesystem::path& path,
                                                std::unique_ptr<File> database);

/// For a database that is no longer there, or is about to be thrown away: a journal of it is set aside.
void SetJournalAside(FileSystem& system, const std::filesystem::path& database);

/// NotADatabase: the database was left in the midst of a write and cannot be put back, for the reason `why`.
[[nodiscard]] Error Interrupted(const std::filesystem::path& database, std::string_view why);

} // namespace jet
