#pragma once

#include "plan/mapping_plan.h"
#include "settings/job.h"
#include "xml/structure_model.h"

namespace velmora {

class TagMap;

/// Walks the whole document once, and decides what becomes of it. `document` gets paths for its attributes. After a
/// cancel `model` and `plan` are not to be used.
void velAnalyseXML(Job& job, Document& document, const TagMap& map, StructureModel& model, MappingPlan& plan);

} // namespace velmora
