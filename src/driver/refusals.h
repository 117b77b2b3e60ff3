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

/// Why a run with these settings must not begin: files that clash, or what an option cannot be used with. Nothing is
/// opened to find out, and nothing changed. nullopt when it may.
[[nodiscard]] std::optional<std::string> WhyNotToBegin(const ConversionSettings& settings);

} // namespace velmora
