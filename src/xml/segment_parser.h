#pragma once

#include "xml/document_part.h"
#include "xml/expat_parser.h"
#include "xml/segment_cutter.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace velmora {

/// Parses segments of one document, each by itself.
class SegmentParser {
public:
    /// `declaration` is the document's.
    SegmentParser(ParseAs parseAs, std::string declaration);

    /// Tells `builder` of what is in `segment`, in its order. Once all segments have been told, without a throw and
    /// with end tags that fit, it is what one parser would have told. Throws NotInSegments, and what `builder` and
    /// `onOuterEnd` throw.
    void Parse(const Segment& segment, DocumentBuilder& builder, const DocumentPart::OnOuterEnd& onOuterEnd);
    /// May these be the last bytes of a document, behind the end of its only element?
    [[nodiscard]] bool IsEpilog(std::string_view bytes);

private:
    struct OuterEnd {
        std::string_view tag;
        std::size_t behind;
    };

    void Begin(bool isFirst, DocumentBuilder& builder);
    void FeedContext();
    [[nodiscard]] bool Feed(std::string_view bytes);
    [[nodiscard]] OuterEnd OuterEndAtError(std::string_view bytes) const;

    static void XMLCALL OnStart(void* self, const XML_Char* name, const XML_Char** attributes);
    static void XMLCALL OnEnd(void* self, const XML_Char* name);
    static void XMLCALL OnText(void* self, const XML_Char* text, int length);
    static void XMLCALL OnInstruction(void* self, const XML_Char* target, const XML_Char* data);
    static void XMLCALL OnDoctype(void* self, const XML_Char* name, const XML_Char* systemId, const XML_Char* publicId,
                                  int hasInternalSubset);

    ExpatParser expat_;
    const std::string context_; ///< what the parser is fed ahead of a segment that is not the first
    DocumentBuilder* builder_ = nullptr;
    std::size_t depth_ = 0; ///< how many elements are open that have begun in the segment
    XML_Index begin_ = 0;   ///< of the segment's bytes, as the parser counts
    XML_Index end_ = 0;
    bool hasProbed_ = false; ///< these end where a tag may begin
};

} // namespace velmora
