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
    /// How much there is of something at a path, at the most.
    struct Most {
        std::uint32_t children, twins;
    };

    explicit Impl(MemoryBudget memory = MemoryBudget(0)) : budget(std::move(memory)) {}

    /// Arrays that are in a file leave the memory.
    void GiveBack() const noexcept;

    MemoryBudget budget; ///< before the arrays: they give back to it
    PagedArray<ElementRecord> elements{budget};
    PagedArray<FurtherRecord> further{budget};
    PagedArray<AttributeRecord> attributes{budget};
    PagedArray<char> text{budget};
    NameTable names;
    PathTree paths;
    std::vector<Most> most; ///< by path
};

} // namespace velmora
