#pragma once

namespace velmora {

/// From now on the first Ctrl-C or request to terminate is only noted, so that the run can come to an orderly end; the
/// second one ends the process as usual. A reader that closes its end of a pipe no longer ends the process either.
void CatchInterrupts();

/// Whether an interrupt was noted.
[[nodiscard]] bool WasInterrupted() noexcept;

} // namespace velmora
