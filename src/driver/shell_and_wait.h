#pragma once

#include "settings/job.h"

#include <string>
#include <string_view>

namespace velmora {

inline constexpr std::string_view kShellOk = "OK";
inline constexpr std::string_view kShellTimeout = "TIMEOUT";
inline constexpr std::string_view kShellError = "ERROR";

/// Runs `commandLine` (see SplitProgramLine) without a shell and waits for its end, letting the user's clicks through.
/// kShellOk when the program has ended, with whatever result, and when the run was cancelled: the program is ended
/// then. kShellTimeout when it outlives the limit, kShellError when it cannot be started. The limit counts in whole
/// days.
[[nodiscard]] std::string_view ShellAndWait(Job& job, const std::string& commandLine, int timeoutSeconds);

} // namespace velmora
