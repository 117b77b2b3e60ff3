#pragma once

#include "jet/base/bytes.h"
#include "jet/base/format.h"
#include "jet/index/index_key.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

/// The value part of text keys (what follows the flag byte), one file per format, and what they are made of: the
/// weights of the sort order 1033 version 0, "General", as facts. A code of up to four bytes is held as a number, its
/// first byte highest; no code begins with a zero byte. Source: entries of index pages written by Access 97, 2000 and
/// 2003, and published data of the format.
namespace jet {

/// Jet 3: one byte of code page 1252.
struct Jet3Weight {
    std::uint16_t primary; ///< one or two bytes, never none
    Byte accent;           ///< 3 to 10 in accented letters, else 0
};

extern const std::array<Jet3Weight, 256> kJet3General;

enum class WeightKind : Byte {
    None,      ///< counts for nothing
    Plain,     ///< letter, digit or symbol without an accent
    Accented,  ///< with a secondary code of its own
    FullKana,  ///< full-size kana, which count as accented where they have a secondary code
    SmallKana, ///< small kana
    Modifier,  ///< changes the secondary code before it
    Hidden,    ///< counts only when all else is equal: hyphens, apostrophes, control characters
};

/// Jet 4: the code units `first` to `last`. The codes are those of `first`; where `steps`, each further code unit has
/// the code that follows (the primary one, or the secondary where there is no primary): last byte + 1, and after FF
/// comes 02 with the byte before it raised by 1.
struct Jet4WeightRow {
    std::uint16_t first;
    std::uint16_t last;
    WeightKind kind;
    bool steps;
    std::uint32_t primary;
    std::uint16_t secondary;
};

/// The rows cover 0000 to FFFF without gap or overlap, in order.
extern const std::array<Jet4WeightRow, 3260> kJet4General;

/// Inverts every bit: what makes ascending key bytes descend.
inline void Complement(MutableBytes bytes)
{
    for (Byte& byte : bytes)
        byte = static_cast<Byte>(~byte);
}

/// `text`: code page 1252; what lies behind the first 255 characters does not count.
void AppendJet3TextKey(Bytes& key, ByteSpan text, SortOrder order);

/// The code units of a text that reach its key: the first 255.
class KeyUnits {
public:
    /// Of a value as a row holds it: UTF-16LE or the compressed form.
    [[nodiscard]] static KeyUnits OfStored(ByteSpan stored);
    /// Of plain UTF-16LE, also when it begins with the bytes that mark the compressed form.
    [[nodiscard]] static KeyUnits OfUtf16(ByteSpan utf16);

    [[nodiscard]] std::size_t Count() const noexcept { return count_; }
    [[nodiscard]] std::uint16_t operator[](std::size_t index) const noexcept { return units_[index]; }

private:
    KeyUnits() {} // leaves the array as it is: only its first count_ elements are ever read
    std::array<std::uint16_t, kMaxTextUnits> units_;
    std::size_t count_ = 0;
};

void AppendJet4TextKey(Bytes& key, const KeyUnits& text, SortOrder order);
/// The same, ascending, of a text that is nothing but ASCII letters, digits and the like, as most names are. False, and
/// nothing is appended, when it is another one.
[[nodiscard]] bool AppendPlainJet4TextKey(Bytes& key, std::string_view ascii);

} // namespace jet
