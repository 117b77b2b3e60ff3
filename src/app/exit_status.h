#pragma once

#include "driver/batch.h"

namespace velmora {

/// What the process tells its caller.
enum class ExitStatus {
    Success = 0,          ///< everything converted
    Error = 1,            ///< ended by an error report
    NothingToConvert = 2, ///< no source named or found, a target that must not be written, a senseless command line
    Incomplete = 3,  ///< done, but a source or the mapping file could not be read, or, strictly, something was left out
    Cancelled = 130, ///< by the user; what a shell reports for a program ended by Ctrl-C
};

/// The gravest of what happened. `mappingLoaded` is false when a mapping file was named and could not be read to its
/// end. A `strict` caller also wants to know of what was left out, and so does whoever asks for a preview.
[[nodiscard]] ExitStatus StatusOf(const RunOutcome& outcome, bool mappingLoaded, bool strict) noexcept;

} // namespace velmora
