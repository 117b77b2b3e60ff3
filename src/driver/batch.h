#pragma once

#include "mapping/tag_map.h"
#include "schema/table_report.h"
#include "settings/job.h"

#include <cstdint>
#include <string>
#include <vector>

namespace velmora {

class DatabaseSession;

/// How a run ended, for exit statuses and the closing table.
struct RunOutcome {
    bool nothingToDo =
        false; ///< no source named or found, an option that is not available, or a target that must not be written
    bool failed = false;     ///< an error report ended the run
    bool cancelled = false;  ///< by the user
    int unreadableFiles = 0; ///< sources that could not be read
    int convertedFiles = 0;
    std::vector<TableReport> tables{}; ///< in order of first use
};

/// Runs one job over one or many XML files: what the "Convert" button does.
class Batch {
public:
    Batch(Job& job, TagMap& tagMap) : job_(job), tagMap_(tagMap) {}

    /// The whole run. Reports its own failures; never throws.
    RunOutcome btnConvert_Click();
    /// Cancels the run that is going on, after asking unless quiet. Nothing without one.
    void btnQuit_Click();

private:
    void OpenProtocolFile();
    void ShowRunning(bool running);
    void Convert(const std::vector<std::string>& files, DatabaseSession& session, Step& step);
    void ConvertOneFile(const std::string& path, DatabaseSession& session);
    void CommitWhatIsSaved(DatabaseSession& session);

    Job& job_;
    TagMap& tagMap_;
    RunOutcome outcome_;
};

} // namespace velmora
