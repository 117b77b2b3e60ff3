#pragma once

#include "source/unpack_guard.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace velmora {

inline constexpr const char* kNestedArchive = "something packed inside of something packed is not read";

/// One file of an archive.
struct ArchiveEntry {
    std::string name;
    bool isProtected = false;
};

/// Reads what is packed, forwards and a piece at a time: files of gzip, bzip2, xz and zstd, and .zip archives. Where
/// the program is built without the library for it, what is not packed at all comes through, and the rest is refused.
class PackedReader {
public:
    enum class As { Stream, Archive };

    /// Opens nothing yet. Without a `path` it is standard input, which may be packed or not.
    PackedReader(std::string path, As as, std::int64_t unpackLimitBytes);
    ~PackedReader();
    PackedReader(const PackedReader&) = delete;
    PackedReader& operator=(const PackedReader&) = delete;

    /// All entries of an archive, folders too; afterwards the reader stands at its beginning. Throws SourceError.
    [[nodiscard]] std::vector<ArchiveEntry> List();
    /// The next Read begins with the entry of this number; a stream has number 0 only. Quick in the order of the
    /// archive. Throws SourceError.
    void GoTo(std::size_t entry);
    /// Up to `bytes` bytes; 0 at the end of the entry. Throws SourceError, for what grows too large as well.
    [[nodiscard]] std::size_t Read(char* buffer, std::size_t bytes);
    /// Bytes taken of the file so far.
    [[nodiscard]] std::int64_t PackedBytes() const;
    /// Whether what is read was packed; known once it is open.
    [[nodiscard]] bool IsPacked() const;
    void Close();

private:
    struct Handle;

    void Open();

    const std::string path_;
    const As as_;
    UnpackGuard guard_;
    std::unique_ptr<Handle> handle_; ///< none: not open
};

} // namespace velmora
