#pragma once

#include "log/protocol_log.h"
#include "schema/database_view.h"
#include "settings/job.h"

#include <cstdint>
#include <set>
#include <string>

namespace velmora {

class DatabaseSession;

/// What a run would make of its database; what came into which table stands in the run's outcome.
struct Preview {
    DatabaseContents contents{};          ///< nothing when the run would change nothing
    std::set<std::string> tablesBefore{}; ///< those that are there
    std::uint64_t sizeBytes = 0;
    std::uint64_t maxSizeBytes = 0; ///< what its format allows
    Findings findings{};
};

/// Looks at what a run that was only tried out has committed: opens the database anew for that.
void DescribeDatabase(Job& job, DatabaseSession& session, Preview& preview);

/// Throws when the protocol file could not be opened.
void CheckProtocolFile(const ConversionSettings& settings);

/// A run that is only tried out takes its settings as any other, but the controls go on showing what they did.
class ControlsKept {
public:
    explicit ControlsKept(Controls& controls)
        : controls_(controls), target_(controls.txtFILE_MDB), recreates_(controls.chkRecreateDatabase)
    {
    }
    ~ControlsKept()
    {
        controls_.txtFILE_MDB = target_;
        controls_.chkRecreateDatabase = recreates_;
        controls_.UpdateEnabled();
    }
    ControlsKept(const ControlsKept&) = delete;
    ControlsKept& operator=(const ControlsKept&) = delete;

private:
    Controls& controls_;
    TextControl target_;
    CheckControl recreates_;
};

} // namespace velmora
