#pragma once

#include <string_view>

namespace velmora {

/// What the first bytes of a file tell of it. Names tell nothing: a file may have any.
enum class Form { Xml, Gzip, Bzip2, Xz, Zstd, Zip, Other };

/// So many first bytes are enough for FormOf.
inline constexpr std::size_t kFormBytes = 64;

/// Xml is what may be XML: white space and a "<" in ASCII, EBCDIC or one of the wide encodings, with or without a byte
/// order mark. Nothing is said about what follows.
[[nodiscard]] Form FormOf(std::string_view firstBytes) noexcept;

/// The same of a file, as typed; Other when it cannot be read.
[[nodiscard]] Form FormOfFile(std::string_view path);

} // namespace velmora
