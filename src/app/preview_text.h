#pragma once

#include "app/exit_status.h"
#include "driver/run_outcome.h"
#include "settings/conversion_settings.h"

#include <string>

namespace velmora {

/// What a run that was only tried out would do, for people: its tables with their columns, then what would be otherwise
/// than in the sources, left behind or the end of it, and how large the database would be. Lines end in LF.
[[nodiscard]] std::string PreviewText(const RunOutcome& outcome, const ConversionSettings& settings, ExitStatus status);

} // namespace velmora
