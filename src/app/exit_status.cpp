#include "app/exit_status.h"

namespace velmora {

ExitStatus StatusOf(const RunOutcome& outcome, bool mappingLoaded, bool strict) noexcept
{
    if (outcome.cancelled)
        return ExitStatus::Cancelled;
    if (outcome.failed)
        return ExitStatus::Error;
    if (outcome.nothingToDo)
        return ExitStatus::NothingToConvert;
    if (outcome.unreadableFiles > 0 || !mappingLoaded)
        return ExitStatus::Incomplete;
    if ((strict || outcome.preview) &&
        (outcome.leftOut.values > 0 || outcome.recordsWithoutText > 0 || outcome.filesNotRenamed > 0))
        return ExitStatus::Incomplete;
    return ExitStatus::Success;
}

} // namespace velmora
