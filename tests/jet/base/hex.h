#pragma once

#include "jet/base/bytes.h"

#include <charconv>
#include <string>
#include <string_view>

/// Bytes as tests write and show them: "7F 80 00".
namespace jet::testing {

inline std::string Hex(ByteSpan bytes)
{
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (const Byte byte : bytes) {
        if (!text.empty())
            text += ' ';
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

inline Bytes FromHex(std::string_view text)
{
    Bytes bytes;
    for (std::size_t at = 0; at + 2 <= text.size(); at += 3) {
        Byte byte = 0;
        std::from_chars(text.data() + at, text.data() + at + 2, byte, 16);
        bytes.push_back(byte);
    }
    return bytes;
}

} // namespace jet::testing
