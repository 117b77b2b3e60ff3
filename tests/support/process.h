#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace velmora::testing {

/// What a finished program left behind.
struct ProcessResult {
    int status = -1;    ///< exit status; 128 + the signal's number when a signal ended it; 127 when it did not start
    std::string output; ///< everything written to standard output
    std::string errors; ///< everything written to standard error
    long peakKilobytes = 0; ///< largest resident memory, of its own children too
};

/// Runs `arguments[0]` (looked for on PATH when it holds no slash) without a shell and without standard input, and
/// waits for it. `environment` is laid over the own environment; `folder` is its working folder, the own one when
/// empty.
[[nodiscard]] ProcessResult RunProcess(const std::vector<std::string>& arguments,
                                       const std::map<std::string, std::string>& environment = {},
                                       const std::filesystem::path& folder = {});

} // namespace velmora::testing
