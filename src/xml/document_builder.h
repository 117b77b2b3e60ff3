#pragma once

#include "xml/document.h"
#include "xml/document_data.h"
#include "xml/document_events.h"

#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Builds a Document from a parser's events, in their order. Every call throws std::length_error with a text for the
/// user when the document is larger than the arrays can number.
class DocumentBuilder final : public DocumentEvents {
public:
    explicit DocumentBuilder(MemoryBudget budget, Blanks blanks = Blanks::BesideChildrenDropped);

    void StartElement(std::string_view name, const char* const* attributes) override;
    void Text(std::string_view piece) override;
    void EndElement() override;

    /// Tag of the innermost open element; empty when none is open.
    [[nodiscard]] std::string_view OpenTag() const noexcept;
    /// The finished document. The builder is of no use afterwards.
    [[nodiscard]] Document Take() noexcept;

private:
    struct OpenElement {
        ElementId id = 0;
        PathId path = 0;
        ElementId lastChild = kNoElement;
        PathId lastChildPath = 0; ///< 0 before the first child
        std::uint32_t childCount = 0;
        std::size_t mixedBegin = 0; ///< where its text begins in mixed_
    };

    [[nodiscard]] PathId PathOf(PathId parent, PathId before, std::string_view name);
    void AddAttributes(PathId path, const char* const* attributes);
    [[nodiscard]] std::uint32_t GroupOf(ElementId parent, PathId path);
    void ClosePieceBesideChild();
    [[nodiscard]] TextRange CloseText(std::size_t begin);

    Document document_;
    Document::Impl& data_;
    const Blanks blanks_;
    std::vector<OpenElement> open_;
    std::size_t pieceBegin_ = 0; ///< the text arena's end is the piece of text that is being read; here it begins
    /// Texts of open elements that have children, innermost last: a text goes to the arena when it is complete.
    std::string mixed_;
    std::vector<std::uint32_t> lastGroup_; ///< by path: the group made last

    // What came next the last time nearly always comes again, and comparing costs less than looking a name up.
    std::vector<PathId> firstChild_;     ///< by path; 0 = not seen yet
    std::vector<PathId> nextSibling_;    ///< by path of the one before; 0 = not seen yet
    std::vector<NameId> firstAttribute_; ///< by the element's path
    std::vector<NameId> nextAttribute_;  ///< by the name before
};

} // namespace velmora
