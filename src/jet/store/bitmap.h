#pragma once

#include "jet/base/bytes.h"

#include <bit>
#include <optional>

/// Sets of numbers as bits, the least significant bit of each byte first.
namespace jet {

[[nodiscard]] inline bool TestBit(ByteSpan bits, std::size_t bit)
{
    return (bits[bit / 8] >> bit % 8 & 1) != 0;
}

inline void SetBit(MutableBytes bits, std::size_t bit)
{
    bits[bit / 8] |= static_cast<Byte>(1u << bit % 8);
}

inline void ClearBit(MutableBytes bits, std::size_t bit)
{
    bits[bit / 8] &= static_cast<Byte>(~(1u << bit % 8));
}

/// The first set bit at `from` or behind it.
[[nodiscard]] inline std::optional<std::size_t> NextSetBit(ByteSpan bits, std::size_t from)
{
    std::size_t byte = from / 8;
    if (byte >= bits.size())
        return std::nullopt;
    if (const unsigned rest = static_cast<unsigned>(bits[byte]) >> from % 8; rest != 0)
        return from + static_cast<std::size_t>(std::countr_zero(rest));
    ++byte;
    // Maps of large files are long and mostly empty, so eight bytes at a time.
    while (byte + 8 <= bits.size() && LoadU64(bits, byte) == 0)
        byte += 8;
    while (byte < bits.size() && bits[byte] == 0)
        ++byte;
    if (byte == bits.size())
        return std::nullopt;
    return byte * 8 + static_cast<std::size_t>(std::countr_zero(static_cast<unsigned>(bits[byte])));
}

} // namespace jet
