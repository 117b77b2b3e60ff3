#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Whether `name` matches `pattern`, in which "*" stands for any run of characters and "?" for exactly one. Upper and
/// lower case differ, except on Windows (ASCII letters only). Takes time proportional to the product of the lengths at
/// worst.
[[nodiscard]] bool MatchesWildcards(std::string_view pattern, std::string_view name) noexcept;

/// Whether the file-name part of `path` holds a wildcard.
[[nodiscard]] bool HasWildcards(std::string_view path) noexcept;

/// The ordinary files (links to such included) that `typed` names: its folder as written, with this system's
/// separators, and a name, in bytewise order of the names. The name part may hold wildcards; as in a shell, they leave
/// out names that begin with a dot unless the pattern begins with one. Empty when nothing matches or the folder cannot
/// be read.
[[nodiscard]] std::vector<std::string> ListFiles(std::string_view typed);

/// How many there were if upper and lower case (of ASCII letters) were the same.
[[nodiscard]] std::size_t CountFilesInAnyCase(std::string_view typed);

} // namespace velmora
