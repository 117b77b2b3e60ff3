#pragma once

#include "xml/document.h"
#include "xml/structure_model.h"

#include <string>

namespace velmora {

/// The structure of a document as text, for a person to read: a heading, and one line per element with its table
/// number, level, counts of children, repeated siblings and attributes, its type, name and path. Lines end in CR LF.
/// Costs time and memory for every path: to be called when somebody looks.
[[nodiscard]] std::string StructureReport(const StructureModel& model, const Document& document);

} // namespace velmora
