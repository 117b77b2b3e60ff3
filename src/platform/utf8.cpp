#include "platform/utf8.h"

#include <algorithm>

namespace velmora {

namespace {

constexpr bool IsContinuation(char c) noexcept
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

/// Bytes of the white space character that `text` begins with; 0 when it begins with none.
std::size_t LeadingBlank(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
    const unsigned first = byte(0);
    if (first == ' ' || (first >= 0x09 && first <= 0x0D))
        return 1;
    if (first < 0xC2)
        return 0;
    if (first == 0xC2)
        return byte(1) == 0x85 || byte(1) == 0xA0 ? 2 : 0; // next line, no-break space
    const unsigned three = first << 16 | byte(1) << 8 | byte(2);
    const bool isBlank = three == 0xE19A80                           // U+1680, ogham space
                         || (three >= 0xE28080 && three <= 0xE2808A) // U+2000 to U+200A, en quad to hair space
                         || three == 0xE280A8 || three == 0xE280A9   // line and paragraph separator
                         || three == 0xE280AF || three == 0xE2819F   // narrow no-break, medium mathematical space
                         || three == 0xE38080;                       // ideographic space
    return isBlank ? 3 : 0;
}

} // namespace

std::string_view CutUtf8(std::string_view text, std::size_t maxBytes) noexcept
{
    if (text.size() <= maxBytes)
        return text;
    std::size_t end = maxBytes;
    while (end > 0 && IsContinuation(text[end]))
        --end;
    return text.substr(0, end);
}

std::size_t CountCharacters(std::string_view text) noexcept
{
    return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), IsContinuation));
}

std::string_view WithoutByteOrderMark(std::string_view text) noexcept
{
    return text.starts_with(kByteOrderMark) ? text.substr(kByteOrderMark.size()) : text;
}

std::string_view TrimWhiteSpace(std::string_view text) noexcept
{
    while (const std::size_t blank = LeadingBlank(text))
        text.remove_prefix(blank);
    while (!text.empty()) {
        std::size_t last = text.size() - 1;
        while (last > 0 && IsContinuation(text[last]))
            --last; // back to the first byte of the character
        if (LeadingBlank(text.substr(last)) == 0)
            break;
        text = text.substr(0, last);
    }
    return text;
}

} // namespace velmora
