#pragma once

#include <string>
#include <vector>

namespace velmora {

/// The arguments of a process, with those that are plain file names in the form of options.
struct PlainWords {
    std::vector<std::string> arguments;
    bool nameFiles = false; ///< there were such names
};

/// Takes `velmora in/*.xml all.mdb`, as a shell expands it, for the options that it means: before the command line is
/// parsed, which knows no plain names. A word that is no option is
///
/// - the database, when it ends in `.mdb`: kept and extended, unless another word asks for its re-creation;
/// - a source, when it ends in `.xml` or a packed form of it, or is a file that begins like one.
///
/// All else is left to the parser. What has a sign at its front or a "=" in its first part may be a mistyped option,
/// which must become neither. Throws CommandLineError for such a word when a file of that name is there too, for two
/// databases, for sources named in two ways, and for a name that cannot be listed with others.
[[nodiscard]] PlainWords TakePlainWords(const std::vector<std::string>& arguments);

} // namespace velmora
