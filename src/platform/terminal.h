#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

namespace velmora {

/// Whether `stream` writes to a terminal.
[[nodiscard]] bool IsTerminal(std::FILE* stream) noexcept;
/// Columns of the terminal behind `stream`; 80 when that is not known.
[[nodiscard]] std::size_t TerminalColumns(std::FILE* stream) noexcept;

/// Whether `stream` writes to a terminal that obeys escape sequences.
[[nodiscard]] bool TakesEscapes(std::FILE* stream) noexcept;

/// To be called once, at the beginning: bytes written to the standard streams arrive as they are, and those that go to
/// a terminal are shown as UTF-8.
void PrepareStreams();

/// `text` with every control character but tab and line feed replaced by "?": names from a document or a folder must
/// not steer the terminal. Carriage returns in front of line feeds go.
[[nodiscard]] std::string Printable(std::string_view text);

/// From now on the first Ctrl-C, request to terminate or hang-up of the terminal is only noted, so that the run can
/// come to an orderly end; the second one ends the process as usual. Hang-ups that are ignored stay ignored. A reader
/// that closes its end of a pipe no longer ends the process either.
void CatchInterrupts();

/// Whether an interrupt was noted.
[[nodiscard]] bool WasInterrupted() noexcept;

} // namespace velmora
