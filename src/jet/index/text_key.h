#pragma once

#include "jet/base/bytes.h"
#include "jet/base/format.h"
#include "jet/index/index_key.h"

#include <array>
#include <cstddef>

/// The value part of text keys (what follows the flag byte), one file per format.
namespace jet {

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

} // namespace jet
