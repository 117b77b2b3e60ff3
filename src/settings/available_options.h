#pragma once

#include "settings/controls.h"

#include <optional>
#include <string_view>

namespace velmora {

/// A message about the first option that is set in `controls` and that this version cannot carry out; nullopt when
/// there is none. To be asked before anything is deleted or opened.
[[nodiscard]] std::optional<std::string_view> UnavailableOption(const Controls& controls);

} // namespace velmora
