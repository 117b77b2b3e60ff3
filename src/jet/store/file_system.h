#pragma once

#include "jet/base/bytes.h"
#include "jet/base/value.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace jet {

/// One open file. Opened by a FileSystem; tests put a failing one in its place.
class File {
public:
    virtual ~File() = default;

    /// Fills `out` from byte `offset`; throws Error (DiskError) when the file ends before.
    virtual void ReadAt(std::uint64_t offset, MutableBytes out) = 0;
    /// Throws Error: DiskFull or DiskError.
    virtual void WriteAt(std::uint64_t offset, ByteSpan bytes) = 0;
    /// The same, but perhaps not at once: what fails then is thrown by a later call. Takes `bytes`, and leaves others
    /// in their place, whose memory may be used again.
    virtual void WriteLater(std::uint64_t offset, Bytes& bytes) { WriteAt(offset, bytes); }
    /// What WriteLater() was given for the bytes from `offset` on need not be written any more.
    virtual void Forget(std::uint64_t offset) noexcept { static_cast<void>(offset); }
    [[nodiscard]] virtual std::uint64_t Size() = 0;
    virtual void Truncate(std::uint64_t size) = 0;
    /// Everything written is on the disk when this returns.
    virtual void Sync() = 0;
    /// A hint: what was written there may go to the disk now, while nobody waits for it.
    virtual void BeginToWrite(std::uint64_t offset, std::uint64_t size)
    {
        static_cast<void>(offset);
        static_cast<void>(size);
    }
    /// Locks `size` bytes from `offset` on, which may lie behind the file's end, until the file is closed: for writing,
    /// or for reading when the file was opened for reading only. False when somebody else, this process included, has
    /// locked one of them; true also where the file system knows no locks.
    [[nodiscard]] virtual bool TryLock(std::uint64_t offset, std::uint64_t size)
    {
        static_cast<void>(offset);
        static_cast<void>(size);
        return true;
    }
    /// What messages call the file.
    [[nodiscard]] virtual std::string Name() const { return "database"; }
};

/// As the size in TryLock: all bytes from the offset on, wherever the file ends.
inline constexpr std::uint64_t kToTheEnd = 0;

enum class OpenMode {
    ReadOnly,
    ReadWrite,
    CreateNew, ///< fails when the file exists
};

/// Opens a real file and keeps it locked against others, this process included, until it is closed. Throws Error:
/// FileNotFound, DatabaseExists, ReadOnly, InvalidPath, FileInUse, DiskFull, DiskError.
[[nodiscard]] std::unique_ptr<File> OpenFile(const std::filesystem::path& path, OpenMode mode);

/// The seam to the operating system: all that the engine asks of it. Failures are thrown as Error (DiskFull, DiskError
/// and what a function names). A new, renamed or removed entry of a folder outlives a power failure once SyncFolder has
/// returned, the content of a file once its Sync has.
class FileSystem {
public:
    virtual ~FileSystem() = default;

    /// Opens an ordinary file, without locking it. Throws Error: FileNotFound, DatabaseExists, ReadOnly, InvalidPath.
    [[nodiscard]] virtual std::unique_ptr<File> Open(const std::filesystem::path& path, OpenMode mode) = 0;
    /// Is there anything of that name?
    [[nodiscard]] virtual bool Exists(const std::filesystem::path& path) = 0;
    /// Throws Error also when there is no such file.
    virtual void Remove(const std::filesystem::path& path) = 0;
    /// In one step, in place of what may stand at `to`.
    virtual void Rename(const std::filesystem::path& from, const std::filesystem::path& to) = 0;
    /// Entries of the folder in which `file` stands, or stood, are on the disk when this returns.
    virtual void SyncFolder(const std::filesystem::path& file) = 0;
    /// Gives `to` the rights of `from`, as far as that is allowed.
    virtual void CopyRights(const std::filesystem::path& from, const std::filesystem::path& to) = 0;
    /// The file that `path` means: what a symbolic link points at, even when it is not there yet; else `path` itself.
    [[nodiscard]] virtual std::filesystem::path Resolve(const std::filesystem::path& path) = 0;
    /// Do the folder's rights allow to make `file`, which is not there?
    [[nodiscard]] virtual bool MayMake(const std::filesystem::path& file)
    {
        static_cast<void>(file);
        return true;
    }
    /// Do the folder's rights allow to remove `file`, and to put another one in its place?
    [[nodiscard]] virtual bool MayReplace(const std::filesystem::path& file) = 0;
    /// An empty file that nobody else can see and that is gone when it is closed, for reading and writing.
    [[nodiscard]] virtual std::unique_ptr<File> OpenTemporary() = 0;
    /// The date and the time of day at this computer's place.
    [[nodiscard]] virtual DateTime LocalTime();
    /// Fills `out` with bytes that nobody can foretell.
    virtual void FillRandom(MutableBytes out);
    /// What other users are told this computer is called; may be empty.
    [[nodiscard]] virtual std::string ComputerName() { return {}; }
};

/// The operating system's own. Has no state.
[[nodiscard]] FileSystem& RealFileSystem() noexcept;

/// Locks the whole of `file` against others until it is closed. Throws FileInUse.
void LockWhole(File& file);

} // namespace jet
