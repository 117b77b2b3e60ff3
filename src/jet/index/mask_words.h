#pragma once

#include "jet/base/bytes.h"

#include <array>
#include <cstddef>
#include <cstdint>

/// The mask of an index page, a word at a time.
namespace jet {

inline constexpr std::size_t kWordBits = 64;

constexpr std::size_t WordsOf(std::size_t maskSize)
{
    return (maskSize + 7) / 8;
}

/// The bits 0 to `count` - 1; all of them from 64 on.
constexpr std::uint64_t LowBits(std::size_t count)
{
    return count >= kWordBits ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
}

/// The mask in registers' size, to move its bits: an entry that is put in moves the ends of all behind it.
class MaskWords {
public:
    explicit MaskWords(ByteSpan mask) : count_(WordsOf(mask.size()))
    {
        words_[count_ - 1] = 0;
        for (std::size_t i = 0; i < mask.size() / 8; ++i)
            words_[i] = LoadU64(mask, 8 * i);
        for (std::size_t i = mask.size() / 8 * 8; i < mask.size(); ++i)
            words_[i / 8] |= std::uint64_t{mask[i]} << 8 * (i % 8);
    }

    /// Moves the bits above `bit` up by `distance`.
    void MoveUp(std::size_t bit, std::size_t distance)
    {
        for (std::size_t i = count_; i-- > bit / kWordBits;) {
            const std::uint64_t stay = words_[i] & LowBits(i == bit / kWordBits ? bit % kWordBits + 1 : 0);
            std::uint64_t moved = 0;
            if (const std::size_t far = distance / kWordBits; i >= far) {
                moved = Above(i - far, bit) << distance % kWordBits;
                if (i > far && distance % kWordBits != 0)
                    moved |= Above(i - far - 1, bit) >> (kWordBits - distance % kWordBits);
            }
            words_[i] = stay | moved;
        }
    }

    /// Moves the bits above `bit` + `distance` down by `distance`, over those from `bit` + 1 on.
    void MoveDown(std::size_t bit, std::size_t distance)
    {
        const std::size_t far = distance / kWordBits;
        for (std::size_t i = bit / kWordBits; i < count_; ++i) {
            const std::uint64_t stay = words_[i] & LowBits(i == bit / kWordBits ? bit % kWordBits + 1 : 0);
            std::uint64_t moved = Above(i + far, bit + distance) >> distance % kWordBits;
            if (distance % kWordBits != 0)
                moved |= Above(i + far + 1, bit + distance) << (kWordBits - distance % kWordBits);
            words_[i] = stay | moved;
        }
    }

    void StoreTo(MutableBytes mask) const
    {
        for (std::size_t i = 0; i < mask.size() / 8; ++i)
            StoreU64(mask, 8 * i, words_[i]);
        for (std::size_t i = mask.size() / 8 * 8; i < mask.size(); ++i)
            mask[i] = static_cast<Byte>(words_[i / 8] >> 8 * (i % 8));
    }

private:
    /// The bits of one word that lie above `bit` of the mask.
    [[nodiscard]] std::uint64_t Above(std::size_t word, std::size_t bit) const
    {
        if (word >= count_ || (word + 1) * kWordBits <= bit + 1)
            return 0;
        const std::size_t below = bit + 1 > word * kWordBits ? bit + 1 - word * kWordBits : 0;
        return words_[word] & ~LowBits(below);
    }

    static constexpr std::size_t kMaxWords = 57; // WordsOf(453), the longest mask
    std::array<std::uint64_t, kMaxWords> words_;
    std::size_t count_;
};

} // namespace jet
