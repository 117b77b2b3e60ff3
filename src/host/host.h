#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// The caption of the main window and of every message box.
inline constexpr std::string_view kCaption = "velmora   tarnwick";

enum class Icon { Exclamation, Critical, Question };
enum class Buttons { Ok, OkCancel, RetryCancel, YesNoCancel };
enum class Answer { Ok, Cancel, Retry, Yes, No };
/// Bytes: of the source at hand, packed as it is; a maximum of 0 is not known.
enum class ProgressBarId { Files, Records, Bytes };

/// What the converter asks of a person or shows to one. The window, the console and the tests' scripted host implement
/// it; no other code knows which one is there. Boxes are never asked for in a quiet run.
class Host {
public:
    virtual ~Host() = default;

    virtual void ShowMessage(std::string_view text, Icon icon) = 0;
    /// `defaultAnswer` is what Return chooses.
    [[nodiscard]] virtual Answer Ask(std::string_view text, std::string_view caption, Buttons buttons, Icon icon,
                                     Answer defaultAnswer) = 0;
    /// nullopt when the person cancels.
    [[nodiscard]] virtual std::optional<std::string> InputBox(std::string_view title, std::string_view prompt) = 0;
    /// Lets clicks and repaints through; a cancel arrives here. Called very often: must cost next to nothing.
    virtual void ProcessEvents() = 0;
    virtual void SetProgressRange(ProgressBarId bar, std::int64_t maximum) = 0;
    virtual void SetProgress(ProgressBarId bar, std::int64_t value) = 0;
    /// A protocol line was added; `line` is the whole line, time stamp included.
    virtual void ProtocolLineAdded(std::string_view line) = 0;
    /// An error's number and description, in quiet runs too (the console writes them to standard error).
    virtual void ErrorReported(int number, std::string_view description) = 0;
    /// What a run gives to a program that reads its standard output.
    virtual void WriteResult(std::string_view text) = 0;
    /// The controls' state or captions changed: a window repaints from it.
    virtual void ControlsChanged() = 0;
    /// Whether somebody can look at a document's structure, which costs something to describe.
    [[nodiscard]] virtual bool ShowsStructure() const { return false; }
    /// Whether a document may come on standard input. A window cannot cancel a wait for it.
    [[nodiscard]] virtual bool ReadsStandardInput() const { return true; }
};

} // namespace velmora
