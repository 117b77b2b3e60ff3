#pragma once

#include <string>

namespace velmora {

/// What `--help` writes. Lines end in LF.
[[nodiscard]] std::string HelpText();

} // namespace velmora
