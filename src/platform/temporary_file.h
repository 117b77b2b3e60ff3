#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <new>
#include <span>

namespace velmora {

/// A file for bytes that need no name: gone with this object, and with the process. What a test puts in its place can
/// be full, or fail.
class TemporaryFile {
public:
    virtual ~TemporaryFile() = default;

    /// Makes the file at least `bytes` long. The room is taken, not only promised: what is written
    /// through a mapping meets no full disk then. False when the disk has not got it.
    [[nodiscard]] virtual bool Extend(std::size_t bytes) = 0;
    /// Writes `bytes` at `position`. False when the disk fails.
    [[nodiscard]] virtual bool Write(std::size_t position, std::span<const std::byte> bytes) = 0;
    /// Maps the first `bytes` of it into memory, shared with the file. nullptr when that is not to be had.
    [[nodiscard]] virtual void* Map(std::size_t bytes) = 0;
};

/// The disk of a temporary file has no room, or fails, while it stands for memory.
class TemporaryFileFull : public std::bad_alloc {
public:
    [[nodiscard]] const char* what() const noexcept override
    {
        return "Out of memory: the disk of the temporary file is full; TMPDIR (on Windows TMP) can name another folder";
    }
};

using TemporaryFileMaker = std::function<std::unique_ptr<TemporaryFile>()>;

/// A new file in the folder that TMPDIR names, or else in /var/tmp, or in /tmp, which often is memory itself; on
/// Windows in the folder that TMP names, or TEMP. nullptr when none of them takes it.
[[nodiscard]] std::unique_ptr<TemporaryFile> MakeTemporaryFile();

} // namespace velmora
