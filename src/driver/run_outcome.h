#pragma once

#include "driver/preview.h"
#include "import/loss_report.h"
#include "schema/table_report.h"
#include "source/source.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

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

/// How a run ended, for exit statuses and the closing table.
struct RunOutcome {
    bool nothingToDo = false; ///< no source named or found, or a target that must not be written
    bool failed = false;      ///< an error report ended the run
    bool cancelled = false;   ///< by the user
    int unreadableFiles = 0;  ///< sources that could not be read
    int convertedFiles = 0;
    int skippedFiles = 0;                ///< were loaded before, with +once
    int failedFiles = 0;                 ///< left out with +continue, because of an error
    LossSummary leftOut{};               ///< values that were not imported
    std::int64_t recordsWithoutText = 0; ///< in a run that exports text
    int filesNotRenamed = 0;             ///< in a run that renames
    std::vector<TableReport> tables{};   ///< in order of first use
    std::vector<FileReport> files{};     ///< all sources, in their order
    std::optional<Preview> preview{};    ///< of a run that was only tried out: all of the above would be
};

/// How far a run has come.
struct RunState {
    std::vector<Source> sources{};      ///< all of them
    std::size_t tried = 0;              ///< of them, the one at hand included
    std::string lastConverted{};        ///< its name
    bool hasCommitted = false;          ///< a file of this run is complete in the database
    bool commitFailed = false;          ///< what was not committed then is lost
    std::int64_t unfinishedRecords = 0; ///< saved by the file at hand, not yet committed
    bool textFilesChanged = false;
    bool isTakenBack = false; ///< what came of the file at which the run ended
};

} // namespace velmora
