#include "driver/shell_and_wait.h"

#include "platform/clock.h"
#include "platform/process.h"

#include <cmath>
#include <cstdint>
#include <memory>

namespace velmora {

namespace {

constexpr double kSecondsPerDay = 24.0 * 60 * 60;
/// How long a click may wait, and at most the end of the program.
constexpr int kPollMilliseconds = 20;

double DaysSince(std::int64_t beginMilliseconds)
{
    return static_cast<double>(CoarseMilliseconds() - beginMilliseconds) / 1000 / kSecondsPerDay;
}

} // namespace

std::string_view ShellAndWait(Job& job, const std::string& commandLine, int timeoutSeconds)
{
    // Anything up to half a day rounds to 0, which stands for no limit: such a wait ends only with the program. Meant
    // so: how long a download may take depends on its size, and the user can cancel it.
    const auto limitDays = std::nearbyint(timeoutSeconds / kSecondsPerDay);
    const std::int64_t begin = CoarseMilliseconds();
    const std::unique_ptr<ChildProcess> program = ChildProcess::Start(commandLine);
    if (!program)
        return kShellError;
    for (;;) {
        const bool ended = program->HasEnded(kPollMilliseconds);
        job.host.ProcessEvents();
        if (limitDays > 0 && DaysSince(begin) > limitDays)
            return kShellTimeout;
        if (ended || job.settings.blAbort)
            return kShellOk;
    }
}

} // namespace velmora
