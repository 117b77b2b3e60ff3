#include "handbook/mdoc.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>

namespace velmora::handbook {

namespace {

constexpr std::size_t kLineWidth = 76;

std::string Hex(char32_t character)
{
    std::array<char, 8> digits{};
    const auto end = std::to_chars(digits.begin(), digits.end(), static_cast<std::uint32_t>(character), 16).ptr;
    std::string text(digits.begin(), end);
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
    return std::string(text.size() < 4 ? 4 - text.size() : 0, '0') + text;
}

/// The character at `at`, which goes on behind it.
char32_t NextCharacter(std::string_view utf8, std::size_t& at)
{
    const auto lead = static_cast<unsigned char>(utf8[at++]);
    if (lead < 0x80)
        return lead;
    char32_t character = lead & (lead >= 0xF0 ? 0x07 : lead >= 0xE0 ? 0x0F : 0x1F);
    for (; at < utf8.size() && (static_cast<unsigned char>(utf8[at]) & 0xC0) == 0x80; ++at)
        character = (character << 6) | (static_cast<unsigned char>(utf8[at]) & 0x3F);
    return character;
}

/// Text in which no character means anything to the formatter. In code a minus stays one, and quotes stay straight.
std::string Escaped(std::string_view text, bool isCode)
{
    std::string escaped;
    for (std::size_t at = 0; at < text.size();) {
        const char32_t character = NextCharacter(text, at);
        switch (character) {
        case '\\':
            escaped += "\\e";
            break;
        case '"':
            escaped += "\\(dq";
            break;
        case '`':
            escaped += "\\(ga";
            break;
        case '~':
            escaped += "\\(ti";
            break;
        case '^':
            escaped += "\\(ha";
            break;
        case '\'':
            escaped += isCode ? "\\(aq" : "'";
            break;
        case '-':
            escaped += isCode ? "\\-" : "-";
            break;
        default:
            if (character < 0x80)
                escaped += static_cast<char>(character);
            else
                escaped.append("\\[u").append(Hex(character)).append("]");
        }
    }
    return escaped;
}

std::string Formatted(std::string_view markdown)
{
    std::string text;
    for (const Span& span : Spans(markdown)) {
        const std::string part = Escaped(span.text, span.look == Span::Look::Code);
        if (span.look == Span::Look::Plain)
            text += part;
        else
            text.append(span.look == Span::Look::Code ? "\\fB" : "\\fI").append(part).append("\\fP");
    }
    return text;
}

/// A line that begins with one of these would be a request.
std::string Guarded(std::string line)
{
    return !line.empty() && (line.front() == '.' || line.front() == '\'') ? "\\&" + line : line;
}

bool EndsSentence(std::string_view word)
{
    const std::size_t last = word.find_last_not_of(")\"");
    return last != word.npos && (word[last] == '.' || word[last] == '!' || word[last] == '?');
}

} // namespace

void MdocWriter::Line(std::string_view line)
{
    text_.append(line).append("\n");
}

void MdocWriter::SectionHeading(std::string_view title)
{
    EndList();
    std::string capitals(title);
    std::transform(capitals.begin(), capitals.end(), capitals.begin(), [](unsigned char c) { return std::toupper(c); });
    Line(".Sh " + capitals);
    needsParagraph_ = false;
}

void MdocWriter::SubsectionHeading(std::string_view title)
{
    EndList();
    Line(".Ss " + Formatted(title));
    needsParagraph_ = false;
}

void MdocWriter::Add(const Block& block)
{
    const bool isItem = block.kind == Block::Kind::Bullet || block.kind == Block::Kind::Number;
    if (!isItem && !block.inItem)
        EndList();
    switch (block.kind) {
    case Block::Kind::Heading:
        SubsectionHeading(block.text);
        break;
    case Block::Kind::Paragraph:
        Separate();
        AddText(block.text);
        break;
    case Block::Kind::Bullet:
    case Block::Kind::Number:
        AddItem(block);
        break;
    case Block::Kind::Code:
        AddCode(block.text);
        break;
    case Block::Kind::Table:
        AddTable(block);
        break;
    }
}

void MdocWriter::AddItem(const Block& item)
{
    const std::string_view kind = item.kind == Block::Kind::Bullet ? "-bullet" : "-enum";
    if (list_ != kind) {
        EndList();
        list_ = kind;
        Line(std::string(".Bl ").append(kind).append(" -compact").insert(0, needsParagraph_ ? ".Pp\n" : ""));
    }
    Line(".It");
    AddText(item.text);
    needsParagraph_ = true;
}

void MdocWriter::AddCode(std::string_view code)
{
    Line(".Bd -literal -offset indent");
    while (!code.empty()) {
        const std::size_t end = std::min(code.find('\n'), code.size());
        Line(Guarded(Escaped(code.substr(0, end), true)));
        code.remove_prefix(std::min(end + 1, code.size()));
    }
    Line(".Ed");
    needsParagraph_ = true;
}

/// The first cell of a row is the term, the others what is said of it: of more than one each with its heading. An empty
/// heading parts two tables that stand side by side.
void MdocWriter::AddTable(const Block& table)
{
    BeginTerms();
    const std::vector<std::string>& headings = table.rows.front();
    const std::size_t width = std::min<std::size_t>(
        std::find_if(headings.begin() + 1, headings.end(), [](const std::string& h) { return h.empty(); }) -
            headings.begin(),
        headings.size());
    for (std::size_t first = 0; first < headings.size(); first += width + 1)
        for (auto row = table.rows.begin() + 1; row != table.rows.end(); ++row) {
            const std::size_t end = std::min(first + width, row->size());
            if (first >= end || (*row)[first].empty())
                continue;
            std::string text;
            for (std::size_t at = first + 1; at < end; ++at) {
                if (width > 2)
                    text.append(text.empty() ? "" : "; ").append(headings[at]).append(": ");
                text += (*row)[at];
            }
            Term((*row)[first], text);
        }
    EndList();
}

void MdocWriter::BeginTerms()
{
    EndList();
    list_ = "-tag";
    Line(".Bl -tag -width Ds");
}

void MdocWriter::Term(std::string_view term, std::string_view text)
{
    Line(".It \"\\&" + Formatted(term) + "\"");
    AddText(text);
    needsParagraph_ = true;
}

void MdocWriter::EndList()
{
    if (!list_.empty())
        Line(".El");
    list_ = {};
}

void MdocWriter::Separate()
{
    if (needsParagraph_)
        Line(".Pp");
    needsParagraph_ = true;
}

/// Each sentence begins a line, which is not too long for an editor.
void MdocWriter::AddText(std::string_view markdown)
{
    std::string line;
    std::string text = Formatted(markdown);
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t end = std::min(rest.find(' '), rest.size());
        const std::string_view word = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (!line.empty() && line.size() + 1 + word.size() > kLineWidth) {
            Line(Guarded(line));
            line.clear();
        }
        line.append(line.empty() ? "" : " ").append(word);
        if (EndsSentence(word) && !rest.empty()) {
            Line(Guarded(line));
            line.clear();
        }
    }
    if (!line.empty())
        Line(Guarded(line));
}

} // namespace velmora::handbook
