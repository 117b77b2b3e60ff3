#pragma once

#include "settings/controls.h"
#include "settings/conversion_settings.h"

#include <functional>

namespace velmora {

/// Takes the snapshot that a run works with: fills `settings` from `controls`. The run-state flags blAbort and blDebug
/// are left alone; the delimiter and the append flag keep their values from an earlier run when no text folder is
/// named. `rebuildTagMap` brings the tag map up to date with the mapping list and tells whether it has entries.
void ReadSettingsFromForm(const Controls& controls, ConversionSettings& settings,
                          const std::function<bool()>& rebuildTagMap);

} // namespace velmora
