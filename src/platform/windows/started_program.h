#pragma once

#include "platform/windows/windows.h"

#include <string>
#include <vector>

namespace velmora {

/// `words` as one command line, from which the started program's own runtime makes the same words again.
[[nodiscard]] std::string QuotedWords(const std::vector<std::string>& words);

/// Starts the program `words[0]`, a path, or a name that is looked for on PATH and never in the current folder. It
/// inherits what `startup` names for its input and output. Its handle; nullptr when it could not be started.
[[nodiscard]] HANDLE StartProgram(std::vector<std::string> words, STARTUPINFOW& startup);

} // namespace velmora
