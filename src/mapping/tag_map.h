#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

struct MappingEntry {
    std::string tag;  ///< as it stands without its namespace prefix; case matters
    std::string name; ///< the table or column name in its place; empty: the tag stays
};

/// The user's table of other names for XML tags, in the order in which it was read or typed. Entries are numbered
/// from 1.
class TagMap {
public:
    [[nodiscard]] std::size_t UpperBound() const noexcept { return entries_.size(); }
    [[nodiscard]] MappingEntry& Entry(std::size_t number) { return entries_[number - 1]; }
    [[nodiscard]] const MappingEntry& Entry(std::size_t number) const { return entries_[number - 1]; }
    void Add(MappingEntry entry) { entries_.push_back(std::move(entry)); }
    void Remove(std::size_t number);
    void Clear() noexcept { entries_.clear(); }
    /// Removes every entry whose tag and name are both empty.
    void Compact();
    /// The name of the first entry with exactly this tag; `tag` itself when there is none, or when the entry has no
    /// name.
    [[nodiscard]] std::string_view Lookup(std::string_view tag) const noexcept;

private:
    std::vector<MappingEntry> entries_;
};

} // namespace velmora
