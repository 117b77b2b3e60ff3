#pragma once

#include <optional>
#include <string_view>

namespace velmora {

/// The word of an option that `token`, which names none, was probably meant for: the same but for "-" and "_", at most
/// two letters off (one in a word of two or three letters, and letters changed over count once), or its beginning. The
/// nearest one; nullopt when none is near. It has its "=" when it is a key's.
[[nodiscard]] std::optional<std::string_view> ResemblingWord(std::string_view token);

} // namespace velmora
