#pragma once

#include "import/loss_report.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velmora {

/// What became of one source of a run.
struct FileReport {
    enum class End { NotTried, Converted, Skipped, Unreadable, Failed, Cancelled };

    std::string path;
    End end = End::NotTried;
    std::int64_t milliseconds = 0;
    std::optional<std::uint64_t> bytes{}; ///< none: not tried, or no file of the disk
    std::int64_t records = 0;             ///< that the database holds of it
    std::optional<LossSummary> values{};  ///< of one that was imported to its end
    std::string problem{};                ///< why it could not be read, or the error
};

} // namespace velmora
