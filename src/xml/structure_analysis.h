#pragma once

#include "settings/job.h"
#include "xml/document.h"
#include "xml/structure_model.h"

namespace velmora {

/// Loads one XML file. Reports a missing file; one that cannot be parsed gives an empty document and a protocol line.
[[nodiscard]] Document velLoadXML(Job& job, const std::string& path);

/// Walks the whole document once and derives the structure; then gives tables their numbers and same-named ones their suffixes.
void velAnalyseXML(Job& job, Document& document, StructureModel& model);

} // namespace velmora
