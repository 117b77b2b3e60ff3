#pragma once

#include "console/terminal_lines.h"
#include "host/host.h"

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

namespace velmora {

/// The person's side of a run in a terminal, or in a script without one: protocol lines on standard output as they are
/// written, errors on standard error, and there, when it is a terminal, a line that shows the progress. Questions stand
/// on standard error too. Until somebody is there to answer, each counts as dismissed.
class ConsoleHost : public Host {
public:
    ConsoleHost();
    ~ConsoleHost() override;
    ConsoleHost(const ConsoleHost&) = delete;
    ConsoleHost& operator=(const ConsoleHost&) = delete;

    /// From now on questions are asked, and `answers`, which must outlive this, is read for a line each.
    void TakeAnswersFrom(std::FILE* answers) noexcept { answers_ = answers; }
    /// `cancel` is called once, from ProcessEvents, when the user has pressed Ctrl-C.
    void SetCancel(std::function<void()> cancel) { cancel_ = std::move(cancel); }
    /// Standard output is for a result alone: what is told goes to standard error.
    void KeepOutputForResult() noexcept { told_ = stderr; }
    /// Writes `text`, which tells something, as it stands.
    void Write(std::string_view text);
    /// Columns of the terminal that Write writes to; nullopt when it is none.
    [[nodiscard]] std::optional<std::size_t> Columns() const;
    /// Writes "velmora: " and `message`, a line, to standard error.
    void WriteError(std::string_view message);

    void ShowMessage(std::string_view text, Icon icon) override;
    [[nodiscard]] Answer Ask(std::string_view text, std::string_view caption, Buttons buttons, Icon icon,
                             Answer defaultAnswer) override;
    [[nodiscard]] std::optional<std::string> InputBox(std::string_view title, std::string_view prompt) override;
    void ProcessEvents() override;
    void SetProgressRange(ProgressBarId bar, std::int64_t maximum) override;
    void SetProgress(ProgressBarId bar, std::int64_t value) override;
    void ProtocolLineAdded(std::string_view line) override;
    void ErrorReported(int number, std::string_view description) override;
    void WriteResult(std::string_view text) override;
    void ControlsChanged() override {}

private:
    void Prompt(std::string_view text);
    void PaintProgressWhenDue();
    void EraseProgress();

    const bool paintsProgress_; ///< standard error is a terminal that can repaint a line
    const bool usesColour_;
    std::FILE* told_ = stdout;
    std::FILE* answers_ = nullptr; ///< none: nobody is asked
    std::function<void()> cancel_;
    ProgressState progress_;
    std::int64_t fileBegin_ = 0;   ///< CoarseMilliseconds() at the beginning of the current file
    std::int64_t importBegin_ = 0; ///< and of its first record
    std::int64_t nextPaint_ = 0;
    bool isPainted_ = false;
};

} // namespace velmora
