#include "xml_export/xml_writer.h"

#include <algorithm>

namespace velmora {

namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::size_t kPieceBytes = std::size_t{64} * 1024;
/// Elements may stand in one another a hundred thousand deep.
constexpr std::size_t kMaxIndent = 20;

/// Of the character that begins at `at`: its bytes when XML forbids it, else 0. `text` is UTF-8 as the database gives
/// it: an unpaired surrogate has three bytes.
std::size_t ForbiddenBytes(std::string_view text, std::size_t at) noexcept
{
    const auto byte = [&](std::size_t offset) {
        return at + offset < text.size() ? static_cast<unsigned char>(text[at + offset]) : 0u;
    };
    if (byte(0) < 0x20)
        return byte(0) == '\t' || byte(0) == '\n' || byte(0) == '\r' ? 0 : 1;
    const bool isSurrogate = byte(0) == 0xED && byte(1) >= 0xA0;
    const bool isNoCharacter = byte(0) == 0xEF && byte(1) == 0xBF && byte(2) >= 0xBE;
    return isSurrogate || isNoCharacter ? std::min<std::size_t>(3, text.size() - at) : 0;
}

/// Bytes that may need something else in their place: the others go through as they are.
constexpr bool IsPlain(char c) noexcept
{
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x20 && byte != '&' && byte != '<' && byte != '>' && byte != '"' && byte != '\'' && byte != 0xED &&
           byte != 0xEF;
}

std::string_view InText(char c) noexcept
{
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '\r': // a reader takes it for a line end otherwise
        return "&#13;";
    default:
        return {};
    }
}

std::string_view InAttribute(char c) noexcept
{
    switch (c) {
    case '"':
        return "&quot;";
    case '\'':
        return "&apos;";
    case '\t': // of these a reader makes blanks otherwise
        return "&#9;";
    case '\n':
        return "&#10;";
    default:
        return InText(c);
    }
}

} // namespace

bool IsXmlName(std::string_view name) noexcept
{
    const auto mayStand = [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte >= 0x80 || (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
               (byte >= '0' && byte <= '9') || byte == '_' || byte == ':' || byte == '-' || byte == '.';
    };
    const auto mayNotBegin = [](char c) { return (c >= '0' && c <= '9') || c == '-' || c == '.'; };
    return !name.empty() && !mayNotBegin(name.front()) && std::ranges::all_of(name, mayStand);
}

XmlWriter::XmlWriter(OutputFile& file) : file_(file), out_("<?xml version=\"1.0\" encoding=\"UTF-8\"?>") {}

void XmlWriter::BeginLine()
{
    out_ += kLineEnd;
    out_.append(2 * std::min(open_.size(), kMaxIndent), ' ');
}

void XmlWriter::CloseStartTag()
{
    if (isStartTagOpen_)
        out_ += '>';
    isStartTagOpen_ = false;
}

void XmlWriter::StartElement(std::string_view name)
{
    CloseStartTag();
    if (open_.empty() || open_.back() != Content::Text)
        BeginLine();
    if (!open_.empty() && open_.back() == Content::Nothing)
        open_.back() = Content::Elements;
    open_.push_back(Content::Nothing);
    out_.append("<").append(name);
    isStartTagOpen_ = true;
}

void XmlWriter::Attribute(std::string_view name, std::string_view value)
{
    out_.append(" ").append(name).append("=\"");
    AppendEscaped(value, InAttribute);
    out_ += '"';
}

void XmlWriter::Text(std::string_view text)
{
    if (text.empty())
        return;
    CloseStartTag();
    open_.back() = Content::Text;
    AppendEscaped(text, InText);
}

void XmlWriter::EndElement(std::string_view name)
{
    const Content content = open_.back();
    open_.pop_back();
    if (isStartTagOpen_) {
        out_ += "/>";
        isStartTagOpen_ = false;
    } else {
        if (content == Content::Elements)
            BeginLine();
        out_.append("</").append(name).append(">");
    }
    if (out_.size() >= kPieceBytes) {
        file_.Write(out_);
        out_.clear();
    }
}

void XmlWriter::Finish()
{
    out_ += kLineEnd;
    file_.Write(out_);
    out_.clear();
}

template <typename Escape>
void XmlWriter::AppendEscaped(std::string_view text, Escape escape)
{
    for (std::size_t at = 0; at < text.size();) {
        std::size_t end = at;
        while (end < text.size() && IsPlain(text[end]))
            ++end;
        out_ += text.substr(at, end - at);
        at = end;
        if (at == text.size())
            break;
        if (const std::size_t forbidden = ForbiddenBytes(text, at); forbidden != 0) {
            ++leftOut_;
            at += forbidden;
            continue;
        }
        const std::string_view escaped = escape(text[at]);
        out_ += escaped.empty() ? text.substr(at, 1) : escaped;
        ++at;
    }
}

} // namespace velmora
