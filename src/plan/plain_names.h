#pragma once

#include "mapping/tag_map.h"
#include "settings/conversion_settings.h"
#include "xml/structure_model.h"

#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Gives the tables of a finished model their numbers, and tells those of one name apart: by the suffixes "_L1", "_L2"
/// and so on, or, with one table per element, by letting them share one table. Columns keep their names.
///
/// The last entry of the model gets neither a number nor a suffix from this, even if it is a table. Meant so.
void ResolveTableNames(StructureModel& model, const ConversionSettings& settings);

/// The table or column name for an XML name: without its namespace prefix, replaced by the tag map where that is
/// enabled, every "." turned to "_".
[[nodiscard]] std::string MappedName(std::string_view name, const ConversionSettings& settings, const TagMap& map);

/// The name for the relation of the table of elements called `name`. No mapping touches it.
[[nodiscard]] std::string RelationName(std::string_view name);

/// What a tag map can give other names to: the names of elements and attributes without their prefixes, each once,
/// sorted.
[[nodiscard]] std::vector<std::string> NamesToMap(const StructureModel& model);

} // namespace velmora
