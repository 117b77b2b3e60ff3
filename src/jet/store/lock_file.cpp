#include "jet/store/lock_file.h"

#include "jet/base/error.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace jet {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t kUserLocks = 0x10000001;
constexpr std::uint64_t kMaxUsers = 255;
constexpr std::size_t kNameSize = 32;
constexpr std::size_t kEntrySize = 2 * kNameSize; ///< computer, then user, each ended by a zero
constexpr std::string_view kUser = "Admin";       ///< who everybody is unless the workgroup says otherwise

fs::path PathFor(const fs::path& database)
{
    fs::path path = database;
    path.replace_extension(".ldb");
    // A database whose own name ends so must not be its own lock file.
    return path == database ? path += ".ldb" : path;
}

std::string NameAt(ByteSpan entry, std::size_t at)
{
    const ByteSpan name = entry.subspan(at, kNameSize);
    return {name.begin(), std::ranges::find(name, Byte{0})};
}

/// Who holds one of the users' bytes, as its entry has it; empty when that is not known.
std::string DescribeUser(File& file)
{
    for (std::uint64_t user = 0; user < kMaxUsers; ++user) {
        // A byte that can be locked belongs to nobody; the locks taken here go when the file is closed.
        if (file.TryLock(kUserLocks + user, 1))
            continue;
        Bytes entry(kEntrySize);
        if (file.Size() < (user + 1) * kEntrySize)
            break;
        file.ReadAt(user * kEntrySize, entry);
        return "User '" + NameAt(entry, kNameSize) + "' on machine '" + NameAt(entry, 0) + "' has it open.";
    }
    return {};
}

Bytes OwnEntry(const std::string& computer)
{
    Bytes entry(kEntrySize);
    std::ranges::copy(computer.substr(0, kNameSize - 1), entry.begin());
    std::ranges::copy(kUser, entry.begin() + kNameSize);
    return entry;
}

} // namespace

LockFile::LockFile(FileSystem& system, const fs::path& database) : system_(system), path_(PathFor(database))
{
    try {
        file_ = system.Open(path_, system.Exists(path_) ? OpenMode::ReadWrite : OpenMode::CreateNew);
    } catch (const Error& error) {
        if (error.Number() == ErrorNumber::InvalidPath)
            throw Error(ErrorNumber::InvalidPath, {database.string()});
        if (error.Number() != ErrorNumber::ReadOnly)
            throw;
        throw Error(ErrorNumber::ReadOnly, {},
                    "('" + path_.string() +
                        "' cannot be written, but a lock file and a journal must stand beside the "
                        "database.)");
    }
    if (!file_->TryLock(kUserLocks, kMaxUsers))
        throw Error(ErrorNumber::FileInUse, {database.string()}, DescribeUser(*file_));
    try {
        file_->WriteAt(0, OwnEntry(system.ComputerName()));
    } catch (const Error&) {
        return; // the locks tell, the entry is for people
    }
}

LockFile::~LockFile()
{
    try {
        system_.Remove(path_);
    } catch (const Error&) {
        return; // without its locks it means nothing, and the next one takes it over
    }
}

void LockFile::CheckNoUsers(FileSystem& system, const fs::path& database)
{
    const fs::path path = PathFor(database);
    if (!system.Exists(path))
        return;
    const std::unique_ptr<File> file = system.Open(path, OpenMode::ReadOnly);
    if (!file->TryLock(kUserLocks, kMaxUsers))
        throw Error(ErrorNumber::FileInUse, {database.string()}, DescribeUser(*file));
}

bool LockFile::HasUsers(FileSystem& system, const fs::path& database)
{
    const fs::path path = PathFor(database);
    // For writing, though nothing is written: only then are the locks of readers in the way.
    return system.Exists(path) && !system.Open(path, OpenMode::ReadWrite)->TryLock(kUserLocks, kMaxUsers);
}

} // namespace jet
