#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

namespace velmora {

class PackedReader;

/// As a source's text: the document comes on standard input.
inline constexpr const char* kStandardInput = "-";

/// What a source unpacks to is taken for a bomb beyond this, unless another limit is named.
inline constexpr std::int64_t kUsualUnpackLimitBytes = std::int64_t{64'000} * 1'000'000;

/// One document of a run: where its bytes are.
struct Source {
    Source() = default;
    /// A file with nothing special about it.
    Source(std::string file) : path(std::move(file)) {}

    std::string path;         ///< of the file; kStandardInput
    std::string member;       ///< of the archive at `path`; empty when the file is none
    std::size_t entry = 0;    ///< its number in the archive
    std::string problem;      ///< known before it is opened: why it cannot be read
    bool isLastOfFile = true; ///< nothing else of the file at `path` comes after it, which may be renamed then
    std::string encoding;     ///< of its text, whatever it declares; empty: what it declares
    std::string only;         ///< paths of the elements to take, by ";"; empty: all of it
    std::int64_t unpackLimitBytes = kUsualUnpackLimitBytes;
    std::shared_ptr<PackedReader> archive; ///< shared by all members, which are read in their order

    [[nodiscard]] bool IsStandardInput() const { return path == kStandardInput; }
    /// For messages.
    [[nodiscard]] std::string Name() const;
    /// The same, to be read apart from the members that share its archive.
    [[nodiscard]] Source Apart() const;
};

/// A source that cannot be read, in words that fit behind its name.
class SourceError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The bytes of a source, unpacked.
class SourceStream {
public:
    SourceStream() = default;
    virtual ~SourceStream() = default;
    SourceStream(const SourceStream&) = delete;
    SourceStream& operator=(const SourceStream&) = delete;

    /// Gives `bytes` bytes, fewer only at the end. Throws SourceError.
    [[nodiscard]] virtual std::size_t Read(char* buffer, std::size_t bytes) = 0;
    /// Bytes read so far of the file, packed as it is.
    [[nodiscard]] virtual std::int64_t BytesTaken() const = 0;
};

/// Recognises packed forms by what they hold. Nothing is ever unpacked onto the disk. Throws SourceError.
[[nodiscard]] std::unique_ptr<SourceStream> OpenSource(const Source& source);

/// Size of the file; 0 when it is not known.
[[nodiscard]] std::int64_t BytesOf(const Source& source);

} // namespace velmora
