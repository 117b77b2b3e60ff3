#pragma once

#include "settings/job.h"
#include "xml/document.h"
#include "xml/structure_model.h"

namespace velmora {

/// Walks the whole document once and notes in `model`, which is empty, what its paths have. The paths of attributes and
/// of repeated leaves' own columns become paths of the document.
void AnalyseStructure(Job& job, Document& document, StructureModel& model);

} // namespace velmora
