#include "platform/terminal.h"

namespace velmora {

std::string Printable(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : '\0');
        if (byte == '\r' && next == '\n')
            continue;
        if (byte == 0xC2 && next >= 0x80 && next <= 0x9F) {
            // U+0080 to U+009F: some terminals take them for escape sequences of one character.
            result += '?';
            ++i;
        } else if ((byte < 0x20 && byte != '\t' && byte != '\n') || byte == 0x7F) {
            result += '?';
        } else {
            result += text[i];
        }
    }
    return result;
}

} // namespace velmora
