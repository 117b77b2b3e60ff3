#pragma once

namespace velmora {

/// The flags that every procedure looks at. ConversionSettings inherits from it.
struct RunFlags {
    bool blAbort = false; ///< set by the error report and by the user's cancel: every procedure returns at its entry
    bool blQuiet = false; ///< nobody is asked and nothing is shown
    bool blDebug = false; ///< trace lines are written
};

} // namespace velmora
