#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace velmora {

using NameId = std::uint32_t; ///< an interned tag or attribute name; equal ids, equal names
using PathId = std::uint32_t; ///< an element path: a node of the tree of distinct paths; 0 = the path "/", above the
                              ///< document element
using ElementId = std::uint32_t;

inline constexpr ElementId kNoElement = ~ElementId{0};

/// The distinct element paths of a document, as a tree. Text is made for messages only.
class PathTree {
public:
    PathTree();
    /// The child of `parent` named `name`, made when it is new. O(1).
    PathId Child(PathId parent, NameId name);
    /// kNoPath when there is none.
    [[nodiscard]] PathId FindChild(PathId parent, NameId name) const noexcept;
    [[nodiscard]] PathId Parent(PathId path) const noexcept;
    [[nodiscard]] NameId Name(PathId path) const noexcept;
    [[nodiscard]] std::size_t Size() const noexcept; ///< ids run from 0 to Size() - 1
    static constexpr PathId kNoPath = ~PathId{0};
    ~PathTree();
    PathTree(PathTree&&) noexcept;
    PathTree& operator=(PathTree&&) noexcept;

private:
    class Impl;
    std::unique_ptr<Impl> impl_;
};

/// Is there nothing but what XML takes for white space?
[[nodiscard]] bool IsBlank(std::string_view text) noexcept;

/// What becomes of pieces of text that are white space only.
enum class Blanks : std::uint8_t {
    BesideChildrenDropped, ///< between children they are no content, the others are as they stand
    KeptBesideText,        ///< they are content of an element that has other text
};

/// One XML document, parsed once into a compact tree: flat arrays, names interned, text in one arena. Never changes
/// after loading, except that paths and names may be added (attributes and repeated leaves have paths too).
class Document {
public:
    Document();
    ~Document();
    Document(Document&&) noexcept;
    Document& operator=(Document&&) noexcept;

    [[nodiscard]] bool IsEmpty() const noexcept { return ElementCount() == 0; }
    [[nodiscard]] std::size_t ElementCount() const noexcept;
    /// Of all contents and attribute values together, about.
    [[nodiscard]] std::uint64_t TextBytes() const noexcept;
    [[nodiscard]] PathTree& Paths() noexcept;
    [[nodiscard]] const PathTree& Paths() const noexcept;
    NameId Intern(std::string_view name);
    [[nodiscard]] std::string_view NameText(NameId name) const noexcept;
    /// "//doc/item" for the item in doc. Cut in the middle when longer than `limit` bytes.
    [[nodiscard]] std::string PathText(PathId path, std::size_t limit = 1000) const;

    // Of one element. All O(1).
    [[nodiscard]] ElementId Root() const noexcept { return IsEmpty() ? kNoElement : 0; }
    [[nodiscard]] NameId Name(ElementId element) const noexcept;
    [[nodiscard]] PathId Path(ElementId element) const noexcept;
    [[nodiscard]] ElementId Parent(ElementId element) const noexcept;
    [[nodiscard]] ElementId FirstChild(ElementId element) const noexcept;
    [[nodiscard]] ElementId NextSibling(ElementId element) const noexcept;
    [[nodiscard]] std::uint32_t ChildCount(ElementId element) const noexcept;
    /// How many children of the element's parent bear its tag, itself included; 1 for the document element.
    [[nodiscard]] std::uint32_t SameTagCount(ElementId element) const noexcept;
    /// The element's own character data, pieces joined; white space between child elements as Blanks says.
    [[nodiscard]] std::string_view Content(ElementId element) const noexcept;
    [[nodiscard]] std::uint32_t AttributeCount(ElementId element) const noexcept;
    [[nodiscard]] NameId AttributeName(ElementId element, std::uint32_t index) const noexcept;
    [[nodiscard]] std::string_view AttributeValue(ElementId element, std::uint32_t index) const noexcept;

    /// To be told by a walk, at each element that it comes to: of a document too large for the memory, what was passed
    /// leaves it.
    void Passed(ElementId element) const noexcept;

private:
    friend class DocumentBuilder;
    class Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace velmora
