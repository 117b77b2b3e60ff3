#pragma once

#include "driver/places.h"
#include "settings/job.h"

namespace velmora {

/// Brings the controls of a run into text files to where it can begin: makes the folder, asks for a delimiter that is
/// missing unless the run is quiet, names the scratch database when none is named. False when the user cancelled the
/// question. Nothing without a text folder. Throws RuntimeError.
[[nodiscard]] bool PrepareTextMode(Job& job, const Places& places, Step& step);

/// Moves on from the scratch database that PrepareTextMode has named to the next one that no other run uses.
void TakeFreeScratchDatabase(Job& job, const Places& places);

} // namespace velmora
