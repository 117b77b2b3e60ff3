#include "xml/map_name.h"

#include "platform/utf8.h"

#include <algorithm>

namespace velmora {

std::string MapName(std::string& name, const ConversionSettings& settings, const TagMap& map)
{
    if (const std::size_t colon = name.find(':'); colon != std::string::npos)
        name = std::string(TrimWhiteSpace(std::string_view(name).substr(colon + 1)));
    std::string result(settings.blEnableTagMapping ? map.Lookup(name) : std::string_view(name));
    std::replace(result.begin(), result.end(), '.', '_');
    return result;
}

} // namespace velmora
