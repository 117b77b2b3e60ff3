#pragma once

#include "settings/conversion_settings.h"

#include <optional>
#include <string>

namespace velmora {

/// Why the number of threads that the settings name cannot be; nullopt when it can, or when they name none.
[[nodiscard]] std::optional<std::string> UnfitThreads(const ConversionSettings& settings);

/// How many threads may be at work, the run's own included.
[[nodiscard]] int ThreadsOf(const ConversionSettings& settings);

} // namespace velmora
