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
    [[nodiscard]] Document Take();

private:
    struct OpenElement {
        ElementId id = kNoElement;
        PathId path = 0;
        ElementId lastChild = kNoElement;
        PathId lastChildPath = 0; ///< 0 before the first child
        std::uint32_t childCount = 0;
        std::size_t mixedBegin = 0; ///< where its text begins in mixed_
    };

    /// What came next the last times nearly always comes again, and comparing costs less than looking a name up. Two of
    /// them: behind an element that repeats comes another one, or that which follows them all.
    template <class Id>
    class Guesses {
    public:
        /// nullptr when `name` is none of them.
        [[nodiscard]] const Id* Find(std::string_view name) const noexcept
        {
            if (first_.Name() == name)
                return &first_.id;
            return second_.Name() == name ? &second_.id : nullptr;
        }
        /// `name` is to last as long as the guesses.
        void Learn(std::string_view name, Id id) noexcept
        {
            second_ = first_;
            first_ = {name.data(), static_cast<std::uint32_t>(name.size()), id};
        }

    private:
        struct Guess {
            [[nodiscard]] std::string_view Name() const noexcept { return {name, length}; }
            const char* name = nullptr;
            std::uint32_t length = 0; ///< no name is empty: nothing seen yet
            Id id = 0;
        };
        Guess first_, second_;
    };
    /// The children of one parent at one path, those of the parent that had some last. When another parent has some,
    /// that one is closed: elements of one path never stand inside each other.
    struct Twins {
        ElementId parent = kNoElement;
        ElementId first = kNoElement;
        std::uint32_t count = 0;
        bool hasLeaf = false;
        std::uint32_t most = 0; ///< beside one without children, of all parents
    };
    struct PathState {
        Guesses<PathId> firstChild;
        Guesses<PathId> nextSibling;
        Guesses<NameId> firstAttribute;
        Twins twins;
    };

    [[nodiscard]] PathId PathOf(const OpenElement& parent, std::string_view name);
    [[nodiscard]] PathId LearnPath(const OpenElement& parent, std::string_view name);
    [[nodiscard]] Guesses<PathId>& GuessesBehindLast(const OpenElement& parent);
    void AddAttributes(PathId path, const char* const* attributes);
    [[nodiscard]] NameId LearnAttribute(Guesses<NameId>& guesses, std::string_view name);
    [[nodiscard]] bool CountTwin(Twins& twins, ElementId parent, ElementId element);
    void BeginChildren(OpenElement& parent);
    void EndParent(const OpenElement& element);
    void ClosePieceBesideChild();
    void TakePieceBesideChild();
    void GiveBackPassed(ElementId element) const noexcept;
    [[nodiscard]] TextRange CloseText(std::size_t begin);
    [[nodiscard]] TextRange CloseContent();

    Document document_;
    Document::Impl& data_;
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
