#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

namespace velmora {

/// What stands between folders on this system: `\` on Windows, `/` elsewhere.
inline constexpr char kPathSeparator = static_cast<char>(std::filesystem::path::preferred_separator);

/// Whether names that differ in upper and lower case only are names of one file, as on Windows.
extern const bool kNamesIgnoreCase;

/// `typed` as this system writes it. Both `/` and `\` separate folders in what a person types, everywhere.
[[nodiscard]] std::string NativePath(std::string_view typed);

/// Everything in `path` up to and including its last separator; empty when it has none.
[[nodiscard]] std::string_view FolderPart(std::string_view path) noexcept;
/// What follows the last separator; the whole path when it has none.
[[nodiscard]] std::string_view NamePart(std::string_view path) noexcept;

/// A path for the standard library from a UTF-8 text, and back. What is no UTF-8 passes unchanged where the system
/// allows it. On Windows a path that is too long for most of its functions gets the prefix that they take it with.
[[nodiscard]] std::filesystem::path PathFromUtf8(std::string_view text);
[[nodiscard]] std::string Utf8FromPath(const std::filesystem::path& path);

/// Whether `path` (as typed) names a folder that is there. False for the empty text.
[[nodiscard]] bool FolderExists(std::string_view path);
/// Whether `path` (as typed) names an ordinary file that is there, possibly through a link.
[[nodiscard]] bool FileExists(std::string_view path);

/// Whether two texts name one file: through links, other spellings of the folder, and for files that are not there yet.
/// False when one is empty.
[[nodiscard]] bool IsSameFile(std::string_view first, std::string_view second);

/// A text that two paths have in common when they name one file, which is there: through links, and where the file
/// system takes several spellings for one.
[[nodiscard]] std::string FileIdentity(const std::string& path);

/// fopen for a UTF-8 name; `mode` as there. nullptr when it fails, with errno set.
[[nodiscard]] std::FILE* OpenFileStream(std::string_view path, const char* mode);

} // namespace velmora
