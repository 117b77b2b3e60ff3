#pragma once

#include "settings/job.h"

#include <string>
#include <string_view>
#include <vector>

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

/// What curl wrote about a download while told to be verbose.
///
/// Most of it is no error: curl tells of every step, request and answer in lines that begin with a mark and a blank
/// ("* " steps, "> " and "< " headers, "} " and "{ " amounts of data). A line without a mark is an error message. The
/// answer's status counts as well: curl takes the error page of a server for a document like any other, and does not
/// follow redirections by itself.
struct CurlLog {
    std::vector<std::string> lines; ///< all of them, without line ends; credentials are left out of the headers
    std::string failure;         ///< why nothing was downloaded: an error message or a status; empty when all went well
    bool isUnauthorized = false; ///< the last answer's status is 401
};

/// Reads the log at `path`; without such a file nothing was said, and nothing failed.
[[nodiscard]] CurlLog ReadCurlLog(const std::string& path);

} // namespace velmora
