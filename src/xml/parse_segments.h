#pragma once

#include "source/source.h"
#include "xml/document_builder.h"
#include "xml/document_part.h"
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

/// Parses a document in several threads, segment by segment. Each thread builds of a segment what can be built of it by
/// itself. The one that calls joins these parts in their order, and parses a segment while the next one is not ready.
class ParseSegments {
public:
    /// Opens nothing yet. `source` must outlive the object. `threads` is more than 1.
    ParseSegments(const Source& source, std::size_t segmentBytes, int threads);

    /// Brings all that is in the document to `builder`, and calls `onPiece` after each segment, with the bytes taken of
    /// the source; what that throws, and what `builder` throws, ends the parse. False when one parser has to begin from
    /// the beginning: the document is not to be cut, or there is something to say of it, or there is no thread.
    [[nodiscard]] bool Run(DocumentBuilder& builder, const std::function<void(std::int64_t)>& onPiece);
    /// See LoadResult.
    [[nodiscard]] std::size_t ControlBytes() const noexcept { return cutter_->ControlBytes(); }

private:
    /// A segment on its way.
    struct Place {
        Segment segment;
        std::unique_ptr<DocumentPart> part;
        bool isParsed = false;
    };
    /// What a thread parses with. All of it is made by the thread itself: memory that two threads write to by turns is
    /// slow where it is close together.
    struct Tools {
        SegmentParser parser;
        const Blanks blanks;
        std::unique_ptr<DocumentPart> part{};
    };
    using Lock = std::unique_lock<std::mutex>;

    void Work(Blanks blanks);
    void JoinAll(DocumentBuilder& builder, const std::function<void(std::int64_t)>& onPiece);
    [[nodiscard]] bool CanTake() const noexcept;
    [[nodiscard]] Place& Take(Lock& lock);
    [[nodiscard]] Tools MakeTools(Blanks blanks) const;
    void Parse(Place& place, Tools& tools, Lock& lock);
    void Stop() noexcept;

    const Source& source_;
    const std::size_t segmentBytes_;
    const int threads_;
    std::unique_ptr<SegmentCutter> cutter_;

    std::mutex mutex_; ///< for all that follows
    std::condition_variable changed_;
    std::vector<Place> places_; ///< of the n-th segment: n modulo their number
    std::size_t taken_ = 0;     ///< how many segments have been read, or are being read
    std::size_t joined_ = 0;
    bool isReading_ = false;
    bool hasEnded_ = false;  ///< the last one has been read
    bool isStopped_ = false; ///< nobody goes on
};

} // namespace velmora
