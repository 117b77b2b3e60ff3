#pragma once

#include <string>
#include <string_view>

namespace velmora {

/// A value as a message shows it: in quotes, on one line, cut to 40 characters.
[[nodiscard]] std::string QuotedSample(std::string_view value);

} // namespace velmora
