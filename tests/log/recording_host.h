#pragma once

#include "log/host.h"

#include <string>
#include <vector>

namespace velmora::testing {

/// A host that keeps what it is shown and cancels whatever it is asked.
class RecordingHost : public Host {
public:
    void ShowMessage(std::string_view text, Icon) override { messages.emplace_back(text); }
    Answer Ask(std::string_view text, std::string_view, Buttons, Icon, Answer) override
    {
        messages.emplace_back(text);
        return Answer::Cancel;
    }
    std::optional<std::string> InputBox(std::string_view, std::string_view) override { return std::nullopt; }
    void ProcessEvents() override {}
    void SetProgressRange(ProgressBarId, std::int64_t) override {}
    void SetProgress(ProgressBarId, std::int64_t) override {}
    void ProtocolLineAdded(std::string_view line) override { lines.emplace_back(line.substr(kStampLength)); }
    void ErrorReported(int number, std::string_view description) override
    {
        errors.push_back(std::to_string(number) + ": " + std::string(description));
    }
    void ControlsChanged() override { ++controlsChanged; }

    static constexpr std::size_t kStampLength = 20; ///< time stamp and blank

    std::vector<std::string> messages;
    std::vector<std::string> lines; ///< without their time stamps
    std::vector<std::string> errors;
    int controlsChanged = 0;
};

} // namespace velmora::testing
