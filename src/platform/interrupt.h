#pragma once

namespace velmora {

/// From now on the first Ctrl-C, request to terminate or hang-up of the terminal is only noted, so that the run can
/// come to an orderly end; the second one ends the process as usual. Hang-ups that are ignored stay ignored. A reader
/// that closes its end of a pipe no longer ends the process either.
void CatchInterrupts();

/// Whether an interrupt was noted.
[[nodiscard]] bool WasInterrupted() noexcept;

} // namespace velmora
