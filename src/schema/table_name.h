#pragma once

#include "mapping/tag_map.h"
#include "settings/conversion_settings.h"
#include "xml/structure_model.h"

#include <string>
#include <string_view>

namespace velmora {

/// The column that says, in a table shared by several elements, which table a record's parent stands in.
inline constexpr std::string_view kMasterTable = "MASTER_TABLE";

/// The database table of an element: table prefix, mapped name, table suffix. The element's strName loses its namespace
/// prefix by it.
[[nodiscard]] std::string TableName(ElementInfo& element, const ConversionSettings& settings, const TagMap& map);

} // namespace velmora
