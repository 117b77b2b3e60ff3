#pragma once

#include <string>
#include <vector>

namespace velmora {

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
