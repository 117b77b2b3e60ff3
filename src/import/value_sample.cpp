#include "import/value_sample.h"

#include <algorithm>

namespace velmora {

namespace {

constexpr std::size_t kMaxCharacters = 40;
constexpr std::string_view kCutMark = "...";

/// The beginning of `text` with at most `limit` characters.
std::string_view FirstCharacters(std::string_view text, std::size_t limit)
{
    std::size_t bytes = 0;
    for (std::size_t characters = 0; characters < limit && bytes < text.size(); ++characters)
        do
            ++bytes;
        while (bytes < text.size() && (static_cast<unsigned char>(text[bytes]) & 0xC0) == 0x80);
    return text.substr(0, bytes);
}

} // namespace

std::string QuotedSample(std::string_view value)
{
    std::string sample = "\"";
    if (FirstCharacters(value, kMaxCharacters).size() == value.size())
        sample.append(value);
    else
        sample.append(FirstCharacters(value, kMaxCharacters - kCutMark.size())).append(kCutMark);
    std::replace_if(
        sample.begin(), sample.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
    return sample.append("\"");
}

} // namespace velmora
