#include "xml/parse_segments.h"

#include "platform/at_end.h"
#include "platform/worker.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace velmora {

namespace {

/// Each has two segments on their way, which take memory, and reads and joins when no other one does.
constexpr int kMostThreads = 6;

/// Brings segments to a builder in their order, and sees that they fit together.
class Joint {
public:
    Joint(DocumentBuilder& builder, SegmentParser& parser) : builder_(builder), parser_(parser) {}

    /// `join` is given the builder, and whom to tell of outer ends.
    template <class Join>
    void Add(const Segment& segment, Join&& join)
    {
        join(builder_,
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
            workers.push_back(Worker::Start([this, blanks = builder.BlanksRule()] { Work(blanks); }));
        if (!workers.front())
            return false;
        JoinAll(builder, onPiece);
        return true;
    } catch (const NotInSegments&) {
        return false;
    } catch (const SourceError&) {
        return false;
    }
}

ParseSegments::Tools ParseSegments::MakeTools(Blanks blanks) const
{
    return {SegmentParser(cutter_->As(), cutter_->Declaration()), blanks};
}

void ParseSegments::Work(Blanks blanks)
{
    try {
        Tools tools = MakeTools(blanks);
        for (Lock lock(mutex_);;) {
            changed_.wait(lock, [this] { return isStopped_ || hasEnded_ || CanTake(); });
            if (isStopped_ || hasEnded_)
                return;
            Parse(Take(lock), tools, lock);
        }
    } catch (...) {
        Stop();
        throw;
    }
}

void ParseSegments::JoinAll(DocumentBuilder& builder, const std::function<void(std::int64_t)>& onPiece)
{
    Tools tools = MakeTools(builder.BlanksRule());
    Joint joint(builder, tools.parser);
    Lock lock(mutex_);
    const auto add = [&](Place& place, auto&& join) {
        lock.unlock();
        joint.Add(place.segment, join);
        onPiece(place.segment.bytesTaken);
        lock.lock();
        place.isParsed = false;
        ++joined_;
        changed_.notify_all();
    };
    // What is ahead of it has been joined: there is no need to build it by itself.
    const auto addAsParsed = [&](Place& place) {
        add(place, [&](DocumentBuilder& whole, const auto& onOuterEnd) {
            tools.parser.Parse(place.segment, whole, onOuterEnd);
        });
    };
    addAsParsed(places_.front());
    while (!isStopped_ && !(hasEnded_ && joined_ == taken_)) {
        Place& next = places_[joined_ % places_.size()];
        if (next.isParsed) {
            add(next, [&](DocumentBuilder& whole, const auto& onOuterEnd) { next.part->JoinTo(whole, onOuterEnd); });
        } else if (CanTake()) {
            Place& place = Take(lock);
            if (&place == &next)
                addAsParsed(place);
            else
                Parse(place, tools, lock);
        } else {
            changed_.wait(lock);
        }
    }
    if (isStopped_)
        throw NotInSegments();
}

bool ParseSegments::CanTake() const noexcept
{
    return !isReading_ && !hasEnded_ && taken_ - joined_ < places_.size();
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

/// Parses what has been read, to be joined later on.
void ParseSegments::Parse(Place& place, Tools& tools, Lock& lock)
{
    lock.unlock();
    std::unique_ptr<DocumentPart>& part = tools.part;
    if (part)
        part->Clear();
    else
        part = std::make_unique<DocumentPart>(tools.blanks);
    tools.parser.Parse(place.segment, part->Builder(), [&](std::string_view tag, std::size_t behind) {
        part->EndOuter(tag, behind);
        return true;
    });
    lock.lock();
    place.part.swap(part);
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
