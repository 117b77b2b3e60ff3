#pragma once

#include "settings/job.h"

#include <string>
#include <string_view>

namespace velmora {

inline constexpr std::string_view kShellOk = "OK";
inline constexpr std::string_view kShellTimeout = "TIMEOUT";
inline constexpr std::string_view kShellError = "ERROR";

/// No limit: the program may take as long as it likes.
inline constexpr double kNoTimeout = 0;

/// Runs `commandLine` (see SplitProgramLine) without a shell, with `input` to read, and waits for its end, letting the
/// user's clicks through. kShellOk when the program has ended, with whatever result, and when the run was cancelled:
/// the program is ended then. kShellTimeout when it outlives the limit, which ends it too, kShellError when it cannot
/// be started.
[[nodiscard]] std::string_view ShellAndWait(Job& job, const std::string& commandLine, double timeoutSeconds,
                                            std::string_view input = {});

} // namespace velmora
