#pragma once

#include <bit>
#include <cassert>
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

/// What the processor fetches at a time. Where every record is of another table, what comes with each stands in as few
/// of these as can be.
inline constexpr std::size_t kCacheLine = 64;

namespace bytes_detail {

/// `value` with its bytes the other way round when the machine's are not in the order wanted.
template <std::endian kOrder, typename Word>
constexpr Word InOrder(Word value)
{
    if constexpr (kOrder == std::endian::native)
        return value;
    else if constexpr (sizeof(Word) == 2)
        return __builtin_bswap16(value);
    else if constexpr (sizeof(Word) == 4)
        return __builtin_bswap32(value);
    else
        return __builtin_bswap64(value);
}

// Nothing in a page is aligned; a copy of so many bytes is one instruction, which bytes taken one by one are not.
template <typename Word, std::endian kOrder = std::endian::little>
Word Load(ByteSpan bytes, std::size_t at)
{
    assert(at <= bytes.size() && sizeof(Word) <= bytes.size() - at);
    Word value;
    std::memcpy(&value, bytes.data() + at, sizeof value);
    return InOrder<kOrder>(value);
}

template <typename Word, std::endian kOrder = std::endian::little>
void Store(MutableBytes bytes, std::size_t at, Word value)
{
    assert(at <= bytes.size() && sizeof(Word) <= bytes.size() - at);
    value = InOrder<kOrder>(value);
    std::memcpy(bytes.data() + at, &value, sizeof value);
}

} // namespace bytes_detail

inline std::uint16_t LoadU16(ByteSpan bytes, std::size_t at)
{
    return bytes_detail::Load<std::uint16_t>(bytes, at);
}

inline std::uint32_t LoadU24(ByteSpan bytes, std::size_t at)
{
    return LoadU16(bytes, at) | static_cast<std::uint32_t>(bytes[at + 2]) << 16;
}

inline std::uint32_t LoadU32(ByteSpan bytes, std::size_t at)
{
    return bytes_detail::Load<std::uint32_t>(bytes, at);
}

inline std::int32_t LoadI32(ByteSpan bytes, std::size_t at)
{
    return static_cast<std::int32_t>(LoadU32(bytes, at));
}

inline std::uint64_t LoadU64(ByteSpan bytes, std::size_t at)
{
    return bytes_detail::Load<std::uint64_t>(bytes, at);
}

inline void StoreU16(MutableBytes bytes, std::size_t at, std::uint16_t value)
{
    bytes_detail::Store(bytes, at, value);
}

inline void StoreU24(MutableBytes bytes, std::size_t at, std::uint32_t value)
{
    StoreU16(bytes, at, static_cast<std::uint16_t>(value));
    bytes[at + 2] = static_cast<Byte>(value >> 16);
}

inline void StoreU32(MutableBytes bytes, std::size_t at, std::uint32_t value)
{
    bytes_detail::Store(bytes, at, value);
}

inline void StoreI32(MutableBytes bytes, std::size_t at, std::int32_t value)
{
    StoreU32(bytes, at, static_cast<std::uint32_t>(value));
}

inline void StoreU64(MutableBytes bytes, std::size_t at, std::uint64_t value)
{
    bytes_detail::Store(bytes, at, value);
}

// Inside index entries, whose bytes have to sort as the numbers do.
inline std::uint32_t LoadBigU24(ByteSpan bytes, std::size_t at)
{
    return static_cast<std::uint32_t>(bytes[at]) << 16 | static_cast<std::uint32_t>(bytes[at + 1]) << 8 | bytes[at + 2];
}

inline std::uint32_t LoadBigU32(ByteSpan bytes, std::size_t at)
{
    return bytes_detail::Load<std::uint32_t, std::endian::big>(bytes, at);
}

inline std::uint64_t LoadBigU64(ByteSpan bytes, std::size_t at)
{
    return bytes_detail::Load<std::uint64_t, std::endian::big>(bytes, at);
}

inline void StoreBigU32(MutableBytes bytes, std::size_t at, std::uint32_t value)
{
    bytes_detail::Store<std::uint32_t, std::endian::big>(bytes, at, value);
}

/// Copies bytes, mostly a few: then without a call. They may overlap.
inline void CopyBytes(Byte* to, const Byte* from, std::size_t size)
{
    struct TwoWords {
        std::uint64_t low, high;
    };
    const auto copyEnds = [&]<typename Word>(Word first) {
        Word last{};
        std::memcpy(&first, from, sizeof first);
        std::memcpy(&last, from + size - sizeof last, sizeof last);
        std::memcpy(to, &first, sizeof first);
        std::memcpy(to + size - sizeof last, &last, sizeof last);
    };
    if (size > 2 * sizeof(TwoWords))
        std::memmove(to, from, size);
    else if (size >= sizeof(TwoWords))
        copyEnds(TwoWords{});
    else if (size >= sizeof(std::uint64_t))
        copyEnds(std::uint64_t{0});
    else if (size >= sizeof(std::uint32_t))
        copyEnds(std::uint32_t{0});
    else if (size >= sizeof(std::uint16_t))
        copyEnds(std::uint16_t{0});
    else if (size != 0)
        *to = *from;
}

inline void AppendBytes(Bytes& out, ByteSpan more)
{
    out.insert(out.end(), more.begin(), more.end());
}

} // namespace jet
