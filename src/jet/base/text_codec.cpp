#include "jet/base/text_codec.h"

#include <algorithm>
#include <array>
#include <optional>

namespace jet {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr char32_t kWordJoiner = 0x2060;

/// Code page 1252 from 0x80 to 0x9F; the five bytes without a character stand for themselves, so that they survive.
constexpr std::array<char16_t, 32> kCp1252High{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

bool IsAscii(char c)
{
    return static_cast<unsigned char>(c) < 0x80;
}

/// The number of characters below 0x80 at the start of `text`.
/// Nearly all text is ASCII and stays as it is, byte for byte: so it is looked at eight bytes at a time, and copied in
/// one piece.
std::size_t AsciiLength(std::string_view text)
{
    std::size_t n = 0;
    for (std::uint64_t word = 0; n + sizeof word <= text.size(); n += sizeof word) {
        std::memcpy(&word, text.data() + n, sizeof word);
        if ((word & 0x8080808080808080) != 0)
            break;
    }
    while (n < text.size() && IsAscii(text[n]))
        ++n;
    return n;
}

/// Are all bytes of `word` 0x01 to 0x7F?
bool IsPlainAscii(std::uint64_t word)
{
    constexpr std::uint64_t kOnes = 0x0101010101010101;
    constexpr std::uint64_t kTops = 0x8080808080808080;
    // A byte below 0x80 keeps its top bit clear when 1 is taken from it, unless it is 0; and what is borrowed there has
    // come to light already.
    return ((word | (word - kOnes)) & kTops) == 0;
}

/// AsciiLength() without zeros.
std::size_t AsciiLengthWithoutZero(std::string_view text)
{
    const auto isPlain = [&](std::size_t at) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + at, sizeof word);
        return IsPlainAscii(word);
    };
    std::size_t n = 0;
    while (n + sizeof(std::uint64_t) <= text.size() && isPlain(n))
        n += sizeof(std::uint64_t);
    // The rest of a text that is not a very short one is looked at together with what stands before it.
    if (n > 0 && text.size() - n < sizeof(std::uint64_t) && isPlain(text.size() - sizeof(std::uint64_t)))
        return text.size();
    while (n < text.size() && IsAscii(text[n]) && text[n] != 0)
        ++n;
    return n;
}

/// Reads one character of `text` (not empty) from its start and takes it off. Anything that is not UTF-8 costs one byte
/// and gives U+FFFD; the three-byte form of a surrogate is taken as it stands.
char32_t TakeCharacter(std::string_view& text)
{
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    if (length == 0 || length > text.size()) {
        text.remove_prefix(1);
        return kReplacement;
    }
    constexpr std::array<unsigned char, 5> kLeadBits{0, 0x7F, 0x1F, 0x0F, 0x07};
    constexpr std::array<char32_t, 5> kSmallest{0, 0, 0x80, 0x800, 0x10000};
    char32_t character = lead & kLeadBits[length];
    bool valid = true;
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        valid = valid && (next & 0xC0) == 0x80;
        character = character << 6 | (next & 0x3F);
    }
    if (!valid || character < kSmallest[length] || character > 0x10FFFF) {
        text.remove_prefix(1);
        return kReplacement;
    }
    text.remove_prefix(length);
    return character;
}

void PushUnit(Bytes& out, char32_t unit)
{
    out.push_back(static_cast<Byte>(unit));
    out.push_back(static_cast<Byte>(unit >> 8));
}

void PushUtf16(Bytes& out, char32_t character)
{
    if (character >= 0x10000) {
        PushUnit(out, 0xD800 + ((character - 0x10000) >> 10));
        PushUnit(out, 0xDC00 + ((character - 0x10000) & 0x3FF));
    } else {
        PushUnit(out, character);
    }
}

void PushUtf8(std::string& out, char32_t character)
{
    if (character < 0x80) {
        out.push_back(static_cast<char>(character));
    } else if (character < 0x800) {
        out.push_back(static_cast<char>(0xC0 | character >> 6));
        out.push_back(static_cast<char>(0x80 | (character & 0x3F)));
    } else if (character < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | character >> 12));
        out.push_back(static_cast<char>(0x80 | (character >> 6 & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (character & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | character >> 18));
        out.push_back(static_cast<char>(0x80 | (character >> 12 & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (character >> 6 & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (character & 0x3F)));
    }
}

/// Code page 1252 is Latin-1 but for the 32 bytes from 0x80 on.
std::optional<Byte> ToCp1252(char32_t character)
{
    if (character < 0x80 || (character >= 0xA0 && character <= 0xFF))
        return static_cast<Byte>(character);
    const auto* high = std::ranges::find(kCp1252High, character);
    if (high == kCp1252High.end())
        return std::nullopt;
    return static_cast<Byte>(0x80 + (high - kCp1252High.begin()));
}

/// Appends `utf8` compressed; false, and nothing appended, when a character is not 0x01 to 0xFF or there are too few.
/// Straight from UTF-8, without the plain form in between, as nearly every text ends up compressed. A zero character
/// cannot be: it would be taken for the switch.
bool AppendCompressed(Bytes& out, std::string_view utf8)
{
    if (utf8.size() < kMinCompressed)
        return false;
    const std::size_t start = out.size();
    AppendBytes(out, kCompressedMark);
    while (!utf8.empty()) {
        const std::size_t ascii = AsciiLengthWithoutZero(utf8);
        const auto* bytes = reinterpret_cast<const Byte*>(utf8.data());
        out.insert(out.end(), bytes, bytes + ascii);
        utf8.remove_prefix(ascii);
        if (utf8.empty())
            break;
        const char32_t character = TakeCharacter(utf8);
        if (character == 0 || character > 0xFF) {
            out.resize(start);
            return false;
        }
        out.push_back(static_cast<Byte>(character));
    }
    if (out.size() - start < kCompressedMark.size() + kMinCompressed) {
        out.resize(start);
        return false;
    }
    return true;
}

/// A text that begins with U+FEFF would pass for a compressed one when stored plain. It is stored in the compressed
/// form, switched to plain at its start; where a character forbids that (a low byte of 0 would switch back), U+2060,
/// which means the same, takes the place of the mark. Gives the number of characters replaced.
std::size_t AppendMarkedText(Bytes& out, std::string_view utf8)
{
    const std::size_t start = out.size();
    AppendBytes(out, kCompressedMark);
    out.push_back(0);
    const std::size_t units = out.size();
    AppendUtf16(out, utf8);
    for (std::size_t at = units; at < out.size(); at += 2)
        if (out[at] == 0) {
            out.erase(out.begin() + static_cast<std::ptrdiff_t>(start),
                      out.begin() + static_cast<std::ptrdiff_t>(units));
            StoreU16(out, start, static_cast<std::uint16_t>(kWordJoiner));
            return 1;
        }
    return 0;
}

/// A surrogate without its other half keeps its number, in the three-byte form: whatever a row holds comes back as it
/// was when it is written again.
std::string DecodeUtf16(ByteSpan stored)
{
    std::string text;
    text.reserve(stored.size() / 2);
    for (std::size_t at = 0; at + 1 < stored.size(); at += 2) {
        char32_t character = LoadU16(stored, at);
        if (character >= 0xD800 && character < 0xDC00 && at + 3 < stored.size())
            if (const char32_t low = LoadU16(stored, at + 2); low >= 0xDC00 && low < 0xE000) {
                character = 0x10000 + ((character - 0xD800) << 10) + (low - 0xDC00);
                at += 2;
            }
        PushUtf8(text, character);
    }
    return text;
}

std::string DecodeCp1252(ByteSpan stored)
{
    std::string text;
    text.reserve(stored.size());
    for (const Byte byte : stored)
        PushUtf8(text, byte >= 0x80 && byte < 0xA0 ? kCp1252High[byte - 0x80] : byte);
    return text;
}

} // namespace

std::size_t Utf16Length(std::string_view utf8) noexcept
{
    std::size_t units = 0;
    while (!utf8.empty()) {
        const std::size_t ascii = AsciiLength(utf8);
        units += ascii;
        utf8.remove_prefix(ascii);
        if (!utf8.empty())
            units += TakeCharacter(utf8) >= 0x10000 ? 2 : 1;
    }
    return units;
}

void AppendUtf16(Bytes& out, std::string_view utf8)
{
    while (!utf8.empty()) {
        const std::size_t ascii = AsciiLength(utf8);
        const std::size_t at = out.size();
        out.resize(at + 2 * ascii);
        static_cast<void>(ExpandAscii(out.data() + at, utf8.substr(0, ascii)));
        utf8.remove_prefix(ascii);
        if (!utf8.empty())
            PushUtf16(out, TakeCharacter(utf8));
    }
}

std::size_t AppendCp1252(Bytes& out, std::string_view utf8)
{
    std::size_t replaced = 0;
    while (!utf8.empty()) {
        const std::size_t ascii = AsciiLength(utf8);
        const auto* bytes = reinterpret_cast<const Byte*>(utf8.data());
        out.insert(out.end(), bytes, bytes + ascii);
        utf8.remove_prefix(ascii);
        if (utf8.empty())
            break;
        const std::optional<Byte> byte = ToCp1252(TakeCharacter(utf8));
        out.push_back(byte.value_or('?'));
        replaced += byte ? 0 : 1;
    }
    return replaced;
}

bool CopyPlainAscii(Byte* to, std::string_view text) noexcept
{
    const std::size_t size = text.size();
    const auto copyWord = [&](std::size_t at) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + at, sizeof word);
        std::memcpy(to + at, &word, sizeof word);
        return IsPlainAscii(word);
    };
    if (size < sizeof(std::uint64_t)) {
        bool isPlain = true;
        for (std::size_t i = 0; i < size; ++i) {
            to[i] = static_cast<Byte>(text[i]);
            isPlain &= IsAscii(text[i]) && text[i] != 0;
        }
        return isPlain;
    }
    for (std::size_t at = 0; at + sizeof(std::uint64_t) < size; at += sizeof(std::uint64_t))
        if (!copyWord(at))
            return false;
    return copyWord(size - sizeof(std::uint64_t)); // which may overlap the one before
}

bool ExpandAscii(Byte* to, std::string_view text) noexcept
{
    const ByteSpan from(reinterpret_cast<const Byte*>(text.data()), text.size());
    const MutableBytes units(to, 2 * from.size());
    std::size_t at = 0;
    for (; at + sizeof(std::uint32_t) <= from.size(); at += sizeof(std::uint32_t)) {
        std::uint64_t four = LoadU32(from, at);
        if ((four & 0x80808080) != 0)
            return false;
        four = (four | four << 16) & 0x0000FFFF0000FFFF;
        four = (four | four << 8) & 0x00FF00FF00FF00FF;
        StoreU64(units, 2 * at, four);
    }
    bool isAscii = true;
    for (; at < from.size(); ++at) {
        isAscii &= from[at] < 0x80;
        StoreU16(units, 2 * at, from[at]);
    }
    return isAscii;
}

std::size_t AppendText(Bytes& out, const Format& format, std::string_view utf8, bool compress)
{
    constexpr std::string_view kMarkUtf8 = "\xEF\xBB\xBF"; // U+FEFF
    if (format.version == JetVersion::Jet3)
        return AppendCp1252(out, utf8);
    if (utf8.starts_with(kMarkUtf8))
        return AppendMarkedText(out, utf8);
    if (!compress || !AppendCompressed(out, utf8))
        AppendUtf16(out, utf8);
    return 0;
}

std::string DecodeText(ByteSpan stored, const Format& format)
{
    if (format.version == JetVersion::Jet3)
        return DecodeCp1252(stored);
    return IsCompressed(stored) ? DecodeUtf16(ExpandUtf16(stored)) : DecodeUtf16(stored);
}

Bytes ExpandUtf16(ByteSpan stored)
{
    if (!IsCompressed(stored))
        return {stored.begin(), stored.end()};
    Bytes plain;
    plain.reserve(2 * stored.size());
    ExpandCompressed(stored, [&](std::uint16_t unit) {
        PushUnit(plain, unit);
        return true;
    });
    return plain;
}

std::string_view TrimBlanks(std::string_view text) noexcept
{
    constexpr std::string_view kBlanks = " \t\r\n\f\v";
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

} // namespace jet
