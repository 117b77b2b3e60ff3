#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <vector>

/// Bytes of a file and the integers in them. Everything on disk is little-endian, except inside index entries (Big).
/// Offsets must lie within the span; callers have checked what comes from a file.
namespace jet {

using Byte = std::uint8_t;
using Bytes = std::vector<Byte>;
using ByteSpan = std::span<const Byte>;
using MutableBytes = std::span<Byte>;

// Byte by byte, not by a cast: nothing in a page is aligned, and compilers make one load of it where they can.
inline std::uint16_t LoadU16(ByteSpan bytes, std::size_t at)
{
    return static_cast<std::uint16_t>(bytes[at] | bytes[at + 1] << 8);
}

inline std::uint32_t LoadU24(ByteSpan bytes, std::size_t at)
{
    return static_cast<std::uint32_t>(bytes[at]) | static_cast<std::uint32_t>(bytes[at + 1]) << 8 |
           static_cast<std::uint32_t>(bytes[at + 2]) << 16;
}

inline std::uint32_t LoadU32(ByteSpan bytes, std::size_t at)
{
    return LoadU24(bytes, at) | static_cast<std::uint32_t>(bytes[at + 3]) << 24;
}

inline std::int32_t LoadI32(ByteSpan bytes, std::size_t at)
{
    return static_cast<std::int32_t>(LoadU32(bytes, at));
}

inline std::uint64_t LoadU64(ByteSpan bytes, std::size_t at)
{
    return LoadU32(bytes, at) | static_cast<std::uint64_t>(LoadU32(bytes, at + 4)) << 32;
}

inline void StoreU16(MutableBytes bytes, std::size_t at, std::uint16_t value)
{
    bytes[at] = static_cast<Byte>(value);
    bytes[at + 1] = static_cast<Byte>(value >> 8);
}

inline void StoreU24(MutableBytes bytes, std::size_t at, std::uint32_t value)
{
    bytes[at] = static_cast<Byte>(value);
    bytes[at + 1] = static_cast<Byte>(value >> 8);
    bytes[at + 2] = static_cast<Byte>(value >> 16);
}

inline void StoreU32(MutableBytes bytes, std::size_t at, std::uint32_t value)
{
    StoreU24(bytes, at, value);
    bytes[at + 3] = static_cast<Byte>(value >> 24);
}

inline void StoreI32(MutableBytes bytes, std::size_t at, std::int32_t value)
{
    StoreU32(bytes, at, static_cast<std::uint32_t>(value));
}

inline void StoreU64(MutableBytes bytes, std::size_t at, std::uint64_t value)
{
    StoreU32(bytes, at, static_cast<std::uint32_t>(value));
    StoreU32(bytes, at + 4, static_cast<std::uint32_t>(value >> 32));
}

// Inside index entries, whose bytes have to sort as the numbers do.
inline std::uint32_t LoadBigU24(ByteSpan bytes, std::size_t at)
{
    return static_cast<std::uint32_t>(bytes[at]) << 16 | static_cast<std::uint32_t>(bytes[at + 1]) << 8 | bytes[at + 2];
}

inline std::uint32_t LoadBigU32(ByteSpan bytes, std::size_t at)
{
    return static_cast<std::uint32_t>(bytes[at]) << 24 | LoadBigU24(bytes, at + 1);
}

inline void StoreBigU32(MutableBytes bytes, std::size_t at, std::uint32_t value)
{
    bytes[at] = static_cast<Byte>(value >> 24);
    bytes[at + 1] = static_cast<Byte>(value >> 16);
    bytes[at + 2] = static_cast<Byte>(value >> 8);
    bytes[at + 3] = static_cast<Byte>(value);
}

inline void AppendBytes(Bytes& out, ByteSpan more)
{
    out.insert(out.end(), more.begin(), more.end());
}

} // namespace jet
