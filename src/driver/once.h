#pragma once

#include "plan/mapping_plan.h"
#include "schema/database_session.h"
#include "schema/loaded_sources.h"
#include "settings/job.h"
#include "source/source.h"

#include <optional>
#include <string>

namespace velmora {

/// Why the settings and +once do not go together; nullopt when they do.
[[nodiscard]] std::optional<std::string> UnfitOnce(const ConversionSettings& settings);

/// The SHA-256 of what the source holds, unpacked, which is read to its end; empty when it cannot be read, which its
/// load will tell.
[[nodiscard]] std::string HashOfSource(Job& job, const Source& source);

/// Throws when a table of `plan` would have the name of the list that +once keeps, and the list is or will be there.
void KeepListApart(Job& job, DatabaseSession& session, const MappingPlan& plan);

} // namespace velmora
