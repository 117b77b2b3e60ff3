#include "console/prompt.h"

#include <algorithm>
#include <span>

namespace velmora {

namespace {

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
