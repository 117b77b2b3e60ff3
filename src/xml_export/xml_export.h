#pragma once

#include "settings/job.h"

#include <optional>
#include <string>

namespace velmora {

/// Writes the database that the settings name as XML, the way back of a conversion with "+complete": one file, or one
/// for each record of a document element ("out_1.xml", "out_2.xml"). The database is opened for reading only. Files are
/// written beside their places and get there together, when all are complete; old ones are replaced only with
/// "+overwrite".
///
/// Gives the reason when it refuses to begin; nothing has been done then. Anything else that fails unwinds.
[[nodiscard]] std::optional<std::string> velExportXML(Job& job);

} // namespace velmora
