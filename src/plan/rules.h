#pragma once

#include "mapping/tag_map.h"
#include "plan/known_database.h"
#include "plan/mapping_plan.h"
#include "plan/path_facts.h"
#include "settings/conversion_settings.h"
#include "xml/structure_model.h"

#include <vector>

namespace velmora {

/// The plan by the plain rules: what has children, repeats or bears attributes is a table; the leaves and attributes
/// below it are its columns, of equal names the first.
///
/// Tables of `model` that bear one tag are told apart by the suffixes "_L1", "_L2" and so on, or, with one table per
/// element, share one: the model's entries get their names and table numbers.
[[nodiscard]] MappingPlan PlanByPlainRules(const Document& document, StructureModel& model,
                                           const ConversionSettings& settings, const TagMap& map);

/// Gives the text columns that the plan of the plain rules makes the narrowest types that all of their values fit.
/// `facts` are those of the plan's document, with the forms of its values.
void ChoosePlainTypes(const std::vector<PathFacts>& facts, const ConversionSettings& settings, MappingPlan& plan);

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
