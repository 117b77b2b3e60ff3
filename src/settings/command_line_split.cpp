#include "settings/command_line_split.h"

#include <algorithm>
#include <iterator>

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

} // namespace

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

} // namespace velmora
