#pragma once

#include "source/source.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// What the parser takes its input for.
enum class ParseAs {
    Declared, ///< it finds out by itself
    Utf8,     ///< whatever the declaration says
    Latin1,   ///< ISO-8859-1 in one of its spellings, its bytes 80 to 9F being control characters
};

/// How the bytes of an XML file become characters.
struct InputEncoding {
    ParseAs parseAs = ParseAs::Declared;
    std::string convertFrom; ///< iconv's name of the encoding to convert to UTF-8 first; empty: the parser gets the
                             ///< file's own bytes
};

/// So many first bytes of a file are enough for DetectEncoding: declarations are short.
inline constexpr std::size_t kEncodingSniffBytes = 1024;

/// Tells the encoding by the byte order mark, by the zero bytes of wide encodings without one, and by the declaration.
/// An encoding that nobody knows is left to the parser, which says so.
[[nodiscard]] InputEncoding DetectEncoding(std::string_view firstBytes);

/// How many of `bytes` are control characters of ISO-8859-1, when that is what they are in: 80 to 9F.
[[nodiscard]] std::size_t CountControlBytes(const InputEncoding& encoding, std::string_view bytes) noexcept;

/// The encoding of this name, whatever a file declares; nullopt when nobody knows it.
[[nodiscard]] std::optional<InputEncoding> EncodingNamed(std::string_view name);

/// What the source is said to be, or what its first bytes tell.
[[nodiscard]] InputEncoding EncodingOf(const Source& source, std::string_view firstBytes);

/// Reads them.
[[nodiscard]] std::string FirstBytes(SourceStream& stream);

[[nodiscard]] bool HasByteOrderMark(std::string_view firstBytes) noexcept;

} // namespace velmora
