#pragma once

#include "plan/mapping_plan.h"
#include "plan/path_facts.h"
#include "settings/conversion_settings.h"

#include <vector>

namespace velmora {

/// Gives the text columns that the plan of the plain rules makes the narrowest types that all of their values fit.
/// `facts` are those of the plan's document, with the forms of its values.
void ChoosePlainTypes(const std::vector<PathFacts>& facts, const ConversionSettings& settings, MappingPlan& plan);

} // namespace velmora
