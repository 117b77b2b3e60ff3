#pragma once

#include "settings/conversion_settings.h"

#include <optional>
#include <string>

namespace velmora {

/// Is a run asked for that writes a database as XML?
[[nodiscard]] inline bool IsWayBack(const ConversionSettings& settings)
{
    return !settings.xmlFile.empty();
}

/// Why such a run makes no sense as it is asked for; nullopt when it does. Touches nothing.
[[nodiscard]] std::optional<std::string> UnfitWayBack(const ConversionSettings& settings);

} // namespace velmora
