#include "xml/segment_cutter.h"

#include <algorithm>
#include <utility>

namespace velmora {

namespace {

constexpr std::size_t kNone = std::string_view::npos;
/// A document whose tags are farther apart had better be parsed as it comes.
constexpr std::size_t kMaxSegmentBytes = std::size_t{4} << 20;

/// Finds "<" with a certain character behind it. What it has found may be asked for again.
class MarkupSearch {
public:
    MarkupSearch(std::string_view bytes, char second) : bytes_(bytes), second_(second), next_(Find(0)) {}

    /// The first one at `from` or behind it, which is not before that of the last call; kNone when there is none.
    [[nodiscard]] std::size_t Next(std::size_t from)
    {
        if (next_ < from)
            next_ = Find(from);
        return next_;
    }

private:
    [[nodiscard]] std::size_t Find(std::size_t from) const
    {
        std::size_t at = from;
        do
            at = bytes_.find(second_, at + 1);
        while (at != kNone && bytes_[at - 1] != '<');
        return at == kNone ? kNone : at - 1;
    }

    std::string_view bytes_;
    char second_;
    std::size_t next_;
};

/// Behind the comment, CDATA section or processing instruction that begins at `at`; kNone when its end has not been
/// read.
std::size_t EndOfMarkup(std::string_view bytes, std::size_t at)
{
    struct Kind {
        std::string_view begin, end;
    };
    constexpr Kind kKinds[] = {{"<?", "?>"}, {"<!--", "-->"}, {"<![CDATA[", "]]>"}};
    for (const auto& [begin, end] : kKinds) {
        const std::string_view here = bytes.substr(at, begin.size());
        if (here == begin) {
            const std::size_t found = bytes.find(end, at + begin.size());
            return found == kNone ? kNone : found + end.size();
        }
        if (begin.starts_with(here))
            return kNone;
    }
    throw NotInSegments(); // a DOCTYPE
}

/// The last tag that begins in the bytes from `from` to `to`; 0 when there is none.
std::size_t LastTag(std::string_view bytes, std::size_t from, std::size_t to)
{
    const std::size_t found = bytes.substr(from, std::min(to, bytes.size() - 1) - from).rfind('<');
    return found == kNone ? 0 : from + found;
}

/// The last tag of all that begins in `bytes`, which begin where no other markup does; 0 when there is none.
std::size_t LastCut(std::string_view bytes)
{
    MarkupSearch declarations(bytes, '!');
    MarkupSearch instructions(bytes, '?');
    std::size_t cut = 0;
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t markup = std::min(declarations.Next(at), instructions.Next(at));
        cut = std::max(cut, LastTag(bytes, at, markup));
        at = markup == kNone ? kNone : EndOfMarkup(bytes, markup);
    }
    return cut;
}

/// Of a document that begins with `head`.
std::string DeclarationOf(std::string_view head)
{
    if (!head.starts_with("<?xml"))
        return {};
    const std::size_t end = EndOfMarkup(head, 0);
    if (end == kNone)
        throw NotInSegments();
    return std::string(head.substr(0, end));
}

} // namespace

SegmentCutter::SegmentCutter(const Source& source, std::size_t segmentBytes)
    : stream_(source.IsStandardInput() || source.archive ? throw NotInSegments() : OpenSource(source)),
      segmentBytes_(segmentBytes), rest_(FirstBytes(*stream_)), encoding_(EncodingOf(source, rest_)),
      declaration_(DeclarationOf(rest_))
{
    if (!encoding_.convertFrom.empty())
        throw NotInSegments();
}

void SegmentCutter::Next(Segment& segment)
{
    segment.isFirst = !std::exchange(hasBegun_, true);
    segment.length = 0;
    std::size_t cut = 0;
    for (std::size_t more = segmentBytes_; cut == 0 && !hasEnded_; more = segment.length) {
        if (segment.length > kMaxSegmentBytes)
            throw NotInSegments();
        Read(segment, more);
        cut = hasEnded_ ? 0 : LastCut(segment.Bytes());
    }
    segment.isLast = hasEnded_;
    segment.bytesTaken = stream_->BytesTaken();
    if (!segment.isLast) {
        rest_.insert(0, segment.Bytes().substr(cut));
        segment.length = cut;
    }
    controlBytes_ += CountControlBytes(encoding_, segment.Bytes());
}

/// Reads so much more of the document.
void SegmentCutter::Read(Segment& segment, std::size_t bytes)
{
    if (segment.room.size() < segment.length + bytes)
        segment.room.resize(segment.length + bytes);
    char* const room = segment.room.data() + segment.length;
    const std::size_t kept = rest_.copy(room, bytes);
    rest_.erase(0, kept);
    const std::size_t count = kept < bytes ? stream_->Read(room + kept, bytes - kept) : 0;
    hasEnded_ = kept + count < bytes;
    segment.length += kept + count;
}

} // namespace velmora
