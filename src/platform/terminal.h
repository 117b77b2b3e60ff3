#pragma once

#include <cstddef>
#include <cstdio>

namespace velmora {

/// Whether `stream` writes to a terminal.
[[nodiscard]] bool IsTerminal(std::FILE* stream) noexcept;
/// Columns of the terminal behind `stream`; 80 when that is not known.
[[nodiscard]] std::size_t TerminalColumns(std::FILE* stream) noexcept;

} // namespace velmora
