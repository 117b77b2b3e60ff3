#include "driver/curl_log.h"

#include "platform/paths.h"

#include <algorithm>
#include <fstream>
#include <string_view>

namespace velmora {

namespace {

constexpr std::string_view kReceived = "< ";
constexpr std::string_view kSent = "> ";

bool IsVerboseLine(std::string_view line)
{
    constexpr std::string_view kMarks = "*<>{}";
    return !line.empty() && kMarks.find(line.front()) != kMarks.npos && (line.size() == 1 || line[1] == ' ');
}

bool IsStatusLine(std::string_view line)
{
    return line.starts_with("< HTTP/");
}

/// Whether a status line such as "< HTTP/1.1 404 Not Found" tells of a document.
bool IsSuccess(std::string_view statusLine)
{
    const std::size_t status = statusLine.find(' ', kReceived.size());
    return status != statusLine.npos && statusLine.substr(status + 1).starts_with('2');
}

/// The user's password has no place in a protocol.
std::string WithoutCredentials(std::string line)
{
    constexpr std::string_view kHeader = "authorization: ";
    const auto header = std::search(line.begin(), line.end(), kHeader.begin(), kHeader.end(), [](char a, char b) {
        return a == b || (a >= 'A' && a <= 'Z' && a - 'A' + 'a' == b);
    });
    if (line.starts_with(kSent) && header != line.end())
        line.replace(header + static_cast<std::ptrdiff_t>(kHeader.size()), line.end(), "...");
    return line;
}

} // namespace

CurlLog ReadCurlLog(const std::string& path)
{
    CurlLog log;
    std::ifstream file(PathFromUtf8(path), std::ios::binary);
    std::string lastAnswer;
    for (std::string line; std::getline(file, line);) {
        if (line.ends_with('\r'))
            line.pop_back();
        // A proxy's answer, or one that asks for credentials, comes before the one that counts.
        if (IsStatusLine(line))
            lastAnswer = IsSuccess(line) ? std::string() : line.substr(kReceived.size());
        if (log.failure.empty() && !IsVerboseLine(line))
            log.failure = line;
        log.lines.push_back(WithoutCredentials(std::move(line)));
    }
    if (log.failure.empty())
        log.failure = std::move(lastAnswer);
    return log;
}

} // namespace velmora
