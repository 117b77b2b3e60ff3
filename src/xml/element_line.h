#pragma once

#include "xml/document.h"

#include <cstddef>
#include <optional>
#include <string>

namespace velmora {

/// The line, counted from 1, on which `element` begins in the file at `path`, from which its document was loaded. Reads
/// the file up to there: for messages. nullopt when it cannot be told any more, or in this encoding.
[[nodiscard]] std::optional<std::size_t> LineOfElement(const std::string& path, ElementId element);

} // namespace velmora
