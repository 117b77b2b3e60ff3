#pragma once

#include "host/host.h"

namespace velmora::fuzzing {

/// Shows nothing and answers every question with "Cancel".
class SilentHost final : public Host {
public:
    void ShowMessage(std::string_view, Icon) override {}
    Answer Ask(std::string_view, std::string_view, Buttons, Icon, Answer) override { return Answer::Cancel; }
    std::optional<std::string> InputBox(std::string_view, std::string_view) override { return std::nullopt; }
    void ProcessEvents() override {}
    void SetProgressRange(ProgressBarId, std::int64_t) override {}
    void SetProgress(ProgressBarId, std::int64_t) override {}
    void ProtocolLineAdded(std::string_view) override {}
    void ErrorReported(int, std::string_view) override {}
    void ControlsChanged() override {}
};

} // namespace velmora::fuzzing
