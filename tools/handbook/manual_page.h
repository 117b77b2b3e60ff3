#pragma once

#include "handbook/markdown.h"

#include <string>
#include <string_view>
#include <vector>

namespace velmora::handbook {

/// velmora(1) in mdoc, of a date like "March 5, 2024": the whole manual but for the window, with the options as their
/// table has them.
[[nodiscard]] std::string ConsolePage(const std::vector<Block>& manual, std::string_view date);
/// velmora-gui(1): what the manual says of the window.
[[nodiscard]] std::string WindowPage(const std::vector<Block>& manual, std::string_view date);

} // namespace velmora::handbook
