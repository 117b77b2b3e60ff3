#include "jet/index/text_key.h"

#include <algorithm>

namespace jet {

namespace {

constexpr Byte kBlank = 0x20;
constexpr Byte kNoAccent = 2; ///< digit of a letter that could carry an accent and does not

/// The primary weights of the letters that may carry an accent: a c e i n o s u y. Only they give a digit.
constexpr bool IsAccentable(Byte primary)
{
    constexpr std::array<Byte, 9> kAccentable{0x60, 0x62, 0x66, 0x6A, 0x70, 0x72, 0x76, 0x78, 0x7D};
    return std::ranges::find(kAccentable, primary) != kAccentable.end();
}

/// Collects the digits of the accents; a text has at most two per character.
/// They follow behind all letters: accents decide only between texts that are equal without them.
class AccentDigits {
public:
    void AddFor(Byte primary, Byte accent) noexcept
    {
        if (!IsAccentable(primary))
            return;
        digits_[count_++] = accent != 0 ? accent : kNoAccent;
        if (accent != 0)
            significant_ = count_;
    }

    /// 00 when no letter has an accent; else 0, the digits up to the last accent, 0, packed two to a byte.
    void AppendTo(Bytes& key) const
    {
        if (significant_ == 0) {
            key.push_back(0);
            return;
        }
        for (std::size_t at = 0; at < significant_ + 2; at += 2)
            key.push_back(static_cast<Byte>(Padded(at) << 4 | Padded(at + 1)));
    }

private:
    [[nodiscard]] Byte Padded(std::size_t at) const noexcept
    {
        return at == 0 || at > significant_ ? Byte{0} : digits_[at - 1];
    }

    std::array<Byte, 2 * kMaxTextUnits> digits_;
    std::size_t count_ = 0;
    std::size_t significant_ = 0; ///< digits up to the last that is an accent
};

} // namespace

void AppendJet3TextKey(Bytes& key, ByteSpan text, SortOrder order)
{
    text = text.first(std::min(text.size(), kMaxTextUnits));
    // So a text is equal to itself filled up with blanks, as columns of fixed width hold it.
    while (!text.empty() && text.back() == kBlank)
        text = text.first(text.size() - 1);

    const std::size_t begin = key.size();
    AccentDigits accents;
    const auto add = [&](Byte primary, Byte accent) {
        key.push_back(primary);
        accents.AddFor(primary, accent);
    };
    for (const Byte character : text) {
        const Jet3Weight& weight = kJet3General[character];
        if (weight.primary > 0xFF)
            add(static_cast<Byte>(weight.primary >> 8), weight.accent);
        add(static_cast<Byte>(weight.primary), weight.accent);
    }
    accents.AppendTo(key);
    if (order == SortOrder::Descending)
        Complement(MutableBytes(key).subspan(begin));
}

} // namespace jet
