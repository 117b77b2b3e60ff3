#include "driver/shell_and_wait.h"

#include "platform/clock.h"
#include "platform/process.h"

#include <cstdint>
#include <memory>

namespace velmora {

namespace {

/// How long a click may wait, and at most the end of the program.
constexpr int kPollMilliseconds = 20;

} // namespace

std::string_view ShellAndWait(Job& job, const std::string& commandLine, double timeoutSeconds, std::string_view input)
{
    const std::int64_t begin = CoarseMilliseconds();
    const std::unique_ptr<ChildProcess> program = ChildProcess::Start(commandLine, input);
    if (!program)
        return kShellError;
    for (;;) {
        const bool ended = program->HasEnded(kPollMilliseconds);
        job.ProcessEvents();
        if (ended)
            return kShellOk;
        if (timeoutSeconds > 0 && static_cast<double>(CoarseMilliseconds() - begin) > timeoutSeconds * 1000)
            return kShellTimeout;
    }
}

} // namespace velmora
