#include "xml/map_name.h"

#include "platform/utf8.h"

#include <algorithm>
#include <set>

namespace velmora {

std::string MapName(std::string& name, const ConversionSettings& settings, const TagMap& map)
{
    if (const std::size_t colon = name.find(':'); colon != std::string::npos)
        name = std::string(TrimWhiteSpace(std::string_view(name).substr(colon + 1)));
    std::string result(settings.blEnableTagMapping ? map.Lookup(name) : std::string_view(name));
    std::replace(result.begin(), result.end(), '.', '_');
    return result;
}

std::vector<std::string> NamesToMap(const StructureModel& model)
{
    std::set<std::string> names;
    for (std::size_t i = 1; i <= model.UpperBound(); ++i) {
        const std::string& name = model.Element(i).strName;
        const std::size_t colon = name.find(':');
        names.insert(colon == std::string::npos ? name : name.substr(colon + 1));
    }
    return {names.begin(), names.end()};
}

} // namespace velmora
