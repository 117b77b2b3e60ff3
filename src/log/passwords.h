#pragma once

#include <string>
#include <string_view>

namespace velmora {

/// What stands in place of a password where people can read it.
inline constexpr std::string_view kHiddenPassword = "***";

/// `text` without the passwords that a command line or an address brings into it: the value of `pwd=`, and of what may
/// have been typed for it, and the `user:password@` of each address with a scheme become `***`.
[[nodiscard]] std::string WithoutPasswords(std::string_view text);

/// `url` as typed, which may lack its scheme and may be several words: without the `user:password@`.
[[nodiscard]] std::string WithoutUserOfUrl(std::string_view url);

} // namespace velmora
