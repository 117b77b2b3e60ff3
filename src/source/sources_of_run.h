#pragma once

#include "settings/conversion_settings.h"
#include "source/source.h"

#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// Why the sources that the settings name make no sense with the other options, or these with each other; nullopt when
/// they do. Touches nothing.
[[nodiscard]] std::optional<std::string> UnfitSources(const ConversionSettings& settings);

/// The documents in the files at `paths`: of a .zip archive each member whose name ends in .xml, in the archive's
/// order. What it holds packed once more is among them, as something that cannot be read; so is an archive without
/// documents.
[[nodiscard]] std::vector<Source> SourcesIn(const std::vector<std::string>& paths, const ConversionSettings& settings);

} // namespace velmora
