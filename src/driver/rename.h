#pragma once

#include "settings/job.h"

#include <ctime>
#include <string>

namespace velmora {

/// Moves a converted file to the name that the controls' pattern gives it. The pattern is copied, but for what stands
/// between two "%": there each letter is a code, in upper or lower case.
///
///   d m y h n s  day, month, year (four digits), hour, minute, second of `time`, local
///   p f          the old folder with its separator, the old name without its extension
///
/// Any other character there stands for itself. "\" separates folders in the pattern on every system. Folders on the
/// way are made; a file that has the new name already is never replaced. `oldPath` has native separators. Throws
/// RuntimeError, for an old name without an extension as well.
void RenameConvertedFile(Job& job, const std::string& oldPath, std::time_t time);

} // namespace velmora
