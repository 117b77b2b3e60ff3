#include "mapping/tag_map.h"

#include <algorithm>

namespace velmora {

void TagMap::Remove(std::size_t number)
{
    entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(number - 1));
}

void TagMap::Compact()
{
    std::erase_if(entries_, [](const MappingEntry& entry) { return entry.tag.empty() && entry.name.empty(); });
}

std::string_view TagMap::Lookup(std::string_view tag) const noexcept
{
    const auto entry =
        std::find_if(entries_.begin(), entries_.end(), [tag](const MappingEntry& e) { return e.tag == tag; });
    return entry == entries_.end() || entry->name.empty() ? tag : std::string_view(entry->name);
}

} // namespace velmora
