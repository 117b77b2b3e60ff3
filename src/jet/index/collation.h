#pragma once

#include "jet/base/bytes.h"

#include <array>

/// The weights of the sort order 1033 version 0, "General", as facts; what keys are made of them: text_key.h.
/// A code of up to four bytes is held as a number, its first byte highest; no code begins with a zero byte.
/// Source: entries of index pages written by Access 97, 2000 and 2003, and published data of the format.
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

} // namespace jet
