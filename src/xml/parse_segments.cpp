#include "xml/parse_segments.h"

#include "platform/at_end.h"
#include "platform/worker.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace velmora {

namespace {

/// Building, which is one thread's work, takes about half as long as parsing: more would have to wait for it.
constexpr int kMostThreads = 6;

/// Tells a builder of segments in their order, and sees that they fit together.
class Joint {
public:
    Joint(DocumentBuilder& builder, SegmentParser& parser) : builder_(builder), parser_(parser) {}

    /// `tell` is given the builder, and whom to tell of outer ends.
    template <class Tell>
    void Add(const Segment& segment, Tell&& tell)
    {
        tell(builder_,
             [&](std::string_view tag, std::size_t behind) { return EndOuter(tag, segment.Bytes().substr(behind)); });
        // Only the last segment has the document's end in it, and the first all that is ahead of its element.
        if (builder_.OpenTag().empty() != segment.isLast)
            throw NotInSegments();
    }

private:
    [[nodiscard]] bool EndOuter(std::string_view tag, std::string_view bytesBehind)
    {
        if (builder_.OpenTag() != tag)
            throw NotInSegments();
        builder_.EndElement();
        const bool isDocumentsEnd = builder_.OpenTag().empty();
        if (isDocumentsEnd && !parser_.IsEpilog(bytesBehind))
            throw NotInSegments();
        return !isDocumentsEnd;
    }

    DocumentBuilder& builder_;
    SegmentParser& parser_;
};

} // namespace

ParseSegments::ParseSegments(const Source& source, std::size_t segmentBytes, int threads)
    : source_(source), segmentBytes_(segmentBytes), threads_(std::min(threads, kMostThreads)),
      places_(2 * static_cast<std::size_t>(threads_))
{
}

bool ParseSegments::Run(DocumentBuilder& builder, const std::function<void(std::int64_t)>& onPiece)
{
    try {
        cutter_ = std::make_unique<SegmentCutter>(source_, segmentBytes_);
        Lock lock(mutex_);
        if (Take(lock).segment.isLast)
            return false;
        lock.unlock();
        std::vector<std::unique_ptr<Worker>> workers; // their ends are waited for behind Stop()
        const AtEnd stop([this] { Stop(); });
        for (int i = 1; i < threads_; ++i)
            workers.push_back(Worker::Start([this] { Work(); }));
        if (!workers.front())
            return false;
        TellAll(builder, onPiece);
        return true;
    } catch (const NotInSegments&) {
        return false;
    } catch (const SourceError&) {
        return false;
    }
}

/// All that a parser uses is made by the thread that it works for: memory that two threads write to by turns is slow
/// where it is close together.
void ParseSegments::Work()
{
    try {
        SegmentParser parser(cutter_->As(), cutter_->Declaration());
        SegmentBatch batch;
        for (Lock lock(mutex_);;) {
            changed_.wait(lock, [this] { return isStopped_ || hasEnded_ || CanTake(); });
            if (isStopped_ || hasEnded_)
                return;
            Parse(Take(lock), parser, batch, lock);
        }
    } catch (...) {
        Stop();
        throw;
    }
}

void ParseSegments::TellAll(DocumentBuilder& builder, const std::function<void(std::int64_t)>& onPiece)
{
    SegmentParser parser(cutter_->As(), cutter_->Declaration());
    SegmentBatch batch;
    Joint joint(builder, parser);
    Lock lock(mutex_);
    const auto add = [&](Place& place, auto&& tell) {
        lock.unlock();
        joint.Add(place.segment, tell);
        onPiece(place.segment.bytesTaken);
        lock.lock();
        place.isParsed = false;
        ++told_;
        changed_.notify_all();
    };
    const auto addAsParsed = [&](Place& place) {
        add(place,
            [&](DocumentEvents& events, const auto& onOuterEnd) { parser.Parse(place.segment, events, onOuterEnd); });
    };
    addAsParsed(places_.front());
    while (!isStopped_ && !(hasEnded_ && told_ == taken_)) {
        Place& next = places_[told_ % places_.size()];
        if (next.isParsed) {
            add(next, [&](DocumentEvents& events, const auto& onOuterEnd) { next.batch.Tell(events, onOuterEnd); });
        } else if (CanTake()) {
            Place& place = Take(lock);
            if (&place == &next)
                addAsParsed(place);
            else
                Parse(place, parser, batch, lock);
        } else {
            changed_.wait(lock);
        }
    }
    if (isStopped_)
        throw NotInSegments();
}

bool ParseSegments::CanTake() const noexcept
{
    return !isReading_ && !hasEnded_ && taken_ - told_ < places_.size();
}

/// Reads the next segment.
ParseSegments::Place& ParseSegments::Take(Lock& lock)
{
    Place& place = places_[taken_++ % places_.size()];
    isReading_ = true;
    lock.unlock();
    cutter_->Next(place.segment);
    lock.lock();
    isReading_ = false;
    hasEnded_ = place.segment.isLast;
    changed_.notify_all();
    return place;
}

/// Parses what has been read, to be told later on. `batch` is the thread's own.
void ParseSegments::Parse(Place& place, SegmentParser& parser, SegmentBatch& batch, Lock& lock)
{
    lock.unlock();
    batch.Clear();
    parser.Parse(place.segment, batch, [&](std::string_view tag, std::size_t behind) {
        batch.AddOuterEnd(tag, behind);
        return true;
    });
    lock.lock();
    std::swap(place.batch, batch);
    place.isParsed = true;
    changed_.notify_all();
}

void ParseSegments::Stop() noexcept
{
    {
        const std::lock_guard lock(mutex_);
        isStopped_ = true;
    }
    changed_.notify_all();
}

} // namespace velmora
