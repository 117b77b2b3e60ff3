#pragma once

#include "settings/controls.h"

#include <string>

namespace velmora {

/// The command line, program path included, that reproduces the state of `controls`. It writes what differs from the
/// state at start-up and what must be named. Values stand in double quotes as they are: one that holds a double quote
/// cannot be read back. The password stands in it in clear.
[[nodiscard]] std::string BuildCommandLine(const Controls& controls);

} // namespace velmora
