#include "schema/table_name.h"

#include "xml/map_name.h"

namespace velmora {

std::string TableName(ElementInfo& element, const ConversionSettings& settings, const TagMap& map)
{
    return settings.strTablePrefix + MapName(element.strName, settings, map) + settings.strTableSuffix;
}

} // namespace velmora
