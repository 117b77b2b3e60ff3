#pragma once

#include "source/source.h"
#include "xml/input_encoding.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Thrown where a document turns out to be none that can be parsed in segments: it has a DOCTYPE, say, or it is not
/// well-formed. One parser then tells what there is to tell.
struct NotInSegments {};

/// Some bytes of a document, from one place to cut it to the next.
struct Segment {
    [[nodiscard]] std::string_view Bytes() const noexcept { return {room.data(), length}; }

    std::vector<char> room; ///< is kept from segment to segment
    std::size_t length = 0;
    bool isFirst = false, isLast = false;
    std::int64_t bytesTaken = 0; ///< of the source, when this had been read
};

/// Reads a document in segments, each of which but the first begins with a tag: a parser can begin there that is told
/// what kind of place that is. The search for it is light, and right where the document is well-formed.
class SegmentCutter {
public:
    /// Opens the source. Throws SourceError; NotInSegments when it cannot be read twice, or its bytes are converted.
    SegmentCutter(const Source& source, std::size_t segmentBytes);

    [[nodiscard]] ParseAs As() const noexcept { return encoding_.parseAs; }
    /// The XML declaration; empty when there is none.
    [[nodiscard]] const std::string& Declaration() const noexcept { return declaration_; }

    /// Reads the next one; not behind the last one. Throws SourceError and NotInSegments.
    void Next(Segment& segment);
    /// Of the bytes read, see LoadResult.
    [[nodiscard]] std::size_t ControlBytes() const noexcept { return controlBytes_; }

private:
    void Read(Segment& segment, std::size_t bytes);

    std::unique_ptr<SourceStream> stream_;
    const std::size_t segmentBytes_;
    std::string rest_; ///< has been read, and belongs to the next segment
    const InputEncoding encoding_;
    std::string declaration_;
    std::size_t controlBytes_ = 0;
    bool hasBegun_ = false;
    bool hasEnded_ = false; ///< the source
};

} // namespace velmora
