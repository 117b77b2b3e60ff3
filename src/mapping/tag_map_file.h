#pragma once

#include "mapping/tag_map.h"
#include "settings/job.h"

#include <string>

namespace velmora {

/// Replaces `map` by the mapping file at `path` (as typed): one entry a line, the tag, a tab, the name. The first line
/// without a tab ends the reading in silence, an empty line with an error report, which leaves the entries read so far
/// and an empty one. A missing file leaves `map` as it was, with a protocol line. False when the file was missing or
/// could not be read to its end.
bool velLoadTagMapping(Job& job, TagMap& map, const std::string& path);

} // namespace velmora
