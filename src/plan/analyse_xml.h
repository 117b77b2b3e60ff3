#pragma once

#include "plan/known_database.h"
#include "plan/mapping_plan.h"
#include "settings/job.h"
#include "xml/structure_model.h"

#include <functional>

namespace velmora {

class TagMap;

/// Walks the whole document once, and decides what becomes of it. `document` gets paths for its attributes. After a
/// cancel `model` and `plan` are not to be used.
///
/// The rules that import every value go by what the database has already, which `readDatabase` tells; they make no use
/// of `model`.
void velAnalyseXML(Job& job, Document& document, const TagMap& map, StructureModel& model, MappingPlan& plan,
                   const std::function<const KnownDatabase&()>& readDatabase = {});

} // namespace velmora
