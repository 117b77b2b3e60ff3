#pragma once

#include "settings/controls.h"

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

struct Option;

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

/// The option that `token` switches or gives a value; nullptr when it names none.
[[nodiscard]] const Option* OptionNamed(std::string_view token);

/// Sets `controls` by a raw command line (without the program's name), token by token; later ones override earlier
/// ones. Each token that names no option goes to `reportUnknown`, as it stands, and is skipped. An empty line does
/// nothing. Throws CommandLineError, before anything is set, when the line makes no sense as a whole.
void ApplyCommandLine(std::string_view line, Controls& controls,
                      const std::function<void(std::string_view token)>& reportUnknown);

/// The word of an option that `token`, which names none, was probably meant for: the same but for "-" and "_", at most
/// two letters off (one in a word of two or three letters, and letters changed over count once), or its beginning. The
/// nearest one; nullopt when none is near. It has its "=" when it is a key's.
[[nodiscard]] std::optional<std::string_view> ResemblingWord(std::string_view token);

/// The command line, program path included, that reproduces the state of `controls`. It writes what differs from the
/// state at start-up and what must be named. Values stand in double quotes as they are: one that holds a double quote
/// cannot be read back. The password stands in it in clear: whoever shows the line or writes it somewhere takes the
/// other one.
[[nodiscard]] std::string BuildCommandLine(const Controls& controls);
/// The same with `***` in place of passwords.
[[nodiscard]] std::string ShownCommandLine(const Controls& controls);
/// The controls with `***` in place of passwords, for whoever shows them.
[[nodiscard]] Controls ShownControls(Controls controls);

} // namespace velmora
