#pragma once

#include "plan/mapping_plan.h"
#include "xml/document.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velmora {

/// "1.5 GB"
[[nodiscard]] std::string SizeText(std::uint64_t bytes);

/// What to say of a database that will have about so many bytes, where its format allows `maxBytes`; nullopt when there
/// is room.
[[nodiscard]] std::optional<std::string> SizeWarning(std::uint64_t bytes, std::uint64_t maxBytes);

/// About how much the database grows by `document`: what its texts, the rows and the entries of their indexes take.
[[nodiscard]] std::uint64_t EstimatedGrowth(const Document& document, const MappingPlan& plan);

} // namespace velmora
