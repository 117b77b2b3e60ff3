#pragma once

#include "host/host.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace velmora::testing {

/// A Host that answers from a script and keeps what it was shown.
class ScriptedHost : public Host {
public:
    std::deque<Answer> answers;                    ///< for Ask, in order; Cancel when there are none left
    std::deque<std::optional<std::string>> inputs; ///< for InputBox, in order
    std::function<void()> onEvents;                ///< called by every ProcessEvents
    std::function<void(std::string_view)> onLine;  ///< called with every protocol line

    std::vector<std::string> messages; ///< texts of all boxes
    std::vector<std::string> lines;    ///< protocol lines, the oldest first, without their time stamps
    std::vector<std::pair<int, std::string>> errors;
    std::map<ProgressBarId, std::int64_t> maximum, progress;
    int controlsChanges = 0;
    std::string result; ///< of WriteResult

    void ShowMessage(std::string_view text, Icon) override { messages.emplace_back(text); }
    Answer Ask(std::string_view text, std::string_view, Buttons, Icon, Answer) override
    {
        messages.emplace_back(text);
        if (answers.empty())
            return Answer::Cancel;
        const Answer answer = answers.front();
        answers.pop_front();
        return answer;
    }
    std::optional<std::string> InputBox(std::string_view, std::string_view prompt) override
    {
        messages.emplace_back(prompt);
        if (inputs.empty())
            return std::nullopt;
        const auto input = inputs.front();
        inputs.pop_front();
        return input;
    }
    void ProcessEvents() override
    {
        if (onEvents)
            onEvents();
    }
    void SetProgressRange(ProgressBarId bar, std::int64_t value) override { maximum[bar] = value; }
    void SetProgress(ProgressBarId bar, std::int64_t value) override { progress[bar] = value; }
    void ProtocolLineAdded(std::string_view line) override
    {
        constexpr std::size_t kStamp = sizeof "2024-03-05 14:07:09 " - 1;
        lines.emplace_back(line.substr(kStamp));
        if (onLine)
            onLine(lines.back());
    }
    void ErrorReported(int number, std::string_view description) override { errors.emplace_back(number, description); }
    void WriteResult(std::string_view text) override { result += text; }
    void ControlsChanged() override { ++controlsChanges; }
};

} // namespace velmora::testing
