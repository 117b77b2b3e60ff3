#pragma once

#include "log/runtime_error.h"

namespace velmora {

/// The flags that every procedure looks at. ConversionSettings inherits from it.
struct RunFlags {
    bool blAbort = false; ///< the run is to end, by an error report or the user's cancel: see ThrowIfAborted()
    bool blQuiet = false; ///< nobody is asked and nothing is shown
    bool blDebug = false; ///< trace lines are written
};

/// The one question for it: asked at the entry of each procedure, and where events are processed.
inline void ThrowIfAborted(const RunFlags& flags)
{
    if (flags.blAbort)
        throw Aborted();
}

} // namespace velmora
