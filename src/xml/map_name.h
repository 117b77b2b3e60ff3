#pragma once

#include "mapping/tag_map.h"
#include "settings/conversion_settings.h"
#include "xml/structure_model.h"

#include <string>
#include <vector>

namespace velmora {

/// The table or column name for an XML name: without its namespace prefix, replaced by the tag map where that is
/// enabled, every "." turned to "_". `name` itself loses its prefix: the caller's variable changes, and callers rely on
/// it.
[[nodiscard]] std::string MapName(std::string& name, const ConversionSettings& settings, const TagMap& map);

/// What a tag map can give other names to: the names of the document's elements and attributes without their prefixes,
/// each once, sorted.
[[nodiscard]] std::vector<std::string> NamesToMap(const StructureModel& model);

} // namespace velmora
