#include "handbook/markdown.h"

#include <algorithm>
#include <cctype>

namespace velmora::handbook {

namespace {

using Kind = Block::Kind;

std::size_t Indent(std::string_view line)
{
    return std::min(line.find_first_not_of(' '), line.size());
}

std::string_view Trimmed(std::string_view text)
{
    text.remove_prefix(Indent(text));
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

std::vector<std::string> Cells(std::string_view row)
{
    std::vector<std::string> cells{""};
    row = Trimmed(row);
    for (std::size_t at = 1; at + 1 < row.size(); ++at) {
        if (row[at] == '\\' && row[at + 1] == '|')
            cells.back() += row[++at];
        else if (row[at] == '|')
            cells.emplace_back();
        else
            cells.back() += row[at];
    }
    for (std::string& cell : cells)
        cell = Trimmed(cell);
    return cells;
}

/// Digits, a dot and a blank.
bool IsNumbered(std::string_view line)
{
    const std::size_t digits = std::min(line.find_first_not_of("0123456789"), line.size());
    return digits > 0 && line.substr(digits, 2) == ". ";
}

class Parser {
public:
    explicit Parser(std::string_view text) : text_(text) {}

    std::vector<Block> Parse()
    {
        while (!text_.empty())
            Take(NextLine());
        return std::move(blocks_);
    }

private:
    std::string_view NextLine()
    {
        const std::size_t end = std::min(text_.find('\n'), text_.size());
        const std::string_view line = text_.substr(0, end);
        text_.remove_prefix(std::min(end + 1, text_.size()));
        return line;
    }

    void Take(std::string_view line)
    {
        const std::string_view words = Trimmed(line);
        if (words.empty())
            return TakeBlank();
        if (line.starts_with("```"))
            return TakeFence();
        if (line.front() == '#') {
            const std::size_t level = line.find_first_not_of('#');
            Begin({Kind::Heading, static_cast<int>(level), false, std::string(Trimmed(line.substr(level)))});
            isOpen_ = false;
        } else if (line.front() == '|') {
            TakeRow(line);
        } else if (line.starts_with("- ") || IsNumbered(line)) {
            const std::size_t text = line.find(' ');
            Begin(
                {line.front() == '-' ? Kind::Bullet : Kind::Number, 0, false, std::string(Trimmed(line.substr(text)))});
            inItem_ = true;
        } else {
            TakeText(line, words);
        }
    }

    /// Code that goes on behind a blank line keeps it.
    void TakeBlank()
    {
        if (!blocks_.empty() && blocks_.back().kind == Kind::Code && isOpen_)
            ++blanks_;
        else
            isOpen_ = false;
    }

    void TakeFence()
    {
        Begin({Kind::Code});
        for (std::string_view line = NextLine(); !line.starts_with("```") && !text_.empty(); line = NextLine())
            blocks_.back().text.append(line).append("\n");
        isOpen_ = false;
    }

    void TakeRow(std::string_view line)
    {
        if (line.starts_with("|---"))
            return;
        if (!isOpen_ || blocks_.back().kind != Kind::Table)
            Begin({Kind::Table});
        blocks_.back().rows.push_back(Cells(line));
    }

    void TakeText(std::string_view line, std::string_view words)
    {
        const bool isParagraph = isOpen_ && blocks_.back().kind != Kind::Code && blanks_ == 0;
        if (isParagraph) {
            blocks_.back().text.append(" ").append(words);
            return;
        }
        inItem_ = inItem_ && Indent(line) >= 2;
        const std::size_t margin = inItem_ ? 6 : 4;
        if (Indent(line) < margin)
            return Begin({Kind::Paragraph, 0, inItem_, std::string(words)});
        if (!isOpen_)
            Begin({Kind::Code, 0, inItem_});
        blocks_.back().text.append(static_cast<std::size_t>(blanks_), '\n').append(line.substr(margin)).append("\n");
        blanks_ = 0;
    }

    void Begin(Block block)
    {
        const bool staysInItem = block.inItem || block.kind == Kind::Bullet || block.kind == Kind::Number;
        inItem_ = inItem_ && staysInItem;
        blocks_.push_back(std::move(block));
        isOpen_ = true;
        blanks_ = 0;
    }

    std::string_view text_;
    std::vector<Block> blocks_;
    bool isOpen_ = false; ///< the last block goes on with the next line
    bool inItem_ = false; ///< what is indented belongs to a list item
    int blanks_ = 0;      ///< blank lines behind open code
};

} // namespace

std::vector<Block> ParseMarkdown(std::string_view text)
{
    return Parser(text).Parse();
}

std::vector<Span> Spans(std::string_view text)
{
    std::vector<Span> spans;
    const auto add = [&spans](Span::Look look, std::string_view part) {
        if (!part.empty())
            spans.push_back({look, std::string(part)});
    };
    while (!text.empty()) {
        const std::size_t mark = std::min({text.find('`'), text.find("**"), text.find('['), text.size()});
        add(Span::Look::Plain, text.substr(0, mark));
        text.remove_prefix(mark);
        if (text.empty())
            break;
        const std::string_view ending = text.front() == '[' ? "](" : text.substr(0, text.front() == '`' ? 1 : 2);
        const std::size_t begin = text.front() == '[' ? 1 : ending.size();
        const std::size_t end = text.find(ending, begin);
        if (end == text.npos) { // a bracket that is no link
            add(Span::Look::Plain, text.substr(0, 1));
            text.remove_prefix(1);
            continue;
        }
        const std::string_view inner = text.substr(begin, end - begin);
        if (text.front() != '[') {
            add(text.front() == '`' ? Span::Look::Code : Span::Look::Strong, inner);
            text.remove_prefix(end + ending.size());
            continue;
        }
        for (Span& span : Spans(inner))
            spans.push_back(std::move(span));
        text.remove_prefix(std::min(text.find(')', end), text.size() - 1) + 1);
    }
    return spans;
}

std::vector<Block> Section(const std::vector<Block>& blocks, std::string_view title)
{
    const auto begin = std::find_if(blocks.begin(), blocks.end(), [title](const Block& block) {
        return block.kind == Kind::Heading && block.text == title;
    });
    if (begin == blocks.end())
        return {};
    const auto end = std::find_if(begin + 1, blocks.end(), [begin](const Block& block) {
        return block.kind == Kind::Heading && block.level <= begin->level;
    });
    return {begin + 1, end};
}

} // namespace velmora::handbook
