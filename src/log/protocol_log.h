#pragma once

#include "host/host.h"
#include "log/runtime_error.h"
#include "platform/clock.h"

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora {

/// What a program that started the run may want to know of it, besides the lines for people.
struct Findings {
    struct Warning {
        std::string kind; ///< a fixed word, such as "relation-left-out"
        std::int64_t count = 1;
        std::string text; ///< the line
    };
    struct Error {
        int number = 0;
        std::string text;
    };
    std::vector<Warning> warnings;
    std::vector<Error> errors;
};

/// The record of what a run did: the protocol text, newest line first, and, while a file is open, the protocol file.
/// Passwords reach neither: see WithoutPasswords.
///
/// What is written reaches the file with every line for the user, every error report, and whenever a second has passed:
/// a process that is killed loses little, and a trace of millions of lines still goes out in large pieces.
class ProtocolLog {
public:
    /// `commandLine` builds the command line that reproduces the current settings, without passwords; asked for in
    /// error reports only.
    ProtocolLog(RunFlags& flags, Host& host, std::function<std::string()> commandLine);
    ~ProtocolLog();
    ProtocolLog(const ProtocolLog&) = delete;
    ProtocolLog& operator=(const ProtocolLog&) = delete;

    /// Appends to the file at `path` (UTF-8 name) from now on; it is made when missing. Throws RuntimeError.
    void OpenFile(const std::string& path);
    void CloseFile();
    [[nodiscard]] bool IsFileOpen() const noexcept { return file_ != nullptr; }

    /// One line for the user: time stamp, a blank, `text`. Stands first in Text(), and in the file when `alsoToFile`.
    void ProtocolAppend(std::string_view text, bool alsoToFile = true);
    /// A line that tells of something that may matter, and is one of the findings; `count` is what it counts.
    void Warn(std::string_view kind, std::string_view text, std::int64_t count = 1);
    /// One line for the developer: only with blDebug, only to the file.
    void Trace(std::string_view text)
    {
        if (IsTracing())
            WriteTraceLine(text);
    }
    [[nodiscard]] bool IsTracing() const noexcept { return flags_.blDebug && file_ != nullptr; }
    /// One line into the file when it is open. A failing write is an error of the run, reported once: the file is
    /// closed then.
    void WriteProtocolFile(std::string_view text);
    /// The run begins: what was written for the file while there was none goes into the one that is open now, if any.
    /// From here on, what finds no open file is lost.
    void WriteEarlierLines();
    /// The error report: the line, the block in the file, the message box unless quiet; sets blAbort.
    void ErrorReport(std::string_view procedureName, std::string_view statement, const RuntimeError& error);
    /// The report of an error that knows its place.
    void ErrorReport(const RuntimeError& error)
    {
        ErrorReport(error.MetAt()->procedure, error.MetAt()->statement, error);
    }

    [[nodiscard]] const std::string& Text() const; ///< txtPROT: newest line first, lines end in CR LF
    void ClearText();
    [[nodiscard]] RunFlags& Flags() noexcept { return flags_; }
    [[nodiscard]] Host& GetHost() noexcept { return host_; }
    /// Number of error reports since the last ClearText().
    [[nodiscard]] int ErrorCount() const noexcept { return errorCount_; }
    /// What was found since the last TakeFindings(), the start-up included.
    [[nodiscard]] const Findings& Found() const noexcept { return findings_; }
    [[nodiscard]] Findings TakeFindings() { return std::exchange(findings_, {}); }

private:
    void WriteTraceLine(std::string_view text);
    /// Puts one line into the file's buffer; sends the buffer on when `flush` or when a second has passed.
    void WriteLine(std::string_view stamp, std::string_view gap, std::string_view text, bool flush);
    void ReportWriteError();

    RunFlags& flags_;
    Host& host_;
    std::function<std::string()> commandLine_;
    TimeStampClock clock_;
    std::FILE* file_ = nullptr;
    std::string path_;
    std::vector<std::string> earlier_; ///< written for the file before the run
    bool keepsEarlier_ = true;
    std::int64_t flushedAt_ = 0;     ///< CoarseMilliseconds() of the last flush
    std::vector<std::string> lines_; ///< oldest first; Text() turns them round
    mutable std::string text_;       ///< made by Text()
    mutable bool textIsCurrent_ = true;
    int errorCount_ = 0;
    Findings findings_;
};

} // namespace velmora
