#pragma once

#include "settings/command_line_split.h"
#include "settings/controls.h"

#include <functional>
#include <string_view>

namespace velmora {

/// Sets `controls` by a raw command line (without the program's name), token by token; later ones override earlier
/// ones. Each token that names no option goes to `reportUnknown`, as it stands, and is skipped. An empty line does
/// nothing. Throws CommandLineError, before anything is set, when the line makes no sense as a whole.
void ApplyCommandLine(std::string_view line, Controls& controls,
                      const std::function<void(std::string_view token)>& reportUnknown);

} // namespace velmora
