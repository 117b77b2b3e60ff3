#include "xml/parse_problem.h"

namespace velmora {

namespace {

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

std::string AtPosition(XML_Parser parser, std::string_view reason)
{
    return "line " + std::to_string(XML_GetCurrentLineNumber(parser)) + ", column " +
           std::to_string(XML_GetCurrentColumnNumber(parser) + 1) + ": " + std::string(reason);
}

std::string DescribeParserError(XML_Parser parser, std::string_view openTag)
{
    return AtPosition(parser, Reason(XML_GetErrorCode(parser), openTag));
}

} // namespace velmora
