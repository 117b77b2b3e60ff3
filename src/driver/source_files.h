#pragma once

#include "settings/controls.h"

#include <optional>
#include <string>

namespace velmora {

/// Why the files named by `controls` cannot be used together: a database or a protocol would be written over one of
/// them. nullopt when all is well.
[[nodiscard]] std::optional<std::string> ClashingFiles(const Controls& controls);
/// Whether the protocol is one of the files that would be written over.
[[nodiscard]] bool IsProtocolClashing(const Controls& controls);

} // namespace velmora
