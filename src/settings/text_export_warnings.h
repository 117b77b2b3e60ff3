#pragma once

#include "settings/conversion_settings.h"

#include <cstddef>
#include <string>
#include <vector>

namespace velmora {

/// What about the text files of a run may surprise: protocol lines for its beginning. `sourceCount` is the number of
/// XML files. Empty without text export.
[[nodiscard]] std::vector<std::string> TextExportWarnings(const ConversionSettings& settings, std::size_t sourceCount);

} // namespace velmora
