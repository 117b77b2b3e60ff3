#include "xml/document_parser.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace velmora {

namespace {

/// Entities may multiply a document by a hundred (the parser's own limit), but only until their text comes to this
/// size.
constexpr unsigned long long kEntityThresholdBytes = 1 << 20;
/// However long the file is, its text stays below this and four times what was read so far. Every encoding stays below
/// as well.
constexpr std::size_t kTextAllowanceBytes = std::size_t{128} << 20;
constexpr std::size_t kTextPerByte = 4;

/// Ends a parse.
struct TooMuchText {};

constexpr std::size_t kMaxTagShown = 100;

std::string Reason(XML_Error error, std::string_view openTag)
{
    std::string tag = "<";
    tag.append(openTag.substr(0, kMaxTagShown)).append(">");
    switch (error) {
    case XML_ERROR_SYNTAX:
        return "syntax error, this is not XML";
    case XML_ERROR_NO_ELEMENTS:
        return openTag.empty() ? "the file holds no element" : "the file ends inside of " + tag;
    case XML_ERROR_INVALID_TOKEN:
        return "not well-formed (a character that must not stand here, or bytes of another encoding)";
    case XML_ERROR_UNCLOSED_TOKEN:
        return "the file ends in the middle of a tag, a comment or a reference";
    case XML_ERROR_PARTIAL_CHAR:
        return "the file ends in the middle of a character";
    case XML_ERROR_TAG_MISMATCH:
        return "mismatched tag: this end tag does not close " + tag;
    case XML_ERROR_DUPLICATE_ATTRIBUTE:
        return "duplicate attribute";
    case XML_ERROR_JUNK_AFTER_DOC_ELEMENT:
        return "something follows behind the end of the document element";
    case XML_ERROR_UNDEFINED_ENTITY:
        return "undefined entity";
    case XML_ERROR_RECURSIVE_ENTITY_REF:
        return "an entity refers to itself";
    case XML_ERROR_BAD_CHAR_REF:
        return "reference to a character that XML does not allow";
    case XML_ERROR_MISPLACED_XML_PI:
        return "the XML declaration does not stand at the very start of the file";
    case XML_ERROR_UNKNOWN_ENCODING:
        return "unknown encoding";
    case XML_ERROR_UNCLOSED_CDATA_SECTION:
        return "the file ends inside of a CDATA section";
    case XML_ERROR_AMPLIFICATION_LIMIT_BREACH:
        return "its entities make too much text of it";
    default:
        return XML_ErrorString(error);
    }
}

} // namespace

void SkippedEntities::Count(std::string_view name)
{
    if (number_++ == 0)
        first_ = name;
}

void SkippedEntities::CountInTag(std::string_view startTag)
{
    for (std::size_t at = startTag.find('&'); at != std::string_view::npos; at = startTag.find('&', at)) {
        const std::size_t end = startTag.find(';', at);
        if (end == std::string_view::npos)
            return;
        const std::string_view name = startTag.substr(at + 1, end - at - 1);
        if (!name.empty() && name[0] != '#' && !declared_.contains(name))
            Count(name);
        at = end;
    }
}

DocumentParser::DocumentParser(ParseAs parseAs, DocumentEvents& events, std::string_view only)
    : expat_(parseAs), events_(events)
{
    if (!only.empty())
        filter_.emplace(only);
    XML_Parser parser = expat_.Get();
    XML_SetUserData(parser, this);
    XML_SetElementHandler(parser, OnStart, OnEnd);
    XML_SetCharacterDataHandler(parser, OnText);
    XML_SetUnknownEncodingHandler(parser, OnUnknownEncoding, this);
    XML_SetSkippedEntityHandler(parser, OnSkippedEntity);
    XML_SetStartDoctypeDeclHandler(parser, OnDoctype);
    XML_SetEntityDeclHandler(parser, OnEntityDeclaration);
    XML_SetParamEntityParsing(parser, XML_PARAM_ENTITY_PARSING_NEVER);
    // The handler is there to count: it reads nothing, so the entity has no text.
    XML_SetExternalEntityRefHandler(parser, OnExternalEntity);
    XML_SetExternalEntityRefHandlerArg(parser, this);
    XML_SetBillionLaughsAttackProtectionActivationThreshold(parser, kEntityThresholdBytes);
}

bool DocumentParser::Takes(const XML_Char* name)
{
    if (!filter_)
        return true;
    if (!filter_->Enter(name))
        return false;
    const char* const noAttributes = nullptr;
    for (const std::string& tag : filter_->TakeWrapping())
        events_.StartElement(tag, &noAttributes);
    return true;
}

void DocumentParser::OnStart(void* self, const XML_Char* name, const XML_Char** attributes)
{
    auto& parser = *static_cast<DocumentParser*>(self);
    parser.expat_.Guard([&] {
        if (!parser.Takes(name))
            return;
        parser.events_.StartElement(name, attributes);
        if (parser.hasDoctype_ && *attributes != nullptr) {
            parser.skipped_.CountInTag(parser.CurrentTag());
            for (; *attributes != nullptr; attributes += 2)
                parser.CountText(std::strlen(attributes[1]));
        }
    });
}

void DocumentParser::OnEnd(void* self, const XML_Char*)
{
    auto& parser = *static_cast<DocumentParser*>(self);
    parser.expat_.Guard([&] {
        if (!parser.filter_ || parser.filter_->Leave())
            parser.events_.EndElement();
    });
}

void DocumentParser::OnText(void* self, const XML_Char* text, int length)
{
    auto& parser = *static_cast<DocumentParser*>(self);
    if (parser.filter_ && !parser.filter_->IsInside())
        return;
    parser.expat_.Guard([&] {
        parser.events_.Text({text, static_cast<std::size_t>(length)});
        if (parser.hasDoctype_)
            parser.CountText(static_cast<std::size_t>(length));
    });
}

int DocumentParser::OnUnknownEncoding(void* self, const XML_Char* name, XML_Encoding*)
{
    auto& parser = *static_cast<DocumentParser*>(self);
    parser.expat_.Guard([&] { parser.unknownEncoding_ = name; });
    return XML_STATUS_ERROR;
}

void DocumentParser::OnSkippedEntity(void* self, const XML_Char* name, int isParameterEntity)
{
    auto& parser = *static_cast<DocumentParser*>(self);
    if (isParameterEntity == 0)
        parser.expat_.Guard([&] { parser.skipped_.Count(name); });
}

int DocumentParser::OnExternalEntity(XML_Parser self, const XML_Char* context, const XML_Char*, const XML_Char*,
                                     const XML_Char*)
{
    // The argument set for this handler comes in the parser's place.
    auto& parser = *reinterpret_cast<DocumentParser*>(self);
    parser.expat_.Guard([&] {
        const std::string_view open =
            context == nullptr ? std::string_view{} : context; // names with form feeds between
        parser.skipped_.Count(open.substr(open.rfind('\f') + 1));
    });
    return XML_STATUS_OK;
}

void DocumentParser::OnDoctype(void* self, const XML_Char*, const XML_Char*, const XML_Char*, int)
{
    static_cast<DocumentParser*>(self)->hasDoctype_ = true;
}

void DocumentParser::OnEntityDeclaration(void* self, const XML_Char* name, int isParameterEntity, const XML_Char*, int,
                                         const XML_Char*, const XML_Char*, const XML_Char*, const XML_Char*)
{
    auto& parser = *static_cast<DocumentParser*>(self);
    if (isParameterEntity == 0)
        parser.expat_.Guard([&] { parser.skipped_.Declare(name); });
}

/// The tag being reported, as it stands in the input.
std::string_view DocumentParser::CurrentTag() const noexcept
{
    int offset = 0;
    int size = 0;
    const char* const context = XML_GetInputContext(expat_.Get(), &offset, &size);
    const int length = std::min(XML_GetCurrentByteCount(expat_.Get()), size - offset);
    if (context == nullptr || offset < 0 || length <= 0)
        return {};
    return {context + offset, static_cast<std::size_t>(length)};
}

void* DocumentParser::Buffer(std::size_t bytes)
{
    void* const buffer = XML_GetBuffer(expat_.Get(), static_cast<int>(bytes));
    if (buffer == nullptr)
        throw std::bad_alloc();
    return buffer;
}

void DocumentParser::CountInput(std::size_t bytes) noexcept
{
    bytesGiven_ += bytes;
    textLimit_ = kTextAllowanceBytes + kTextPerByte * bytesGiven_;
}

void DocumentParser::CountText(std::size_t bytes)
{
    textBytes_ += bytes;
    if (textBytes_ > textLimit_)
        throw TooMuchText();
}

bool DocumentParser::ParseBuffer(std::size_t bytes)
{
    CountInput(bytes);
    return Succeeded(XML_ParseBuffer(expat_.Get(), static_cast<int>(bytes), XML_FALSE));
}

bool DocumentParser::Parse(std::string_view bytes)
{
    CountInput(bytes.size());
    return Succeeded(XML_Parse(expat_.Get(), bytes.data(), static_cast<int>(bytes.size()), XML_FALSE));
}

bool DocumentParser::Finish()
{
    return Succeeded(XML_Parse(expat_.Get(), "", 0, XML_TRUE));
}

bool DocumentParser::Succeeded(XML_Status status)
{
    try {
        expat_.Rethrow();
    } catch (const TooMuchText&) {
        error_ = XML_ERROR_AMPLIFICATION_LIMIT_BREACH;
        return false;
    }
    if (status == XML_STATUS_OK)
        return true;
    error_ = XML_GetErrorCode(expat_.Get());
    if (error_ == XML_ERROR_NO_MEMORY)
        throw std::bad_alloc();
    return false;
}

std::string DocumentParser::Problem(std::string_view openTag) const
{
    const std::string problem = AtPosition(Reason(error_, openTag));
    return error_ == XML_ERROR_UNKNOWN_ENCODING ? problem + " " + unknownEncoding_ : problem;
}

/// "line 12, column 7: " and `reason`: lines and columns count from 1, columns in characters. The place is where the
/// parser is.
std::string DocumentParser::AtPosition(std::string_view reason) const
{
    return "line " + std::to_string(XML_GetCurrentLineNumber(expat_.Get())) + ", column " +
           std::to_string(XML_GetCurrentColumnNumber(expat_.Get()) + 1) + ": " + std::string(reason);
}

bool DocumentParser::IsStuck() noexcept
{
    const XML_Index index = XML_GetCurrentByteIndex(expat_.Get());
    const bool stuck = index == lastIndex_;
    lastIndex_ = index;
    return stuck;
}

LoadResult DocumentParser::Result() const
{
    LoadResult result;
    result.skippedEntities = skipped_.Number();
    result.firstSkipped = skipped_.First();
    if (filter_)
        result.unmatched = filter_->Unmatched();
    return result;
}

} // namespace velmora
