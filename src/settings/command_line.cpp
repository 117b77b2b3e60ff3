#include "settings/command_line.h"

#include "settings/options.h"

#include <algorithm>
#include <iterator>
#include <string>

namespace velmora {

namespace {

/// Where the quoted value of the token that begins at `start` opens: the position of the quote, when the token's first
/// "=" lies before `limit` and a quote follows it; npos otherwise.
std::size_t OpeningQuote(std::string_view text, std::size_t start, std::size_t limit) noexcept
{
    const std::size_t equals = text.find('=', start);
    if (equals == std::string_view::npos || equals >= limit || text.substr(equals + 1, 1) != "\"")
        return std::string_view::npos;
    return equals + 1;
}

/// The position of the quote that closes the one at `opening`.
std::size_t ClosingQuote(std::string_view text, std::size_t start, std::size_t opening)
{
    const std::size_t closing = text.find('"', opening + 1);
    if (closing == std::string_view::npos)
        throw CommandLineError("A quotation mark is never closed: " + std::string(text.substr(start)));
    return closing;
}

constexpr char kDelimiter = ' ';

std::string_view Trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(kDelimiter);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kDelimiter) - first + 1);
}

bool IsListed(std::string_view word, std::string_view words)
{
    const std::vector<std::string_view> all = Listed(words);
    return std::find(all.begin(), all.end(), word) != all.end();
}

std::string_view WithoutQuotes(std::string_view value)
{
    const bool isQuoted = value.size() >= 2 && value.front() == '"' && value.back() == '"';
    return isQuoted ? value.substr(1, value.size() - 2) : value;
}

/// What a token asks of the control of the option that it names.
class Setter {
public:
    Setter(const Option& option, bool on, std::string_view value, Controls& controls)
        : option_(option), on_(on), value_(value), controls_(controls)
    {
    }

    void operator()(CheckControl Controls::*member) const
    {
        CheckControl& box = controls_.*member;
        box.value = on_ ? CheckState::Checked : CheckState::Unchecked;
        box.visible = box.visible || on_;
    }
    void operator()(TextControl Controls::*member) const { (controls_.*member).text = value_; }
    void operator()(ComboControl Controls::*member) const
    {
        const std::vector<std::string_view> choices = Listed(option_.value, '|');
        const auto chosen = std::find(choices.begin(), choices.end() - 1, LowerCase(value_));
        (controls_.*member).selected = static_cast<std::size_t>(chosen - choices.begin());
    }

private:
    const Option& option_;
    bool on_;
    std::string_view value_;
    Controls& controls_;
};

/// Whether the option, when it is a list, has a choice of this name.
bool HasChoice(const Option& option, std::string_view value)
{
    if (option.othersMeanLast || !std::holds_alternative<ComboControl Controls::*>(option.control))
        return true;
    const std::vector<std::string_view> choices = Listed(option.value, '|');
    return std::find(choices.begin(), choices.end(), LowerCase(value)) != choices.end();
}

/// The word that `token` names an option by. A key is named by what stands before its "=", that sign included; no
/// switch holds one.
std::string WordOf(std::string_view token)
{
    const std::size_t equals = token.find('=');
    return LowerCase(equals == token.npos ? Trimmed(token) : token.substr(0, equals + 1));
}

/// False when `token` names no option, or of a list no choice.
bool ApplyToken(std::string_view token, Controls& controls)
{
    const Option* const option = OptionNamed(token);
    if (option == nullptr)
        return false;
    const std::string_view value = option->IsSwitch() ? token : WithoutQuotes(token.substr(token.find('=') + 1));
    if (!HasChoice(*option, value))
        return false;
    std::visit(Setter(*option, IsListed(WordOf(token), option->words), value, controls), option->control);
    return true;
}

} // namespace

const Option* OptionNamed(std::string_view token)
{
    const std::string word = WordOf(token);
    const std::span<const Option> options = Options();
    const auto named = std::find_if(options.begin(), options.end(), [&word](const Option& option) {
        return IsListed(word, option.words) || IsListed(word, option.offWords);
    });
    return named == options.end() ? nullptr : &*named;
}

std::vector<std::string_view> SplitCommandLine(std::string_view text, char delimiter)
{
    std::vector<std::string_view> tokens;
    std::size_t start = 0;
    for (;;) {
        // A token that ended in a quote may have taken the end of the text for its delimiter.
        start = std::min(start, text.size());
        std::size_t end = text.find(delimiter, start);
        const bool isLast = end == std::string_view::npos;
        const std::size_t opening = OpeningQuote(text, start, std::min(end, text.size()));
        const bool isQuoted = opening != std::string_view::npos;
        const std::size_t closing = isQuoted ? ClosingQuote(text, start, opening) : 0;
        if (isLast) {
            tokens.push_back(text.substr(start));
            return tokens;
        }
        if (isQuoted)
            end = closing + 1;
        tokens.push_back(text.substr(start, end - start));
        start = end + 1;
    }
}

std::string JoinArguments(std::vector<std::string> arguments)
{
    const auto isKey = [](const std::string& argument) { return argument.find('=') != std::string::npos; };
    const auto isQuoted = [&](const std::string& argument) {
        return isKey(argument) && argument.find(' ', argument.find('=')) != std::string::npos;
    };
    for (const std::string& argument : arguments)
        if (argument.find('"') != std::string::npos)
            throw CommandLineError("A value cannot hold a double quote: " + argument);

    // Behind a quoted value at its end, the line would have an empty token. A switch can stand anywhere behind the
    // switches that come before it, so the last one goes there.
    if (!arguments.empty() && isQuoted(arguments.back())) {
        const auto lastSwitch = std::find_if_not(arguments.rbegin(), arguments.rend(), isKey);
        if (lastSwitch != arguments.rend())
            std::rotate(std::prev(lastSwitch.base()), lastSwitch.base(), arguments.end());
    }

    std::string line;
    for (const std::string& argument : arguments) {
        if (!line.empty())
            line += ' ';
        if (isQuoted(argument)) {
            const std::size_t value = argument.find('=') + 1;
            line.append(argument, 0, value).append(1, '"').append(argument, value).append(1, '"');
        } else {
            line += argument;
        }
    }
    return line;
}

void ApplyCommandLine(std::string_view line, Controls& controls,
                      const std::function<void(std::string_view token)>& reportUnknown)
{
    const std::string_view trimmed = Trimmed(line);
    if (trimmed.empty())
        return;
    for (const std::string_view token : SplitCommandLine(trimmed, kDelimiter))
        if (!ApplyToken(token, controls))
            reportUnknown(token);
}

} // namespace velmora
