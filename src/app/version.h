#pragma once

#include <string_view>

namespace velmora {

/// Major "." minor "." revision.
[[nodiscard]] std::string_view Version() noexcept;

} // namespace velmora
