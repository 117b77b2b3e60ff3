#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velmora::handbook {

/// A piece of a document as the manual is written: the part of Markdown that it uses.
struct Block {
    enum class Kind { Heading, Paragraph, Bullet, Number, Code, Table };
    Kind kind;
    int level = 0;                                ///< of a heading: 1 to 6
    bool inItem = false;                          ///< of paragraph and code: belongs to the list item before it
    std::string text{};                           ///< with its marks; of code: lines as they stand
    std::vector<std::vector<std::string>> rows{}; ///< of a table: its headings, then its rows
};

[[nodiscard]] std::vector<Block> ParseMarkdown(std::string_view text);

/// A stretch of running text that looks the same all along.
struct Span {
    enum class Look { Plain, Code, Strong };
    Look look;
    std::string text;
};
/// `text` without its marks; of a link stays what is read.
[[nodiscard]] std::vector<Span> Spans(std::string_view text);

/// The blocks below the heading `title` up to the next one of its level or above; none when it is not there.
[[nodiscard]] std::vector<Block> Section(const std::vector<Block>& blocks, std::string_view title);

} // namespace velmora::handbook
