#pragma once

#include "mapping/tag_map.h"
#include "plan/known_database.h"
#include "plan/mapping_plan.h"
#include "plan/path_facts.h"
#include "settings/conversion_settings.h"

#include <vector>

namespace velmora {

/// The plan by which every value arrives. An element is a record when it is the document element, or when an element of
/// its path has children, attributes or a sibling of its tag, anywhere in the document or in what the database knows;
/// every other one is a column of the record around. What is there already is found by what the database knows of it,
/// else by name. Names that meet, or that the database refuses, are changed, each with a note.
///
/// `facts` are those of `document`, which gets the names that the database knows.
[[nodiscard]] MappingPlan PlanByCompleteRules(Document& document, const std::vector<PathFacts>& facts,
                                              const KnownDatabase& known, const ConversionSettings& settings,
                                              const TagMap& map);

} // namespace velmora
