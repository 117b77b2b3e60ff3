#pragma once

#include "platform/paged_memory.h"
#include "xml/document.h"
#include "xml/name_table.h"

#include <cstdint>
#include <utility>

namespace velmora {

/// Texts begin at multiples of 4 bytes, so that 32 bits reach 16 GiB of them.
inline constexpr std::size_t kTextSlotBytes = 4;

struct TextRange {
    std::uint32_t slot = 0; ///< first byte divided by kTextSlotBytes
    std::uint32_t lengthBytes = 0;
};

/// Elements stand in the order of their start tags: the first child of an element is the element behind it, and the
/// attributes of an element end where those of the element behind it begin.
struct ElementRecord {
    std::uint32_t group = 0; ///< SiblingGroup it belongs to
    ElementId nextSibling = kNoElement;
    std::uint32_t childCount = 0;
    std::uint32_t firstAttribute = 0;
    TextRange content;
};
static_assert(sizeof(ElementRecord) == 24);

/// The children of one parent that bear one tag.
struct SiblingGroup {
    ElementId parent = kNoElement;
    PathId path = 0;
    std::uint32_t count = 0;
};

struct AttributeRecord {
    NameId name = 0;
    TextRange value;
};

class Document::Impl {
public:
    explicit Impl(MemoryBudget memory = MemoryBudget(0)) : budget(std::move(memory)) {}

    [[nodiscard]] std::string_view Text(TextRange range) const noexcept
    {
        if (range.lengthBytes == 0)
            return {};
        return {&text[range.slot * kTextSlotBytes], range.lengthBytes};
    }

    MemoryBudget budget; ///< before the arrays: they give back to it
    PagedArray<ElementRecord> elements{budget};
    PagedArray<SiblingGroup> groups{budget};
    PagedArray<AttributeRecord> attributes{budget};
    PagedArray<char> text{budget};
    NameTable names;
    PathTree paths;
};

} // namespace velmora
