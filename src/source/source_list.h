#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

/// Stands between several sources.
inline constexpr char kSourceSeparator = '|';
/// Stands before the name of a file that lists sources.
inline constexpr char kListMark = '@';

/// The files that a source's text names: a file; a pattern, whose files come in the order of their names; `@` and a
/// file with a name on each line, taken as it stands; or several of these with `|` between them, in their order; or,
/// as the whole text, kStandardInput. A file
/// that is named twice counts once. Where a file has the whole text for its name, bars and all, that is the one.
struct SourceFiles {
    std::vector<std::string> paths; ///< those that are there
    /// Why there is nothing to convert: one of the names has no file. nullopt when all have.
    std::optional<std::string> problem;
};
[[nodiscard]] SourceFiles ListSourceFiles(std::string_view text);

/// Whether `path` is one of the files that `text` names, or their list. One that is not there may be meant as well.
[[nodiscard]] bool NamesSource(std::string_view text, std::string_view path);

} // namespace velmora
