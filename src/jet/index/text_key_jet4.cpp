#include "jet/base/text_codec.h"
#include "jet/index/text_key.h"

#include <algorithm>
#include <bit>

namespace jet {

namespace {

constexpr std::uint16_t kBlank = 0x20;
constexpr Byte kSeparator = 0x01;
constexpr Byte kNoSecondary = 0x02; ///< of a character without an accent; dropped from the end of the list
constexpr Byte kEnd = 0x00;
constexpr Byte kFullKana = 3;
constexpr Byte kSmallKana = 2;
constexpr std::array<Byte, 5> kKanaEnd{0xFF, 0x02, 0x80, 0xFF, 0x80};
constexpr Byte kHiddenFollows = 0xFF; ///< between kana and hidden entries
constexpr Byte kHiddenMark = 0x06;    ///< third byte of each hidden entry

/// What one code unit contributes to a key.
struct Weight {
    WeightKind kind = WeightKind::None;
    Byte primarySize = 0;
    Byte secondarySize = 0; ///< at least 1 in what is a letter
    std::array<Byte, 4> primary{};
    std::array<Byte, 2> secondary{};
};

bool IsLetter(WeightKind kind)
{
    return kind != WeightKind::None && kind != WeightKind::Modifier && kind != WeightKind::Hidden;
}

template <std::size_t kSize>
Byte StoreCode(std::array<Byte, kSize>& bytes, std::uint32_t code)
{
    const auto size = static_cast<std::size_t>((std::bit_width(code) + 7) / 8);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<Byte>(code >> 8 * (size - 1 - i));
    return static_cast<Byte>(size);
}

/// The code that comes so many steps behind `code`: 00 and 01 do not occur in a code's last place.
std::uint32_t CodeBehind(std::uint32_t code, std::uint32_t steps)
{
    constexpr std::uint32_t kFirst = 0x02;
    constexpr std::uint32_t kCount = 0x100 - kFirst;
    if (steps == 0)
        return code;
    const std::uint32_t place = (code & 0xFF) - kFirst + steps;
    return CodeBehind(code >> 8, place / kCount) << 8 | (kFirst + place % kCount);
}

/// What the row of the unit says.
Weight SearchWeight(std::uint16_t unit)
{
    const Jet4WeightRow& row = *(std::ranges::upper_bound(kJet4General, unit, {}, &Jet4WeightRow::first) - 1);
    std::uint32_t primary = row.primary;
    std::uint32_t secondary = row.secondary;
    if (row.steps) {
        std::uint32_t& moving = primary != 0 ? primary : secondary;
        moving = CodeBehind(moving, static_cast<std::uint32_t>(unit - row.first));
    }
    Weight weight;
    weight.kind = row.kind;
    weight.primarySize = StoreCode(weight.primary, primary);
    weight.secondarySize = StoreCode(weight.secondary, secondary);
    // One mark for a letter without an accent.
    if (weight.secondarySize == 0 && IsLetter(row.kind))
        weight.secondarySize = StoreCode(weight.secondary, kNoSecondary);
    return weight;
}

/// Latin, Greek and Cyrillic letters: they cost one look instead of a search among 3,260 rows. All 65,536 code units
/// would take half a millisecond at the start of each program.
class OftenWeights {
public:
    static constexpr std::uint16_t kCount = 0x500;

    OftenWeights()
    {
        for (std::uint16_t unit = 0; unit < kCount; ++unit)
            weights_[unit] = SearchWeight(unit);
    }
    [[nodiscard]] const Weight& operator[](std::uint16_t unit) const { return weights_[unit]; }

private:
    std::array<Weight, kCount> weights_;
};

const OftenWeights& Often()
{
    static const OftenWeights weights;
    return weights;
}

/// The parts of one key while its text is read. The arrays hold what 255 code units can give at most.
/// Each part decides only where all before it are equal: first letters, then accents, then the size of kana, and last
/// hyphens, apostrophes and control characters, by where they stand.
class KeyParts {
public:
    void Add(const Weight& weight)
    {
        switch (weight.kind) {
        case WeightKind::None:
            break;
        case WeightKind::FullKana:
        case WeightKind::SmallKana:
            AddKana(weight.kind == WeightKind::SmallKana);
            [[fallthrough]];
        case WeightKind::Plain:
        case WeightKind::Accented:
            AddLetter(weight);
            break;
        case WeightKind::Modifier:
            Modify(weight.secondary[0]);
            break;
        case WeightKind::Hidden:
            Hide(weight.secondary[0]);
            break;
        }
    }

    /// Appends everything up to and with the closing 00.
    void AppendTo(Bytes& key) const
    {
        constexpr std::size_t kMarks = 16; // of all kinds
        key.reserve(key.size() + primaryCount_ + secondaryCount_ + kanaCount_ + hiddenCount_ + kMarks);
        AppendBytes(key, {primary_.data(), primaryCount_});
        key.push_back(kSeparator);
        AppendBytes(key, {secondary_.data(), SignificantSecondaries()});
        if (kanaCount_ != 0 || hiddenCount_ != 0) {
            key.insert(key.end(), 2, kSeparator);
            if (kanaCount_ != 0)
                AppendKana(key);
            if (hiddenCount_ != 0) {
                if (kanaCount_ != 0)
                    key.push_back(kHiddenFollows);
                key.push_back(kSeparator);
                AppendBytes(key, {hidden_.data(), hiddenCount_});
            }
        }
        key.push_back(kEnd);
    }

private:
    void AddLetter(const Weight& weight)
    {
        // Copied whole, which is quicker than by size; one mark, however many letters a character stands for: a
        // ligature may have several primary codes.
        std::ranges::copy(weight.primary, primary_.begin() + static_cast<std::ptrdiff_t>(primaryCount_));
        primaryCount_ += weight.primarySize;
        std::ranges::copy(weight.secondary, secondary_.begin() + static_cast<std::ptrdiff_t>(secondaryCount_));
        secondaryCount_ += weight.secondarySize;
    }

    void AddKana(bool isSmall)
    {
        kana_[kanaCount_++] = isSmall ? kSmallKana : kFullKana;
        if (isSmall)
            significantKana_ = kanaCount_;
    }

    void Modify(Byte code)
    {
        // A combining mark changes the accent of the character before it. At the start of a text there is none: it
        // stands for itself, and is not counted when the places of hidden characters are.
        if (secondaryCount_ != 0) {
            Byte& last = secondary_[secondaryCount_ - 1];
            last = static_cast<Byte>(last + code);
            return;
        }
        secondary_[secondaryCount_++] = code;
        uncounted_ = 1;
    }

    void Hide(Byte code)
    {
        const auto place = static_cast<std::uint16_t>(0x8000 | (7 + 4 * (secondaryCount_ - uncounted_)));
        for (const Byte byte : {static_cast<Byte>(place >> 8), static_cast<Byte>(place), kHiddenMark, code})
            hidden_[hiddenCount_++] = byte;
    }

    [[nodiscard]] std::size_t SignificantSecondaries() const
    {
        std::size_t count = secondaryCount_;
        while (count != 0 && secondary_[count - 1] <= kNoSecondary)
            --count;
        return count;
    }

    /// Three kana to a byte, from its high end; full-size ones at the end are dropped.
    void AppendKana(Bytes& key) const
    {
        for (std::size_t at = 0; at < significantKana_; at += 3) {
            const auto size = [&](std::size_t i) { return at + i < significantKana_ ? kana_[at + i] : Byte{0}; };
            key.push_back(static_cast<Byte>(0x80 | size(0) << 4 | size(1) << 2 | size(2)));
        }
        AppendBytes(key, kKanaEnd);
    }

    std::array<Byte, 4 * kMaxTextUnits> primary_;
    std::array<Byte, 2 * kMaxTextUnits + 1> secondary_; // a modifier may stand before all
    std::array<Byte, kMaxTextUnits> kana_;
    std::array<Byte, 4 * kMaxTextUnits> hidden_;
    std::size_t primaryCount_ = 0;
    std::size_t secondaryCount_ = 0;
    std::size_t uncounted_ = 0; ///< 1 when the secondary list begins with a modifier's own byte
    std::size_t kanaCount_ = 0;
    std::size_t significantKana_ = 0; ///< kana up to the last small one
    std::size_t hiddenCount_ = 0;
};

} // namespace

KeyUnits KeyUnits::OfUtf16(ByteSpan utf16)
{
    KeyUnits result;
    result.count_ = std::min(utf16.size() / 2, kMaxTextUnits);
    for (std::size_t i = 0; i < result.count_; ++i)
        result.units_[i] = LoadU16(utf16, 2 * i);
    return result;
}

KeyUnits KeyUnits::OfStored(ByteSpan stored)
{
    if (!IsCompressed(stored))
        return OfUtf16(stored);
    KeyUnits result;
    ExpandCompressed(stored, [&](std::uint16_t unit) {
        result.units_[result.count_++] = unit;
        return result.count_ < kMaxTextUnits;
    });
    return result;
}

bool AppendPlainJet4TextKey(Bytes& key, std::string_view ascii)
{
    constexpr std::uint8_t kAsciiEnd = 0x80;
    if (ascii.empty() || ascii.back() == kBlank || ascii.size() > kMaxTextUnits)
        return false;
    const OftenWeights& often = Often();
    std::array<Byte, 4 * kMaxTextUnits + 2> parts;
    std::size_t size = 0;
    for (const char c : ascii) {
        const auto unit = static_cast<std::uint8_t>(c);
        const Weight& weight = often[unit];
        if (unit >= kAsciiEnd || weight.kind != WeightKind::Plain)
            return false;
        std::ranges::copy(weight.primary, parts.begin() + static_cast<std::ptrdiff_t>(size));
        size += weight.primarySize;
    }
    // Nothing follows the letters: marks of those without an accent are dropped from the end.
    parts[size++] = kSeparator;
    parts[size++] = kEnd;
    AppendBytes(key, {parts.data(), size});
    return true;
}

void AppendJet4TextKey(Bytes& key, const KeyUnits& text, SortOrder order)
{
    std::size_t count = text.Count();
    while (count != 0 && text[count - 1] == kBlank)
        --count;

    const OftenWeights& often = Often();
    KeyParts parts;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint16_t unit = text[i];
        if (unit < OftenWeights::kCount)
            parts.Add(often[unit]);
        else
            parts.Add(SearchWeight(unit));
    }
    const std::size_t begin = key.size();
    parts.AppendTo(key);
    if (order == SortOrder::Descending) {
        Complement(MutableBytes(key).subspan(begin));
        key.push_back(kEnd);
    }
}

} // namespace jet
