#pragma once

#include "jet/base/format.h"
#include "jet/base/value.h"

#include <optional>
#include <string_view>

namespace jet {

enum class SortOrder : std::uint8_t { Ascending, Descending };

/// Which text order a column sorts by. Only General (1033, version 0) can be encoded.
struct Collation {
    std::uint16_t locale = 1033;
    std::uint8_t version = 0;
    auto operator<=>(const Collation&) const = default;
};

/// What the key of one index column depends on besides its value.
struct KeyColumn {
    ColumnType type = ColumnType::Long;
    SortOrder order = SortOrder::Ascending;
    Collation collation;
};

/// Bytes of the key of a whole number of 32 bits.
inline constexpr std::size_t kNumberKeySize = 5;

/// The ascending key of such a number, from the four bytes of a row. By far the most keys are numbers of records, two
/// or three for each that is saved.
inline void StoreNumberKey(Byte* key, ByteSpan stored)
{
    constexpr Byte kValue = 0x7F;
    constexpr std::uint32_t kSign = 0x80000000;
    key[0] = kValue;
    // Two's complement sorts like a number without a sign once its top bit is turned.
    StoreBigU32({key + 1, 4}, 0, LoadU32(stored, 0) ^ kSign);
}

/// Appends the key bytes of one column to `key`: a flag byte and, unless null, the value, so that keys compare as
/// bytes. `stored` is the value as a row holds it (text: UTF-16LE, compressed or not, or code page 1252; memo: the
/// resolved value; boolean: one byte, 0 or 1), nullopt is Null. Throws Error when the collation is not General. Source:
/// entries of index pages written by Access 97, 2000 and 2003.
void AppendKey(Bytes& key, const Format& format, const KeyColumn& column, std::optional<ByteSpan> stored);

/// The ascending text key of a UTF-8 text: what equality and order of names in the catalog mean.
[[nodiscard]] Bytes TextKey(const Format& format, std::string_view utf8);

} // namespace jet
