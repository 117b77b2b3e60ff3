#pragma once

#include "mapping/tag_map.h"
#include "settings/job.h"

#include <cstdint>
#include <string>
#include <vector>

namespace velmora {

/// What happened to one database table in a run.
struct TableReport {
    std::string table;
    std::int64_t records = 0;
    std::int64_t newColumns = 0;
    std::int64_t widenedColumns = 0;
};

/// How a run ended, for exit statuses and the closing table.
struct RunOutcome {
    bool nothingToDo = false;  ///< no source named or found, or a target that must not be written
    bool failed = false;       ///< an error report ended the run
    bool cancelled = false;    ///< by the user
    int unreadableFiles = 0;   ///< sources that could not be read
    int convertedFiles = 0;
    std::vector<TableReport> tables; ///< in order of first use
};

/// Runs one job over one or many XML files: what the "Convert" button does.
class Batch {
public:
    Batch(Job& job, TagMap& tagMap);

    /// The whole run. Reports its own failures; never throws.
    RunOutcome btnConvert_Click();
    /// Cancels the run that is going on, after asking unless quiet. Nothing without one.
    void btnQuit_Click();

private:
    Job& job_;
    TagMap& tagMap_;
    bool cancelled_ = false;
};

} // namespace velmora
