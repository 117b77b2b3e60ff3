#pragma once

#include "handbook/markdown.h"

#include <string>
#include <string_view>

namespace velmora::handbook {

/// Writes blocks in mdoc, the language of manual pages.
class MdocWriter {
public:
    /// A line of the language itself.
    void Line(std::string_view line);
    void SectionHeading(std::string_view title); ///< in capitals, as sections are
    void SubsectionHeading(std::string_view title);
    void Add(const Block& block); ///< a list stays open for its next item

    // A list of terms and what is said of each.
    void BeginTerms();
    void Term(std::string_view term, std::string_view text);
    void EndList();

    [[nodiscard]] const std::string& Text() const noexcept { return text_; }

private:
    void AddItem(const Block& item);
    void AddCode(std::string_view code);
    void AddTable(const Block& table);
    void AddText(std::string_view markdown);
    void Separate();

    std::string text_;
    std::string_view list_;       ///< the kind of the list that is open
    bool needsParagraph_ = false; ///< something stands before what comes next
};

} // namespace velmora::handbook
