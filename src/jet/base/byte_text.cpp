#include "jet/base/byte_text.h"

#include <algorithm>
#include <charconv>

namespace jet {

namespace {

constexpr unsigned kLetterBits = 6;

/// The six bits that a letter of base64 stands for.
std::optional<unsigned> BitsOf(char letter)
{
    const auto after = [letter](char first) { return static_cast<unsigned>(letter - first); };
    if (letter >= 'A' && letter <= 'Z')
        return after('A');
    if (letter >= 'a' && letter <= 'z')
        return 26 + after('a');
    if (letter >= '0' && letter <= '9')
        return 52 + after('0');
    if (letter == '+')
        return 62;
    if (letter == '/')
        return 63;
    return std::nullopt;
}

std::optional<Bytes> ParseBase64(std::string_view text)
{
    Bytes bytes;
    bytes.reserve(text.size() / 4 * 3);
    unsigned bits = 0; // the last bitCount of them are not yet in a byte
    unsigned bitCount = 0;
    std::size_t letters = 0;
    std::size_t padding = 0;
    for (const char letter : text) {
        // Documents wrap and indent long values, so white space may stand anywhere.
        if (letter == ' ' || letter == '\t' || letter == '\r' || letter == '\n')
            continue;
        ++letters;
        if (letter == '=') {
            ++padding;
            continue;
        }
        const std::optional<unsigned> next = BitsOf(letter);
        if (!next || padding > 0)
            return std::nullopt;
        bits = bits << kLetterBits | *next;
        bitCount += kLetterBits;
        if (bitCount < 8)
            continue;
        bitCount -= 8;
        bytes.push_back(static_cast<Byte>(bits >> bitCount));
        bits &= (1U << bitCount) - 1;
    }
    // What is left over are the zero bits that the padding stands for: two of them for each sign. Words are rarely so.
    if (letters % 4 != 0 || padding > 2 || bits != 0 || bitCount != 2 * padding)
        return std::nullopt;
    return bytes;
}

/// Programs write hexadecimal digits in one letter case throughout; base64 of any length has both.
bool HasOneLetterCase(std::string_view text)
{
    const auto isSmall = [](char c) { return c >= 'a' && c <= 'z'; };
    const auto isCapital = [](char c) { return c >= 'A' && c <= 'Z'; };
    return std::none_of(text.begin(), text.end(), isSmall) || std::none_of(text.begin(), text.end(), isCapital);
}

std::string_view WithoutHexPrefix(std::string_view text)
{
    return text.starts_with("0x") || text.starts_with("0X") ? text.substr(2) : text;
}

} // namespace

std::string HexText(ByteSpan bytes)
{
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    text.reserve(2 * bytes.size());
    for (const Byte byte : bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0x0F];
    }
    return text;
}

std::optional<Bytes> ParseHex(std::string_view text)
{
    text = WithoutHexPrefix(text);
    if (text.size() % 2 != 0)
        return std::nullopt;
    Bytes bytes(text.size() / 2);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const char* const pair = text.data() + 2 * i;
        const auto [end, error] = std::from_chars(pair, pair + 2, bytes[i], 16);
        if (error != std::errc{} || end != pair + 2)
            return std::nullopt;
    }
    return bytes;
}

std::optional<Bytes> ParseHexOrBase64(std::string_view text)
{
    if (HasOneLetterCase(WithoutHexPrefix(text))) {
        if (std::optional<Bytes> bytes = ParseHex(text))
            return bytes;
    }
    return ParseBase64(text);
}

std::optional<Guid> ParseGuid(std::string_view text)
{
    if (text.size() >= 2 && text.front() == '{' && text.back() == '}')
        text = text.substr(1, text.size() - 2);
    Guid guid;
    std::size_t at = 0;
    for (std::size_t i = 0; i < sizeof guid.bytes; ++i) {
        // The hyphens of the printed form: 8-4-4-4-12 digits.
        if ((i == 4 || i == 6 || i == 8 || i == 10) && (at >= text.size() || text[at++] != '-'))
            return std::nullopt;
        const std::string_view pair = text.substr(std::min(at, text.size()), 2);
        const auto [end, error] = std::from_chars(pair.data(), pair.data() + pair.size(), guid.bytes[i], 16);
        if (error != std::errc{} || pair.size() != 2 || end != pair.data() + 2)
            return std::nullopt;
        at += 2;
    }
    return at == text.size() ? std::optional(guid) : std::nullopt;
}

} // namespace jet
