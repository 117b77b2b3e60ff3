#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// The words of a command line: separated by blanks; double quotes keep blanks together and are taken away. Nothing
/// else has a meaning, a quote that is never closed ends with the line. The program's path, which comes first, may hold
/// blanks without quotes: the shortest beginning with a separator in it that names a file is the program.
[[nodiscard]] std::vector<std::string> SplitProgramLine(std::string_view line);

/// Another program that runs beside this one. What it writes to its standard output is dropped; its errors appear
/// where this program's do. Ended with this object when it still runs.
class ChildProcess {
public:
    /// Starts `commandLine` without a shell; a program without a folder is looked for on PATH. It reads `input`, a few
    /// thousand bytes at most, on its standard input. nullptr when it cannot be started.
    [[nodiscard]] static std::unique_ptr<ChildProcess> Start(const std::string& commandLine,
                                                             std::string_view input = {});
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Whether it has ended, with whatever result; waits up to `milliseconds` for that. An interrupt cuts the wait
    /// short.
    [[nodiscard]] bool HasEnded(int milliseconds);
    /// Ends it: politely first, by force when it is still there two seconds later.
    void Terminate();

private:
    explicit ChildProcess(std::intptr_t id) : id_(id) {}

    std::intptr_t id_; ///< process id; on Windows its handle
    bool ended_ = false;
};

} // namespace velmora
