#include "platform/utf8.h"

#include <algorithm>

namespace velmora {

namespace {

constexpr bool IsContinuation(char c) noexcept
{
    return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
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
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    return text.starts_with(kMark) ? text.substr(kMark.size()) : text;
}

} // namespace velmora
