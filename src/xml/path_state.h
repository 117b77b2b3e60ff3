#pragma once

#include "xml/document.h"

#include <cstdint>
#include <string_view>

namespace velmora {

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

/// The children of one parent at one path, those of the parent that had some last. When another parent has some, that
/// one is closed: elements of one path never stand inside each other.
struct Twins {
    ElementId parent = kNoElement;
    ElementId first = kNoElement;
    std::uint32_t count = 0;
    bool hasLeaf = false;
    std::uint32_t most = 0; ///< beside one without children, of all parents
};

/// What is known of a path while its document is being built.
struct PathState {
    Guesses<PathId> firstChild;
    Guesses<PathId> nextSibling;
    Guesses<NameId> firstAttribute;
    Twins twins;
    std::uint32_t mostChildren = 0; ///< of an element at the path that has ended
};

} // namespace velmora
