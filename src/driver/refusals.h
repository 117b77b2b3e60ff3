#pragma once

#include <optional>
#include <string>

namespace velmora {

struct ConversionSettings;

/// Why a run with these settings must not begin: files that clash, or what an option cannot be used with. Nothing is
/// opened to find out, and nothing changed. nullopt when it may.
[[nodiscard]] std::optional<std::string> WhyNotToBegin(const ConversionSettings& settings);

} // namespace velmora
