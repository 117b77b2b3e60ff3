#pragma once

#include "settings/job.h"

#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// Moves a converted file to the name that the settings' pattern gives it. The pattern is copied, but for what stands
/// between two "%": there each letter is a code, in upper or lower case.
///
///   d m y h n s  day, month, year (four digits), hour, minute, second of `time`, local
///   p f          the old folder with its separator ("./" for none), the old name without its extension
///
/// Any other character there stands for itself. "\" separates folders in the pattern on every system. Folders on the
/// way are made; a file that has the new name already is never replaced. `oldPath` has native separators. Throws
/// RuntimeError, for an old name without an extension as well.
void RenameConvertedFile(Job& job, const std::string& oldPath, std::time_t time);

/// Why one of the renames of `files`, done in their order, must fail: a name without an extension, a pattern that gives
/// no name, the old one, one that is taken, or one that another file gets; what the time of day has a part in is not
/// foreseen. nullopt when none must, or without a pattern.
[[nodiscard]] std::optional<std::string> ImpossibleRename(const ConversionSettings& settings,
                                                          const std::vector<std::string>& files, std::time_t time);

} // namespace velmora
