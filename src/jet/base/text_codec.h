#pragma once

#include "jet/base/bytes.h"
#include "jet/base/format.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

/// The compressed form of text in Jet 4: a mark, then one byte for each character; a zero byte switches to units of two
/// bytes, another one back. Source: rows written by Access 2000 and 2003.
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

/// Copies `text` to `to`, where there is room for it, if all its characters are 0x01 to 0x7F: the same byte in every
/// form of every format. Else false, and what is there then means nothing.
[[nodiscard]] bool CopyPlainAscii(Byte* to, std::string_view text) noexcept;
/// The same as UTF-16LE, of all characters below 0x80.
[[nodiscard]] bool ExpandAscii(Byte* to, std::string_view text) noexcept;

/// Stored text back as UTF-8: plain or compressed UTF-16LE, or code page 1252.
[[nodiscard]] std::string DecodeText(ByteSpan stored, const Format& format);
/// Jet 4: a stored value expanded to plain UTF-16LE.
[[nodiscard]] Bytes ExpandUtf16(ByteSpan stored);

inline constexpr std::array<Byte, 2> kCompressedMark{0xFF, 0xFE};
inline constexpr std::size_t kMinCompressed = 3; ///< characters; fewer would not get shorter

[[nodiscard]] inline bool IsCompressed(ByteSpan stored) noexcept
{
    return stored.size() >= kCompressedMark.size() && std::ranges::equal(stored.first(2), kCompressedMark);
}

/// Hands each UTF-16 unit of `stored`, which is compressed, to `take`, as long as that gives true.
template <typename Take>
void ExpandCompressed(ByteSpan stored, const Take& take)
{
    // The text may end in either mode. Half a unit at its end, in a damaged row, is left out.
    bool isOneByte = true;
    for (std::size_t at = kCompressedMark.size(); at < stored.size(); ++at) {
        if (stored[at] == 0) {
            isOneByte = !isOneByte;
        } else if (isOneByte) {
            if (!take(std::uint16_t{stored[at]}))
                return;
        } else if (at + 1 < stored.size()) {
            if (!take(LoadU16(stored, at)))
                return;
            ++at;
        }
    }
}

/// Are all characters of `plain`, UTF-16LE, 0x01 to 0xFF, and enough of them?
[[nodiscard]] inline bool CanCompress(ByteSpan plain) noexcept
{
    if (plain.size() < 2 * kMinCompressed || plain.size() % 2 != 0)
        return false;
    for (std::size_t i = 0; i < plain.size(); i += 2)
        if (plain[i] == 0 || plain[i + 1] != 0)
            return false;
    return true;
}

/// Appends `plain`, which CanCompress().
inline void AppendCompressed(Bytes& out, ByteSpan plain)
{
    const std::size_t begin = out.size();
    out.resize(begin + kCompressedMark.size() + plain.size() / 2);
    Byte* at = std::ranges::copy(kCompressedMark, out.data() + begin).out;
    for (std::size_t i = 0; i < plain.size(); i += 2)
        *at++ = plain[i];
}

} // namespace jet
