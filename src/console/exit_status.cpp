#include "console/exit_status.h"

namespace velmora {

ExitStatus StatusOf(const RunOutcome& outcome, bool mappingLoaded) noexcept
{
    if (outcome.cancelled)
        return ExitStatus::Cancelled;
    if (outcome.failed)
        return ExitStatus::Error;
    if (outcome.nothingToDo)
        return ExitStatus::NothingToConvert;
    if (outcome.unreadableFiles > 0 || !mappingLoaded)
        return ExitStatus::Unreadable;
    return ExitStatus::Success;
}

} // namespace velmora
