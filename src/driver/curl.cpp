#include "driver/curl.h"

#include "platform/clock.h"
#include "platform/paths.h"
#include "platform/process.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <memory>
#include <string_view>

namespace velmora {

namespace {

/// How long a click may wait, and at most the end of the program.
constexpr int kPollMilliseconds = 20;

constexpr std::string_view kReceived = "< ";
constexpr std::string_view kSent = "> ";
constexpr std::string_view kLocation = "< location: ";

bool IsVerboseLine(std::string_view line)
{
    constexpr std::string_view kMarks = "*<>{}";
    return !line.empty() && kMarks.find(line.front()) != kMarks.npos && (line.size() == 1 || line[1] == ' ');
}

bool IsStatusLine(std::string_view line)
{
    return line.starts_with("< HTTP/");
}

/// The number and text in a status line such as "< HTTP/1.1 404 Not Found".
std::string_view StatusIn(std::string_view statusLine)
{
    const std::size_t blank = statusLine.find(' ', kReceived.size());
    return blank == statusLine.npos ? std::string_view() : statusLine.substr(blank + 1);
}

/// Where `header` begins in `line`, in whatever letter case; npos when it is not there.
std::size_t FindHeader(std::string_view line, std::string_view header)
{
    const auto found = std::search(line.begin(), line.end(), header.begin(), header.end(), [](char a, char b) {
        return a == b || (a >= 'A' && a <= 'Z' && a - 'A' + 'a' == b);
    });
    return found == line.end() ? line.npos : static_cast<std::size_t>(found - line.begin());
}

/// The user's password has no place in a protocol.
std::string WithoutCredentials(std::string line)
{
    constexpr std::string_view kHeader = "authorization: ";
    const std::size_t header = FindHeader(line, kHeader);
    if (line.starts_with(kSent) && header != line.npos)
        line.replace(header + kHeader.size(), line.npos, "...");
    return line;
}

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

CurlLog ReadCurlLog(const std::string& path)
{
    CurlLog log;
    std::ifstream file(PathFromUtf8(path), std::ios::binary);
    std::string lastAnswer;
    for (std::string line; std::getline(file, line);) {
        if (line.ends_with('\r'))
            line.pop_back();
        // A proxy's answer, or one that asks for credentials, comes before the one that counts.
        if (IsStatusLine(line)) {
            const std::string_view status = StatusIn(line);
            lastAnswer = status.starts_with('2') ? std::string() : line.substr(kReceived.size());
            log.isUnauthorized = status.starts_with("401");
        } else if (!lastAnswer.empty() && FindHeader(line, kLocation) == 0) {
            lastAnswer += ", the document is at " + line.substr(kLocation.size());
        }
        if (log.failure.empty() && !IsVerboseLine(line))
            log.failure = line;
        log.lines.push_back(WithoutCredentials(std::move(line)));
    }
    if (log.failure.empty())
        log.failure = std::move(lastAnswer);
    return log;
}

} // namespace velmora
