#pragma once

#include "source/source.h"
#include "xml/document_builder.h"
#include "xml/segment_batch.h"
#include "xml/segment_cutter.h"
#include "xml/segment_parser.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace velmora {

/// Parses a document in several threads, segment by segment. The one that builds from it takes part: it tells the
/// builder of the segments in their order, and parses one while the next to be told is not ready.
class ParseSegments {
public:
    /// Opens nothing yet. `source` must outlive the object. `threads` is more than 1.
    ParseSegments(const Source& source, std::size_t segmentBytes, int threads);

    /// Tells `builder` of all that is in the document, and calls `onPiece` after each segment, with the bytes taken of
    /// the source; what that throws, and what `builder` throws, ends the parse. False when one parser has to begin from
    /// the beginning: the document is not to be cut, or there is something to say of it, or there is no thread.
    [[nodiscard]] bool Run(DocumentBuilder& builder, const std::function<void(std::int64_t)>& onPiece);
    /// See LoadResult.
    [[nodiscard]] std::size_t ControlBytes() const noexcept { return cutter_->ControlBytes(); }

private:
    /// A segment on its way.
    struct Place {
        Segment segment;
        SegmentBatch batch;
        bool isParsed = false;
    };
    using Lock = std::unique_lock<std::mutex>;

    void Work();
    void TellAll(DocumentBuilder& builder, const std::function<void(std::int64_t)>& onPiece);
    [[nodiscard]] bool CanTake() const noexcept;
    [[nodiscard]] Place& Take(Lock& lock);
    void Parse(Place& place, SegmentParser& parser, SegmentBatch& batch, Lock& lock);
    void Stop() noexcept;

    const Source& source_;
    const std::size_t segmentBytes_;
    const int threads_;
    std::unique_ptr<SegmentCutter> cutter_;

    std::mutex mutex_; ///< for all that follows
    std::condition_variable changed_;
    std::vector<Place> places_; ///< of the n-th segment: n modulo their number
    std::size_t taken_ = 0;     ///< how many segments have been read, or are being read
    std::size_t told_ = 0;
    bool isReading_ = false;
    bool hasEnded_ = false;  ///< the last one has been read
    bool isStopped_ = false; ///< nobody goes on
};

} // namespace velmora
