#include "console/terminal_lines.h"

#include <algorithm>
#include <span>

namespace velmora {

namespace {

constexpr std::size_t kWidestBar = 30;
constexpr std::size_t kNarrowestBar = 5;
/// A rate taken over less than this jumps about.
constexpr std::int64_t kSettledMilliseconds = 500;

/// `number`, below 100, behind a colon and in two digits.
std::string ColonTwoDigits(std::int64_t number)
{
    return {':', static_cast<char>('0' + number / 10), static_cast<char>('0' + number % 10)};
}

/// `0:07`, `12:30`, `1:02:30`.
std::string Duration(std::int64_t seconds)
{
    const std::int64_t minutes = seconds / 60;
    const std::string end = ColonTwoDigits(seconds % 60);
    return minutes < 60 ? std::to_string(minutes) + end
                        : std::to_string(minutes / 60) + ColonTwoDigits(minutes % 60) + end;
}

/// How much of the file was read, where that can be told.
std::string Read(const ProgressState& state)
{
    if (state.bytesTotal <= 0)
        return {};
    return std::to_string(std::min(state.bytes, state.bytesTotal) * 100 / state.bytesTotal) + "%, ";
}

std::string RateAndTimeLeft(const ProgressState& state, std::int64_t records)
{
    if (state.importMilliseconds < kSettledMilliseconds)
        return {};
    const std::int64_t perSecond = state.records * 1000 / state.importMilliseconds;
    std::string text = ", " + std::to_string(perSecond) + "/s";
    if (perSecond > 0)
        text += ", " + Duration((state.recordsTotal - records + perSecond - 1) / perSecond) + " left";
    return text;
}

struct Button {
    Answer answer;
    std::string_view word; ///< its first letter stands for it
};

constexpr Button kOk[] = {{Answer::Ok, "OK"}};
constexpr Button kOkCancel[] = {{Answer::Ok, "OK"}, {Answer::Cancel, "Cancel"}};
constexpr Button kRetryCancel[] = {{Answer::Retry, "Retry"}, {Answer::Cancel, "Cancel"}};
constexpr Button kYesNoCancel[] = {{Answer::Yes, "Yes"}, {Answer::No, "No"}, {Answer::Cancel, "Cancel"}};

std::span<const Button> ButtonsOf(Buttons buttons) noexcept
{
    switch (buttons) {
    case Buttons::Ok:
        return kOk;
    case Buttons::OkCancel:
        return kOkCancel;
    case Buttons::RetryCancel:
        return kRetryCancel;
    case Buttons::YesNoCancel:
        return kYesNoCancel;
    }
    return kOk;
}

char LowerCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool IsSameWord(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return LowerCase(x) == LowerCase(y); });
}

std::string_view WithoutBlanks(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t");
    return first == text.npos ? std::string_view() : text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

} // namespace

std::string ProgressLine(const ProgressState& state, std::size_t columns)
{
    const std::int64_t file = std::min(state.filesDone + 1, state.files);
    std::string head = state.files > 1 ? std::to_string(file) + " of " + std::to_string(state.files) + "  " : "";
    if (state.records == 0 || state.recordsTotal <= 0)
        return (head + "reading, " + Read(state) + Duration(state.fileMilliseconds / 1000)).substr(0, columns);

    const std::int64_t records = std::min(state.records, state.recordsTotal);
    const std::string percent = std::to_string(records * 100 / state.recordsTotal) + "%";
    std::string tail = "  " + std::string(4 - percent.size(), ' ') + percent + "  " + std::to_string(state.records) +
                       " of about " + std::to_string(state.recordsTotal) + " records" + RateAndTimeLeft(state, records);
    const std::size_t taken = head.size() + tail.size() + 2;
    if (taken + kNarrowestBar > columns)
        return (head + tail.substr(tail.find_first_not_of(' '))).substr(0, columns);

    const std::size_t width = std::min(columns - taken, kWidestBar);
    const auto filled = static_cast<std::size_t>(records * static_cast<std::int64_t>(width) / state.recordsTotal);
    return head + "[" + std::string(filled, '#') + std::string(width - filled, ' ') + "]" + tail;
}

std::string ButtonLine(Buttons buttons, Answer defaultAnswer)
{
    const std::span<const Button> all = ButtonsOf(buttons);
    std::string line;
    std::string_view defaultWord;
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (i > 0)
            line += i + 1 == all.size() ? " or " : ", ";
        line.append("[").append(all[i].word.substr(0, 1)).append("]").append(all[i].word.substr(1));
        if (all[i].answer == defaultAnswer)
            defaultWord = all[i].word;
    }
    if (!defaultWord.empty())
        line.append(" (Return: ").append(defaultWord).append(")");
    return line.append("? ");
}

std::optional<Answer> AnswerFrom(std::string_view line, Buttons buttons, Answer defaultAnswer)
{
    const std::string_view word = WithoutBlanks(line);
    if (word.empty())
        return defaultAnswer;
    for (const Button& button : ButtonsOf(buttons))
        if (IsSameWord(word, button.word) || IsSameWord(word, button.word.substr(0, 1)))
            return button.answer;
    return std::nullopt;
}

Answer DismissedAnswer(Buttons buttons) noexcept
{
    return buttons == Buttons::Ok ? Answer::Ok : Answer::Cancel;
}

std::optional<std::string> ReadLine(std::FILE* input)
{
    std::string line;
    int c = 0;
    while ((c = std::fgetc(input)) != EOF && c != '\n')
        line += static_cast<char>(c);
    if (c == EOF && line.empty())
        return std::nullopt;
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    return line;
}

} // namespace velmora
