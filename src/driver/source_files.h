#pragma once

#include "settings/controls.h"

#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// Why the files named by `controls` cannot be used together: a database or a protocol would be written over one of
/// them. `sources` are the XML files that were found. nullopt when all is well.
[[nodiscard]] std::optional<std::string> ClashingFiles(const Controls& controls,
                                                       const std::vector<std::string>& sources);

} // namespace velmora
