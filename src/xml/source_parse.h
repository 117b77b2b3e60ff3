#pragma once

#include "platform/utf8_converter.h"
#include "source/source.h"
#include "xml/document_events.h"
#include "xml/document_parser.h"
#include "xml/input_encoding.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace velmora {

/// A source on its way through the parser, a chunk at a time, in the form that the parser takes.
class SourceParse {
public:
    /// Opens the source; `events` is told of what is in it. Throws SourceError.
    SourceParse(const Source& source, DocumentEvents& events);

    /// Parses the next chunk. False when it was the last one, or there is a problem. Throws SourceError, and what
    /// `events` throws.
    [[nodiscard]] bool Next();
    /// Of the source, so far.
    [[nodiscard]] std::int64_t BytesTaken() const { return stream_->BytesTaken(); }
    /// Why the document ends here, when it should not; empty when it is whole. `openTag` is the innermost element that
    /// is open there; empty when none is.
    [[nodiscard]] std::string Problem(std::string_view openTag) const;
    /// What there is to be known at the end; all but the document.
    [[nodiscard]] LoadResult Result() const;

private:
    [[nodiscard]] bool GiveHead();
    [[nodiscard]] bool GiveChunk();
    [[nodiscard]] bool Finish();
    [[nodiscard]] bool GiveConverted(std::string_view bytes);
    [[nodiscard]] bool SetBadBytes(const char* what);
    [[nodiscard]] std::size_t Read(void* buffer, std::size_t bytes);

    static constexpr std::size_t kUsualChunkBytes = std::size_t{128} * 1024;
    static constexpr std::size_t kMaxChunkBytes = std::size_t{64} << 20;

    std::unique_ptr<SourceStream> stream_;
    const std::string head_; ///< has been read to know the encoding
    const InputEncoding encoding_;
    DocumentParser parser_;
    std::unique_ptr<Utf8Converter> converter_; ///< none: the parser gets the file's own bytes
    std::size_t controlBytes_ = 0;             ///< see LoadResult
    std::string raw_, text_;
    std::size_t line_ = 1;
    std::size_t chunkBytes_ = kUsualChunkBytes;
    std::string problem_; ///< which the parser does not know
    bool hasBegun_ = false;
    bool hasEnded_ = false; ///< the source
    bool isWhole_ = false;
};

} // namespace velmora
