#pragma once

#include "platform/paged_memory.h"
#include "xml/document.h"

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora {

/// The distinct names of a document, numbered from 0 in order of first appearance.
class NameTable {
public:
    /// The id of `name`, which is added when it is new. O(1) in the number of names.
    NameId Intern(std::string_view name);
    /// Stays valid as long as the table, whatever is added.
    [[nodiscard]] std::string_view Text(NameId id) const noexcept { return names_[id]; }
    [[nodiscard]] std::size_t Size() const noexcept { return names_.size(); }

private:
    struct Slot {
        std::uint32_t hash = 0;
        NameId id = kFree;
    };
    static constexpr NameId kFree = ~NameId{0};
    [[nodiscard]] std::size_t FindSlot(std::string_view name, std::uint32_t hash) const noexcept;
    void Grow();

    std::deque<std::string> names_;
    std::vector<Slot> slots_; ///< open addressing; a power of two, at most half full
};

class Document::Impl {
public:
    explicit Impl(MemoryBudget memory = MemoryBudget(0)) : budget(std::move(memory)) {}

    /// A walk has come to `element`, with texts about `slot`. What it has passed leaves the memory from time to time,
    /// of arrays that are in a file.
    void NotePassage(std::size_t element, std::size_t slot) noexcept
    {
        if (budget.isExceeded &&
            (IsFar(element, passage_.element, sizeof(ElementRecord)) || IsFar(slot, passage_.slot, kTextSlotBytes)))
            GiveBack({element, slot});
    }
    [[nodiscard]] std::size_t SlotOfPassage() const noexcept { return passage_.slot; }

    MemoryBudget budget; ///< before the arrays: they give back to it
    PagedArray<ElementRecord> elements{budget};
    PagedArray<SiblingGroup> groups{budget};
    PagedArray<AttributeRecord> attributes{budget};
    PagedArray<char> text{budget};
    NameTable names;
    PathTree paths;

private:
    /// Where a walk was when the memory was given back last.
    struct Passage {
        std::size_t element = 0;
        std::size_t slot = 0;
    };
    static constexpr std::size_t kPassageBytes = std::size_t{8} << 20;

    [[nodiscard]] static bool IsFar(std::size_t a, std::size_t b, std::size_t itemBytes) noexcept
    {
        return (a < b ? b - a : a - b) > kPassageBytes / itemBytes;
    }
    void GiveBack(Passage passage) noexcept;

    Passage passage_;
};

} // namespace velmora
