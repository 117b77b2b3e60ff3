#include "xml/source_parse.h"

#include <algorithm>
#include <utility>

namespace velmora {

SourceParse::SourceParse(const Source& source, DocumentEvents& events)
    : stream_(OpenSource(source)), head_(FirstBytes(*stream_)), encoding_(EncodingOf(source, head_)),
      parser_(encoding_.parseAs, events, source.only)
{
    if (!encoding_.convertFrom.empty())
        converter_ = std::make_unique<Utf8Converter>(encoding_.convertFrom);
}

bool SourceParse::Next()
{
    const bool isGood = std::exchange(hasBegun_, true) ? GiveChunk() : GiveHead();
    if (isGood && hasEnded_)
        isWhole_ = Finish();
    return isGood && !hasEnded_;
}

std::string SourceParse::Problem(std::string_view openTag) const
{
    if (isWhole_)
        return {};
    return problem_.empty() ? parser_.Problem(openTag) : problem_;
}

LoadResult SourceParse::Result() const
{
    LoadResult result = parser_.Result();
    result.controlBytes = controlBytes_;
    return result;
}

bool SourceParse::GiveHead()
{
    controlBytes_ += CountControlBytes(encoding_, head_);
    return converter_ ? GiveConverted(head_) : parser_.Parse(head_);
}

std::size_t SourceParse::Read(void* buffer, std::size_t bytes)
{
    const std::size_t count = stream_->Read(static_cast<char*>(buffer), bytes);
    hasEnded_ = count < bytes;
    return count;
}

bool SourceParse::GiveChunk()
{
    // The parser reads a token from its start whenever more of it comes: chunks that grow keep a long one from costing
    // the square of its length.
    chunkBytes_ = parser_.IsStuck() ? std::min(2 * chunkBytes_, kMaxChunkBytes) : kUsualChunkBytes;
    bool good = true;
    if (converter_) {
        raw_.resize(chunkBytes_);
        const std::size_t count = Read(raw_.data(), chunkBytes_);
        good = GiveConverted(std::string_view(raw_).substr(0, count));
    } else {
        void* const buffer = parser_.Buffer(chunkBytes_);
        const std::size_t count = Read(buffer, chunkBytes_);
        controlBytes_ += CountControlBytes(encoding_, {static_cast<const char*>(buffer), count});
        good = parser_.ParseBuffer(count);
    }
    return good;
}

bool SourceParse::GiveConverted(std::string_view bytes)
{
    text_.clear();
    const bool converted = converter_->Convert(bytes, text_);
    line_ += static_cast<std::size_t>(std::count(text_.begin(), text_.end(), '\n'));
    return parser_.Parse(text_) && (converted || SetBadBytes("bytes that are not"));
}

bool SourceParse::Finish()
{
    if (converter_) {
        text_.clear();
        if (!converter_->Finish(text_))
            return SetBadBytes("the file ends in the middle of a character of");
        if (!parser_.Parse(text_))
            return false;
    }
    return parser_.Finish();
}

bool SourceParse::SetBadBytes(const char* what)
{
    problem_ = "line " + std::to_string(line_) + ": " + what + " " + encoding_.convertFrom + ", at byte " +
               std::to_string(converter_->ConvertedBytes() + 1) + " of the file";
    return false;
}

} // namespace velmora
