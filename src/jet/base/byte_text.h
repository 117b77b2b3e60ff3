#pragma once

#include "jet/base/bytes.h"
#include "jet/base/value.h"

#include <optional>
#include <string>
#include <string_view>

namespace jet {

/// Two hexadecimal digits a byte, capital letters.
[[nodiscard]] std::string HexText(ByteSpan bytes);
/// Pairs of hexadecimal digits, "0x" before them or not. nullopt for anything else.
[[nodiscard]] std::optional<Bytes> ParseHex(std::string_view text);
/// What XML documents carry bytes in: base64 with its padding, white space between its letters or not, or hexadecimal
/// digits. A text that could be both is taken as hexadecimal digits when all its letters are small or all are capital.
[[nodiscard]] std::optional<Bytes> ParseHexOrBase64(std::string_view text);
/// A GUID as it is printed, in braces or not. nullopt for anything else.
[[nodiscard]] std::optional<Guid> ParseGuid(std::string_view text);

} // namespace jet
