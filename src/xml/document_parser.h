#pragma once

#include "xml/document_events.h"
#include "xml/document_loader.h"
#include "xml/expat_parser.h"
#include "xml/input_encoding.h"
#include "xml/path_filter.h"

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace velmora {

/// Counts the references that have no text because their entities are declared outside of the document, where nobody
/// reads.
class SkippedEntities {
public:
    /// An entity that the document itself declares.
    void Declare(std::string_view name) { declared_.emplace(name); }
    /// A reference that the parser reported as skipped.
    void Count(std::string_view name);
    /// Finds the skipped references in the attributes of a start tag, which the parser does not report. `startTag` is
    /// the tag as it stands in the document, in an encoding that has ASCII in it.
    void CountInTag(std::string_view startTag);

    [[nodiscard]] std::size_t Number() const noexcept { return number_; }
    [[nodiscard]] const std::string& First() const noexcept { return first_; }

private:
    std::set<std::string, std::less<>> declared_{"amp", "apos", "gt", "lt", "quot"};
    std::size_t number_ = 0;
    std::string first_;
};

/// One parse: tells of what is in the document, and of what is wrong with it.
class DocumentParser {
public:
    /// Takes the elements at the paths `only`, see PathFilter; all of them when it is empty. Tells `events` of them.
    DocumentParser(ParseAs parseAs, DocumentEvents& events, std::string_view only);

    /// Where up to `bytes` bytes for the next ParseBuffer go.
    [[nodiscard]] void* Buffer(std::size_t bytes);
    /// These return false when the document is not well-formed: Problem() says why then. They throw what `events`
    /// throws.
    [[nodiscard]] bool ParseBuffer(std::size_t bytes);
    [[nodiscard]] bool Parse(std::string_view bytes);
    [[nodiscard]] bool Finish();

    /// Is the parser waiting for the end of a token that began before the last call?
    [[nodiscard]] bool IsStuck() noexcept;
    /// What the parser found wrong, with its place, in words for the owner of the file. `openTag` is the innermost
    /// element that is open there; empty when none is.
    [[nodiscard]] std::string Problem(std::string_view openTag) const;
    /// All but the document.
    [[nodiscard]] LoadResult Result() const;

private:
    /// Whether the element that begins is taken; begins those around it that have not.
    [[nodiscard]] bool Takes(const XML_Char* name);

    static void XMLCALL OnStart(void* self, const XML_Char* name, const XML_Char** attributes);
    static void XMLCALL OnEnd(void* self, const XML_Char* name);
    static void XMLCALL OnText(void* self, const XML_Char* text, int length);
    static int XMLCALL OnUnknownEncoding(void* self, const XML_Char* name, XML_Encoding* encoding);
    static void XMLCALL OnSkippedEntity(void* self, const XML_Char* name, int isParameterEntity);
    static int XMLCALL OnExternalEntity(XML_Parser self, const XML_Char* context, const XML_Char* base,
                                        const XML_Char* systemId, const XML_Char* publicId);
    static void XMLCALL OnDoctype(void* self, const XML_Char* name, const XML_Char* systemId, const XML_Char* publicId,
                                  int hasInternalSubset);
    static void XMLCALL OnEntityDeclaration(void* self, const XML_Char* name, int isParameterEntity,
                                            const XML_Char* value, int length, const XML_Char* base,
                                            const XML_Char* systemId, const XML_Char* publicId,
                                            const XML_Char* notation);

    [[nodiscard]] bool Succeeded(XML_Status status);
    void CountInput(std::size_t bytes) noexcept;
    void CountText(std::size_t bytes);
    [[nodiscard]] std::string AtPosition(std::string_view reason) const;
    [[nodiscard]] std::string_view CurrentTag() const noexcept;

    ExpatParser expat_;
    DocumentEvents& events_;
    std::optional<PathFilter> filter_; ///< none: all of the document is taken
    XML_Error error_ = XML_ERROR_NONE;
    std::string unknownEncoding_; ///< as it is declared
    std::size_t bytesGiven_ = 0;
    std::size_t textBytes_ = 0; ///< counted only where entities may make more of it
    std::size_t textLimit_ = 0;
    XML_Index lastIndex_ = -1;
    bool hasDoctype_ = false; ///< without one there is no entity that could be skipped, or be long
    SkippedEntities skipped_;
};

} // namespace velmora
