#include "xml/skipped_entities.h"

namespace velmora {

void SkippedEntities::Count(std::string_view name)
{
    if (number_++ == 0)
        first_ = name;
}

void SkippedEntities::CountInTag(std::string_view startTag)
{
    for (std::size_t at = startTag.find('&'); at != std::string_view::npos; at = startTag.find('&', at)) {
        const std::size_t end = startTag.find(';', at);
        if (end == std::string_view::npos)
            return;
        const std::string_view name = startTag.substr(at + 1, end - at - 1);
        if (!name.empty() && name[0] != '#' && !declared_.contains(name))
            Count(name);
        at = end;
    }
}

} // namespace velmora
