#include "xml/segment_parser.h"

#include <algorithm>
#include <utility>

namespace velmora {

namespace {

/// Stands for the elements around a segment. A document that has such a tag itself is not parsed in segments.
constexpr std::string_view kOuterTag = "<velmora-outer>";
constexpr std::string_view kOuterEndTag = "</velmora-outer>";
/// Is fed behind the bytes: where the parser does not see it for what it is, they end in the middle of something.
constexpr std::string_view kProbe = "<?velmora?>";
/// The parser copies what it is given, and mostly ends soon, with the innermost of the elements around.
constexpr std::size_t kFirstChunkBytes = std::size_t{16} * 1024;
/// Each costs a new beginning.
constexpr int kMostOuterEnds = 100;

} // namespace

SegmentParser::SegmentParser(ParseAs parseAs, std::string declaration)
    : expat_(parseAs), context_(std::move(declaration.append(kOuterTag)))
{
}

void SegmentParser::Parse(const Segment& segment, DocumentBuilder& builder, const DocumentPart::OnOuterEnd& onOuterEnd)
{
    std::size_t at = 0;
    for (int ends = 0; ends <= kMostOuterEnds; ++ends) {
        const std::string_view bytes = segment.Bytes().substr(at);
        Begin(segment.isFirst, builder);
        if (Feed(bytes))
            return;
        // Here ends the parser, which knows nothing of the elements around. It begins anew behind the tag.
        const OuterEnd end = OuterEndAtError(bytes);
        at += end.behind;
        if (!onOuterEnd(end.tag, at))
            return;
    }
    throw NotInSegments();
}

bool SegmentParser::IsEpilog(std::string_view bytes)
{
    expat_.Reset();
    FeedContext();
    XML_Parse(expat_.Get(), kOuterEndTag.data(), static_cast<int>(kOuterEndTag.size()), XML_FALSE);
    return XML_Parse(expat_.Get(), bytes.data(), static_cast<int>(bytes.size()), XML_TRUE) == XML_STATUS_OK;
}

void SegmentParser::Begin(bool isFirst, DocumentBuilder& builder)
{
    expat_.Reset();
    if (!isFirst)
        FeedContext();
    begin_ = isFirst ? 0 : static_cast<XML_Index>(context_.size());
    XML_Parser parser = expat_.Get();
    XML_SetUserData(parser, this);
    XML_SetElementHandler(parser, OnStart, OnEnd);
    XML_SetCharacterDataHandler(parser, OnText);
    XML_SetProcessingInstructionHandler(parser, OnInstruction);
    XML_SetStartDoctypeDeclHandler(parser, OnDoctype);
    builder_ = &builder;
    depth_ = 0;
    hasProbed_ = false;
}

void SegmentParser::FeedContext()
{
    XML_Parse(expat_.Get(), context_.data(), static_cast<int>(context_.size()), XML_FALSE);
}

/// False when the parser ends before the bytes do, or when these end in the middle of something.
bool SegmentParser::Feed(std::string_view bytes)
{
    XML_Parser parser = expat_.Get();
    end_ = begin_ + static_cast<XML_Index>(bytes.size());
    const auto give = [&](std::string_view some, bool isEnd) {
        return XML_Parse(parser, some.data(), static_cast<int>(some.size()), isEnd ? XML_TRUE : XML_FALSE) ==
               XML_STATUS_OK;
    };
    std::size_t given = 0;
    bool isGood = true;
    for (std::size_t chunk = kFirstChunkBytes; isGood && given < bytes.size(); chunk *= 2) {
        const std::string_view some = bytes.substr(given, chunk);
        isGood = give(some, false);
        given += some.size();
    }
    if (isGood)
        give(kProbe, true);
    expat_.Rethrow();
    if (XML_GetErrorCode(parser) == XML_ERROR_NO_MEMORY)
        throw std::bad_alloc();
    return hasProbed_;
}

/// The end tag of an element around the segment at which the parser has ended, when that is the reason.
SegmentParser::OuterEnd SegmentParser::OuterEndAtError(std::string_view bytes) const
{
    if (XML_GetErrorCode(expat_.Get()) != XML_ERROR_TAG_MISMATCH || depth_ != 0)
        throw NotInSegments();
    const auto place = static_cast<std::size_t>(XML_GetCurrentByteIndex(expat_.Get()) - begin_);
    const std::size_t end = bytes.find('>', place);
    if (end == std::string_view::npos)
        throw NotInSegments();
    // The parser's place is that of the name.
    const std::size_t name = bytes.substr(place, 2) == "</" ? place + 2 : place;
    const std::size_t nameEnd = std::min(bytes.find_first_of(" \t\r\n", name), end);
    return {bytes.substr(name, nameEnd - name), end + 1};
}

void SegmentParser::OnStart(void* self, const XML_Char* name, const XML_Char** attributes)
{
    auto& parser = *static_cast<SegmentParser*>(self);
    parser.expat_.Guard([&] {
        ++parser.depth_;
        parser.builder_->StartElement(name, attributes);
    });
}

void SegmentParser::OnEnd(void* self, const XML_Char*)
{
    auto& parser = *static_cast<SegmentParser*>(self);
    parser.expat_.Guard([&] {
        if (parser.depth_-- == 0)
            throw NotInSegments();
        parser.builder_->EndElement();
    });
}

void SegmentParser::OnText(void* self, const XML_Char* text, int length)
{
    auto& parser = *static_cast<SegmentParser*>(self);
    parser.expat_.Guard([&] { parser.builder_->Text({text, static_cast<std::size_t>(length)}); });
}

void SegmentParser::OnInstruction(void* self, const XML_Char*, const XML_Char*)
{
    auto& parser = *static_cast<SegmentParser*>(self);
    if (XML_GetCurrentByteIndex(parser.expat_.Get()) == parser.end_)
        parser.hasProbed_ = true;
}

void SegmentParser::OnDoctype(void* self, const XML_Char*, const XML_Char*, const XML_Char*, int)
{
    static_cast<SegmentParser*>(self)->expat_.Guard([] { throw NotInSegments(); });
}

} // namespace velmora
