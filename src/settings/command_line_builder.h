#pragma once

#include "settings/controls.h"

#include <string>

namespace velmora {

/// The command line, program path included, that reproduces the state of `controls`. It writes what differs from the
/// state at start-up and what must be named. Values stand in double quotes as they are: one that holds a double quote
/// cannot be read back. The password stands in it in clear: whoever shows the line or writes it somewhere takes the
/// other one.
[[nodiscard]] std::string BuildCommandLine(const Controls& controls);
/// The same with `***` in place of passwords.
[[nodiscard]] std::string ShownCommandLine(Controls controls);

} // namespace velmora
