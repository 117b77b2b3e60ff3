#pragma once

#include "app/exit_status.h"
#include "log/protocol_log.h"
#include "schema/database_view.h"
#include "settings/controls.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// What a run's summary is made of.
struct SummaryFacts {
    std::string_view version;
    ExitStatus status;
    std::int64_t milliseconds;
    const Controls& controls;
    const RunOutcome& outcome;
    const Findings& findings;
    const DatabaseContents& contents; ///< of the database; nothing when the run has written none
};

/// The summary of a run for programs: one JSON object, as docs/summary.schema.json has it. Passwords do not stand in
/// it.
[[nodiscard]] std::string SummaryText(const SummaryFacts& facts);

/// Why no summary can be written to the file at `path`: it is there and is none, or nothing can be written there.
[[nodiscard]] std::optional<std::string> UnfitSummary(const std::string& path);

/// Puts `text` into the file at `path`, in one step: a reader finds the whole of it, or what was there before. Throws
/// RuntimeError.
void WriteSummary(const std::string& path, std::string_view text);

} // namespace velmora
