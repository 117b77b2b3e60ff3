#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// A command line that makes no sense as a whole; the message is meant for the user.
class CommandLineError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Splits `text` at every `delimiter`, except inside double quotes that open right behind the "=" of a key. At least
/// one token. Two delimiters in a row give an empty token; so does the end of the line behind a quoted value that holds
/// a delimiter, since the character behind a closing quote is always taken as the delimiter. Throws CommandLineError
/// for a quote that is never closed.
[[nodiscard]] std::vector<std::string_view> SplitCommandLine(std::string_view text, char delimiter);

/// `argument`s of a process as one line that SplitCommandLine takes apart again: values with blanks are put in quotes.
/// Throws CommandLineError for an argument that holds a double quote, which the line could not express.
[[nodiscard]] std::string JoinArguments(std::vector<std::string> arguments);

} // namespace velmora
