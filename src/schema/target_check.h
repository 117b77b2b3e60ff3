#pragma once

#include "settings/conversion_settings.h"

#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// Why the file that the settings name as the target must not become one: it holds something else, or Access would
/// refuse the new database for its name. nullopt when all is well. Touches nothing.
[[nodiscard]] std::optional<std::string> UnfitTarget(const ConversionSettings& settings);

/// Is the file at `path` (as typed) a database of Access 97 to 2003, be it damaged or locked? True also when it cannot
/// be read: that is for opening it to say.
[[nodiscard]] bool IsDatabase(std::string_view path);

/// Has somebody the database at `path` (as typed) open, or makes one there?
[[nodiscard]] bool IsTargetInUse(std::string_view path);

} // namespace velmora
