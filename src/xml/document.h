#pragma once

#include "platform/utf8.h"

#include <algorithm>
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

/// Texts begin at multiples of 4 bytes, so that 32 bits reach 16 GiB of them. No text of an XML document has a byte of
/// zero in it, so one stands behind each: that takes less than its length would.
inline constexpr std::size_t kTextSlotBytes = 4;

/// Where a text is: its first byte divided by kTextSlotBytes.
using TextSlot = std::uint32_t;
/// Here is the text of no bytes, all of them.
inline constexpr TextSlot kNoText = 0;

/// Of a path: an element has room for a quarter of a billion different ones, which would take gigabytes themselves.
inline constexpr unsigned kPathBits = 28;

/// Elements stand in the order of their start tags: the first child of an element is the element behind it. Most of
/// them have a text only, and are kept short: what the others have besides stands in a FurtherRecord.
struct ElementRecord {
    std::uint32_t path : kPathBits = 0;
    std::uint32_t isRepeated : 1 = 0; ///< its parent has other children with its tag
    std::uint32_t isLast : 1 = 0;     ///< of its parent's children
    std::uint32_t isParent : 1 = 0;   ///< has children
    std::uint32_t hasFurther : 1 = 0; ///< children or attributes
    std::uint32_t content = kNoText;  ///< a TextSlot; with a FurtherRecord, the number of that
};
static_assert(sizeof(ElementRecord) == 8);

/// Of an element with children or attributes. They stand in the order of the elements: the attributes of one end where
/// those of the next begin. Behind the last one stands one more, for its end.
struct FurtherRecord {
    ElementId end = kNoElement; ///< of a parent: the first element behind all that stand in it
    std::uint32_t firstAttribute = 0;
    TextSlot content = kNoText;
};

struct AttributeRecord {
    NameId name = 0;
    TextSlot value = kNoText;
};

/// Is there nothing but what XML takes for white space?
[[nodiscard]] inline bool IsBlank(std::string_view text) noexcept
{
    const auto isBlank = [](char c) { return c == ' ' || c == '\n' || c == '\t' || c == '\r'; };
    return std::all_of(text.begin(), text.end(), isBlank);
}

/// Is there anything but white space, of every kind that Unicode knows?
[[nodiscard]] inline bool HasText(std::string_view content) noexcept
{
    if (content.empty())
        return false;
    const auto first = static_cast<unsigned char>(content.front());
    const bool isPlain = first > ' ' && first < 0x7F; // nearly every text begins so
    return isPlain || !TrimWhiteSpace(content).empty();
}

/// What becomes of pieces of text that are white space only.
enum class Blanks : std::uint8_t {
    BesideChildrenDropped, ///< between children they are no content, the others are as they stand
    KeptBesideText,        ///< they are content of an element that has other text
};

/// Where a walk over a document was when what it had passed left the memory last.
class Passage {
public:
    Passage() = default;
    /// `slot` is where the texts are that the walk comes to, as far as that is known: kNoText does not tell.
    Passage(std::size_t element, std::size_t slot) noexcept : element_(element), slot_(slot) {}

    /// Is that far away by now?
    [[nodiscard]] bool IsFar(std::size_t element, std::size_t slot) const noexcept
    {
        constexpr std::size_t kBytes = std::size_t{8} << 20;
        return IsFar(element, element_, kBytes / sizeof(ElementRecord)) ||
               (slot != kNoText && IsFar(slot, slot_, kBytes / kTextSlotBytes));
    }

private:
    /// More than `distance`, whichever is the greater one.
    [[nodiscard]] static bool IsFar(std::size_t a, std::size_t b, std::size_t distance) noexcept
    {
        return a - b + distance > 2 * distance;
    }

    std::size_t element_ = 0;
    std::size_t slot_ = 0;
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
    [[nodiscard]] std::size_t ElementCount() const noexcept { return arrays_.elementCount; }
    /// Of all contents and attribute values together, about.
    [[nodiscard]] std::uint64_t TextBytes() const noexcept;
    /// Attributes that are not empty, and contents with text.
    [[nodiscard]] std::uint64_t ValueCount() const noexcept { return arrays_.valueCount; }
    /// What its arrays take of the memory; not what is in a temporary file.
    [[nodiscard]] std::size_t MemoryBytes() const noexcept;
    [[nodiscard]] PathTree& Paths() noexcept;
    [[nodiscard]] const PathTree& Paths() const noexcept;
    NameId Intern(std::string_view name);
    [[nodiscard]] std::string_view NameText(NameId name) const noexcept;
    /// "//doc/item" for the item in doc. Cut in the middle when longer than `limit` bytes.
    [[nodiscard]] std::string PathText(PathId path, std::size_t limit = 1000) const;

    // Of one element. All O(1), and asked so often that they stand here.
    [[nodiscard]] ElementId Root() const noexcept { return IsEmpty() ? kNoElement : 0; }
    [[nodiscard]] NameId Name(ElementId element) const noexcept { return Paths().Name(Path(element)); }
    [[nodiscard]] PathId Path(ElementId element) const noexcept { return arrays_.elements[element].path; }
    [[nodiscard]] bool HasChildren(ElementId element) const noexcept { return arrays_.elements[element].isParent != 0; }
    [[nodiscard]] ElementId FirstChild(ElementId element) const noexcept
    {
        return HasChildren(element) ? element + 1 : kNoElement;
    }
    [[nodiscard]] ElementId NextSibling(ElementId element) const noexcept
    {
        const ElementRecord& record = arrays_.elements[element];
        if (record.isLast != 0)
            return kNoElement;
        return record.isParent != 0 ? FurtherOf(record).end : element + 1;
    }
    /// Does its parent have other children with its tag?
    [[nodiscard]] bool IsRepeated(ElementId element) const noexcept
    {
        return arrays_.elements[element].isRepeated != 0;
    }
    /// The element's own character data, pieces joined; white space between child elements as Blanks says.
    [[nodiscard]] std::string_view Content(ElementId element) const noexcept
    {
        return Text(ContentSlot(arrays_.elements[element]));
    }
    [[nodiscard]] std::uint32_t AttributeCount(ElementId element) const noexcept
    {
        const ElementRecord& record = arrays_.elements[element];
        if (record.hasFurther == 0)
            return 0;
        const FurtherRecord* const further = &FurtherOf(record);
        return further[1].firstAttribute - further->firstAttribute;
    }
    [[nodiscard]] NameId AttributeName(ElementId element, std::uint32_t index) const noexcept
    {
        return Attribute(element, index).name;
    }
    [[nodiscard]] std::string_view AttributeValue(ElementId element, std::uint32_t index) const noexcept
    {
        return Text(Attribute(element, index).value);
    }

    /// How many children an element at `path` has at the most. 0 for a path that was added later.
    [[nodiscard]] std::uint32_t MostChildren(PathId path) const noexcept;
    /// Of the elements at `path` that have no children: with how many others of its tag one stands in its parent, at
    /// the most. 0 for a path that was added later.
    [[nodiscard]] std::uint32_t MostTwins(PathId path) const noexcept;

    /// To be told by a walk, at each element that it comes to: what it comes to next is fetched, and of a document too
    /// large for the memory, what was passed leaves it.
    void Passed(ElementId element) const noexcept
    {
        const ElementRecord& record = arrays_.elements[element];
        // Who makes records looks at so much between two elements that the processor loses sight of the walk.
        __builtin_prefetch(&record + kElementsAhead);
        if (record.hasFurther == 0 && record.content != kNoText)
            __builtin_prefetch(arrays_.text + record.content * kTextSlotBytes + kTextBytesAhead);
        // What has children has its text behind theirs, far away: leaves tell where the walk is.
        if (arrays_.areInFile && record.isParent == 0)
            PassedLeaf(element);
    }

private:
    friend class DocumentBuilder;
    class Impl;
    /// Where the arrays lie when all of the document has been loaded.
    struct Arrays {
        const ElementRecord* elements = nullptr;
        const FurtherRecord* further = nullptr;
        const AttributeRecord* attributes = nullptr;
        const char* text = nullptr;
        std::size_t elementCount = 0;
        std::uint64_t valueCount = 0;
        bool areInFile = false; ///< some of them
    };

    /// `record` has one.
    [[nodiscard]] const FurtherRecord& FurtherOf(const ElementRecord& record) const noexcept
    {
        return arrays_.further[record.content];
    }
    [[nodiscard]] TextSlot ContentSlot(const ElementRecord& record) const noexcept
    {
        return record.hasFurther != 0 ? FurtherOf(record).content : record.content;
    }
    [[nodiscard]] const AttributeRecord& Attribute(ElementId element, std::uint32_t index) const noexcept
    {
        return arrays_.attributes[FurtherOf(arrays_.elements[element]).firstAttribute + index];
    }
    [[nodiscard]] std::string_view Text(TextSlot slot) const noexcept { return {arrays_.text + slot * kTextSlotBytes}; }

    void PassedLeaf(ElementId leaf) const noexcept;
    void GiveBack(Passage passage) const noexcept;
    static constexpr std::size_t kElementsAhead = 24;
    static constexpr std::size_t kTextBytesAhead = 512;

    std::unique_ptr<Impl> impl_;
    Arrays arrays_;
    mutable Passage passage_; ///< of whoever walks
};

} // namespace velmora
