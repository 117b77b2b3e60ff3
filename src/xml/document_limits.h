#pragma once

#include "xml/document.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>

namespace velmora {

// What the arrays of a document can number. These throw std::length_error with a text for the user.

inline constexpr std::size_t kMaxText = std::numeric_limits<std::uint32_t>::max(); ///< bytes of one, slots of all

/// Is there a number for one more element, behind that many elements and attributes?
inline void CheckNumbers(std::size_t elements, std::size_t attributes)
{
    if (elements >= kNoElement - 1 || attributes >= kMaxText / 2)
        throw std::length_error("the document has too many elements or attributes");
}

inline void CheckPath(PathId path)
{
    if (path >> kPathBits != 0)
        throw std::length_error("the document has too many different paths");
}

/// May a text begin at this byte of the arena?
inline void CheckTextBegin(std::size_t begin)
{
    if (begin / kTextSlotBytes > kMaxText)
        throw std::length_error("the document holds more than 16 GB of text");
}

inline void CheckTextLength(std::size_t length)
{
    if (length > kMaxText)
        throw std::length_error("a text is longer than 4 GB");
}

} // namespace velmora
