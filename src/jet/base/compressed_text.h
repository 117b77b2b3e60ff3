#pragma once

#include "jet/base/bytes.h"

#include <algorithm>
#include <array>

/// The compressed form of text in Jet 4: a mark, then one byte for each character; a zero byte switches to units of two
/// bytes, another one back. Source: rows written by Access 2000 and 2003.
namespace jet {

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
