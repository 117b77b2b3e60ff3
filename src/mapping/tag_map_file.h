#pragma once

#include "mapping/tag_map.h"
#include "settings/job.h"

#include <string>
#include <string_view>

namespace velmora {

/// Replaces `map` by the mapping file at `path` (as typed): one entry a line, the tag, a tab, the name. The file is
/// UTF-8, or UTF-16 with its mark; what is neither is taken as windows-1252, with a protocol line. The first line
/// without a tab ends the reading in silence, an empty line with an error report, which leaves the entries read so far
/// and an empty one. A missing file leaves `map` as it was, with a protocol line. False when the file was missing or
/// could not be read to its end.
bool velLoadTagMapping(Job& job, TagMap& map, const std::string& path);

/// What is shown when there is nothing to save.
inline constexpr std::string_view kNothingToSave = "There is no mapping to be saved!";

/// The beginning of saving, before a file is chosen: removes the blank entries of `map`. False when none are left, and
/// the caller shows kNothingToSave then.
[[nodiscard]] bool PrepareSaving(Job& job, TagMap& map);

/// Writes `map` to `path`, in place of what may be there, and makes it the mapping file of the controls. False when it
/// could not be written, after the error report; an older file is as it was then.
bool SaveTagMapping(Job& job, const TagMap& map, const std::string& path);

} // namespace velmora
