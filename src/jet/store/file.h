#pragma once

#include "jet/base/bytes.h"

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
    [[nodiscard]] virtual std::uint64_t Size() = 0;
    virtual void Truncate(std::uint64_t size) = 0;
    /// Everything written is on the disk when this returns.
    virtual void Sync() = 0;
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

} // namespace jet
