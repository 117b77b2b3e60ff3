#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

struct Job;

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

/// Replaces `map` by the mapping file at `path` (as typed): one entry a line, the tag, a tab, the name. The file is
/// UTF-8, or UTF-16 with its mark; what is neither is taken as windows-1252, with a protocol line. The first line
/// without a tab ends the reading in silence, an empty line with an error report, which leaves the entries read so far
/// and an empty one. A missing file leaves `map` as it was, with a protocol line. False when the file was missing or
/// could not be read to its end.
bool velLoadTagMapping(Job& job, TagMap& map, const std::string& path);

/// What is shown when there is nothing to save.
inline constexpr std::string_view kNothingToSave = "There is no mapping to be saved!";

/// The beginning of saving, before a file is chosen: removes the blank entries of `map`. False when none are left, and
/// the caller shows kNothingToSave then.
[[nodiscard]] bool PrepareSaving(Job& job, TagMap& map);

/// Writes `map` to `path`, in place of what may be there, and makes it the mapping file of the controls. False when it
/// could not be written, after the error report; an older file is as it was then.
bool SaveTagMapping(Job& job, const TagMap& map, const std::string& path);

} // namespace velmora
