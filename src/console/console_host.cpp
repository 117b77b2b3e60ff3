#include "console/console_host.h"

#include "console/terminal_lines.h"
#include "platform/clock.h"
#include "platform/program.h"
#include "platform/terminal.h"

#include <cstdio>
#include <utility>

namespace velmora {

namespace {

constexpr std::int64_t kPaintMilliseconds = 100;
constexpr std::string_view kEraseLine = "\r\x1B[K";
constexpr std::string_view kRed = "\x1B[31m";
constexpr std::string_view kPlain = "\x1B[0m";

/// A stream that fails is not the run's failure: the database matters more than who watches.
void Put(std::FILE* stream, std::string_view text)
{
    std::fwrite(text.data(), 1, text.size(), stream);
    std::fflush(stream);
}

bool IsCapableTerminal(std::FILE* stream)
{
    return TakesEscapes(stream) && EnvironmentVariable("TERM") != "dumb";
}

} // namespace

ConsoleHost::ConsoleHost()
    : paintsProgress_(IsCapableTerminal(stderr)),
      usesColour_(paintsProgress_ && EnvironmentVariable("NO_COLOR").empty())
{
}

ConsoleHost::~ConsoleHost()
{
    EraseProgress();
}

void ConsoleHost::Write(std::string_view text)
{
    EraseProgress();
    Put(told_, text);
}

std::optional<std::size_t> ConsoleHost::Columns() const
{
    return IsTerminal(told_) ? std::optional(TerminalColumns(told_)) : std::nullopt;
}

void ConsoleHost::WriteResult(std::string_view text)
{
    EraseProgress();
    Put(stdout, text);
}

void ConsoleHost::WriteError(std::string_view message)
{
    EraseProgress();
    std::string line = "velmora: " + Printable(message);
    if (usesColour_)
        line = std::string(kRed) + line + std::string(kPlain);
    Put(stderr, line + '\n');
}

void ConsoleHost::ShowMessage(std::string_view text, Icon icon)
{
    // The box of an error report repeats what ErrorReported and the protocol line have just said.
    if (icon != Icon::Critical)
        WriteError(text);
}

Answer ConsoleHost::Ask(std::string_view text, std::string_view, Buttons buttons, Icon, Answer defaultAnswer)
{
    if (answers_ == nullptr) {
        WriteError(text);
        return DismissedAnswer(buttons);
    }
    Prompt(std::string(text).append(1, '\n'));
    for (;;) {
        Prompt(ButtonLine(buttons, defaultAnswer));
        const std::optional<std::string> line = ReadLine(answers_);
        if (!line)
            return DismissedAnswer(buttons);
        if (const auto answer = AnswerFrom(*line, buttons, defaultAnswer))
            return *answer;
    }
}

std::optional<std::string> ConsoleHost::InputBox(std::string_view title, std::string_view prompt)
{
    if (answers_ == nullptr)
        return std::nullopt;
    Prompt(std::string(prompt).append(1, '\n').append(title).append(": "));
    return ReadLine(answers_);
}

/// Text whose last line the person completes.
void ConsoleHost::Prompt(std::string_view text)
{
    EraseProgress();
    Put(stderr, Printable(text));
}

void ConsoleHost::ProcessEvents()
{
    if (WasInterrupted() && cancel_)
        std::exchange(cancel_, nullptr)();
    PaintProgressWhenDue();
}

void ConsoleHost::SetProgressRange(ProgressBarId bar, std::int64_t maximum)
{
    switch (bar) {
    case ProgressBarId::Files:
        progress_.files = maximum;
        break;
    case ProgressBarId::Records:
        progress_.recordsTotal = maximum;
        break;
    case ProgressBarId::Bytes:
        progress_.bytesTotal = maximum;
        progress_.bytes = 0;
        break;
    }
}

void ConsoleHost::SetProgress(ProgressBarId bar, std::int64_t value)
{
    switch (bar) {
    case ProgressBarId::Files:
        progress_.filesDone = value;
        progress_.records = 0;
        fileBegin_ = CoarseMilliseconds();
        break;
    case ProgressBarId::Records:
        if (progress_.records == 0 && value > 0)
            importBegin_ = CoarseMilliseconds();
        progress_.records = value;
        PaintProgressWhenDue();
        break;
    case ProgressBarId::Bytes:
        progress_.bytes = value;
        break;
    }
}

void ConsoleHost::ProtocolLineAdded(std::string_view line)
{
    Write(Printable(line) + '\n');
}

void ConsoleHost::ErrorReported(int number, std::string_view description)
{
    WriteError("error " + std::to_string(number) + ": " + std::string(description));
}

void ConsoleHost::PaintProgressWhenDue()
{
    if (!paintsProgress_ || progress_.filesDone >= progress_.files)
        return;
    const std::int64_t now = CoarseMilliseconds();
    if (now < nextPaint_)
        return;
    nextPaint_ = now + kPaintMilliseconds;
    progress_.fileMilliseconds = now - fileBegin_;
    progress_.importMilliseconds = now - importBegin_;
    // One column stays free: some terminals wrap as soon as the last one is written.
    Put(stderr, std::string(kEraseLine) + ProgressLine(progress_, TerminalColumns(stderr) - 1));
    isPainted_ = true;
}

void ConsoleHost::EraseProgress()
{
    if (!std::exchange(isPainted_, false))
        return;
    Put(stderr, kEraseLine);
    nextPaint_ = 0;
}

} // namespace velmora
