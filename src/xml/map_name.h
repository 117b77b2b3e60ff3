#pragma once

#include "mapping/tag_map.h"
#include "settings/conversion_settings.h"

#include <string>

namespace velmora {

/// The table or column name for an XML name: without its namespace prefix, replaced by the tag map where that is
/// enabled, every "." turned to "_". `name` itself loses its prefix: the caller's variable changes, and callers rely on
/// it.
[[nodiscard]] std::string MapName(std::string& name, const ConversionSettings& settings, const TagMap& map);

} // namespace velmora
