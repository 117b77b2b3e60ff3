#pragma once

#include "xml/document.h"
#include "xml/document_data.h"
#include "xml/document_events.h"
#include "xml/path_state.h"

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
    /// What becomes of white space.
    [[nodiscard]] Blanks BlanksRule() const noexcept { return blanks_; }
    /// The finished document. The builder is of no use afterwards.
    [[nodiscard]] Document Take();

private:
    friend class DocumentPart;
    using Data = Document::Impl;
    struct OpenElement {
        ElementId id = kNoElement;
        PathId path = 0;
        ElementId lastChild = kNoElement;
        PathId lastChildPath = 0; ///< 0 before the first child
        std::uint32_t childCount = 0;
        std::size_t mixedBegin = 0; ///< where its text begins in mixed_
    };

    [[nodiscard]] PathId PathOf(const OpenElement& parent, std::string_view name);
    [[nodiscard]] PathId LearnPath(const OpenElement& parent, std::string_view name);
    [[nodiscard]] PathId AddPath(PathId parent, NameId name);
    [[nodiscard]] Guesses<PathId>& GuessesBehindLast(const OpenElement& parent);
    void AddAttributes(PathId path, const char* const* attributes);
    [[nodiscard]] NameId LearnAttribute(Guesses<NameId>& guesses, std::string_view name);
    [[nodiscard]] bool CountTwin(Twins& twins, ElementId parent, ElementId element);
    void BeginChildren(const OpenElement& parent);
    void AddFurther(ElementRecord& element);
    void EndParent(const OpenElement& element);
    /// Takes the piece of text before or behind a child out of the arena; white space alone may be no content there.
    void ClosePieceBesideChild()
    {
        if (data_.text.Size() != pieceBegin_)
            TakePieceBesideChild();
    }
    void TakePieceBesideChild();
    void GiveBackPassed() const noexcept;
    void BeginPiece();
    void BeginArena();
    void Clear();
    [[nodiscard]] TextSlot CloseText(std::size_t begin);
    void CloseContent(ElementRecord& element);

    Document document_;
    Data& data_;
    const Blanks blanks_;
    std::vector<OpenElement> open_ = std::vector<OpenElement>(1); ///< the document element is a child of none
    std::size_t pieceBegin_ = 0; ///< the text arena's end is the piece of text that is being read; here it begins
    /// Texts of open elements that have children, innermost last: a text goes to the arena when it is complete.
    std::string mixed_;
    std::uint64_t valueCount_ = 0;                              ///< see Document::ValueCount
    std::vector<PathState> states_ = std::vector<PathState>(1); ///< by path
    std::vector<Guesses<NameId>> nextAttribute_;                ///< by the name of the attribute before
};

} // namespace velmora
