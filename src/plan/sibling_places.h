#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <unordered_map>

namespace velmora {

/// In which order names have first appeared side by side: of the children, or of the attributes, of the elements that
/// belong together. Numbers that the database knows stay; what is new goes behind them.
class SiblingPlaces {
public:
    /// The database knows it.
    void Know(std::uint32_t above, std::uint32_t name, std::size_t place)
    {
        places_.try_emplace(Key(above, name), place);
        std::size_t& next = next_[above];
        next = std::max(next, place + 1);
    }
    /// It appears in the document.
    void Note(std::uint32_t above, std::uint32_t name)
    {
        std::size_t& next = next_[above];
        next += places_.try_emplace(Key(above, name), next).second ? 1 : 0;
    }
    /// Of one that is known or noted; 0 of any other.
    [[nodiscard]] std::size_t Of(std::uint32_t above, std::uint32_t name) const
    {
        const auto place = places_.find(Key(above, name));
        return place == places_.end() ? 0 : place->second;
    }

private:
    static std::uint64_t Key(std::uint32_t above, std::uint32_t name) { return std::uint64_t{above} << 32 | name; }

    std::unordered_map<std::uint64_t, std::size_t> places_;
    std::unordered_map<std::uint32_t, std::size_t> next_;
};

} // namespace velmora
