#pragma once

#include "jet/base/bytes.h"
#include "jet/base/format.h"

#include <string>
#include <string_view>

namespace jet {

/// `text` without the white space around it.
[[nodiscard]] std::string_view TrimBlanks(std::string_view text) noexcept;

/// Length in UTF-16 code units, which is what the engine calls characters. Malformed bytes count as one each.
[[nodiscard]] std::size_t Utf16Length(std::string_view utf8) noexcept;

/// Appends `utf8` as UTF-16LE. Malformed bytes become U+FFFD.
void AppendUtf16(Bytes& out, std::string_view utf8);
/// Appends `utf8` in code page 1252; characters outside it become "?". Gives their number.
std::size_t AppendCp1252(Bytes& out, std::string_view utf8);
/// Appends a text value as a row of `format` holds it. With `compress` (Jet 4), the compressed form is taken exactly
/// when all characters are 0x01 to 0xFF and there are at least 3 of them. Gives the number of characters that became
/// "?" (Jet 3).
std::size_t AppendText(Bytes& out, const Format& format, std::string_view utf8, bool compress);

/// Stored text back as UTF-8: plain or compressed UTF-16LE, or code page 1252.
[[nodiscard]] std::string DecodeText(ByteSpan stored, const Format& format);
/// Jet 4: a stored value expanded to plain UTF-16LE.
[[nodiscard]] Bytes ExpandUtf16(ByteSpan stored);

} // namespace jet
