#pragma once

#include "jet/base/bytes.h"
#include "jet/base/error.h"
#include "jet/base/format.h"

#include <charconv>
#include <optional>
#include <string>
#include <string_view>

/// What tests of every layer of the engine use.
namespace jet::testing {

inline constexpr JetVersion kVersions[] = {JetVersion::Jet3, JetVersion::Jet4};

/// The number of the error that `action` ends with; nullopt when there is none.
template <typename Action>
[[nodiscard]] std::optional<ErrorNumber> ErrorOf(const Action& action)
{
    try {
        action();
    } catch (const Error& error) {
        return error.Number();
    }
    return std::nullopt;
}

/// The text of that error; empty when there is none.
template <typename Action>
[[nodiscard]] std::string MessageOf(const Action& action)
{
    try {
        action();
    } catch (const Error& error) {
        return error.what();
    }
    return {};
}

/// Bytes as tests write and show them: "7F 80 00".
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

/// Blanks between bytes may be left out.
inline Bytes FromHex(std::string_view text)
{
    Bytes bytes;
    for (std::size_t at = 0; at < text.size(); at += text[at] == ' ' ? 1 : 2)
        if (text[at] != ' ')
            std::from_chars(text.data() + at, text.data() + at + 2, bytes.emplace_back(), 16);
    return bytes;
}

} // namespace jet::testing
