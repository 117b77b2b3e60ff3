#pragma once

#include "settings/conversion_settings.h"
#include "xml/structure_model.h"

namespace velmora {

/// Gives the tables of a finished model their numbers, and tells those of one name apart: by the suffixes "_L1", "_L2"
/// and so on, or, with one table per element, by letting them share one table. Columns keep their names.
///
/// The last entry of the model gets neither a number nor a suffix from this, even if it is a table. Meant so.
void ResolveTableNames(StructureModel& model, const ConversionSettings& settings);

} // namespace velmora
