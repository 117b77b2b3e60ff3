#include "app/json_writer.h"

#include <algorithm>
#include <utility>

namespace velmora {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr std::string_view kHexDigits = "0123456789abcdef";

/// Bytes of the character that `text` begins with; 0 when it begins with none: no overlong forms, no surrogates,
/// nothing beyond U+10FFFF.
std::size_t CharacterLength(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u; };
    const unsigned first = byte(0);
    if (first < 0x80)
        return 1;
    if (first < 0xC2 || first > 0xF4)
        return 0;
    const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    const unsigned lowest = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80; // of the second byte
    const unsigned highest = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    if (byte(1) < lowest || byte(1) > highest)
        return 0;
    for (std::size_t i = 2; i < length; ++i)
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
    return length;
}

} // namespace

void JsonWriter::Text(std::string_view name, std::string_view value)
{
    Name(name);
    Quoted(value);
}

void JsonWriter::Number(std::string_view name, std::int64_t value)
{
    Name(name);
    text_ += std::to_string(value);
}

void JsonWriter::Seconds(std::string_view name, std::int64_t milliseconds)
{
    constexpr std::int64_t kPerSecond = 1000;
    const std::int64_t whole = std::max<std::int64_t>(milliseconds, 0);
    Name(name);
    text_ += std::to_string(whole / kPerSecond) + '.';
    text_ += std::to_string(kPerSecond + whole % kPerSecond).substr(1);
}

void JsonWriter::Flag(std::string_view name, bool value)
{
    Name(name);
    text_ += value ? "true" : "false";
}

void JsonWriter::Null(std::string_view name)
{
    Name(name);
    text_ += "null";
}

std::string JsonWriter::Take()
{
    return std::exchange(text_, {}) + '\n';
}

void JsonWriter::Begin(std::string_view name, char bracket)
{
    if (!text_.empty())
        Name(name);
    text_ += bracket;
    ++depth_;
    isEmpty_ = true;
}

void JsonWriter::End(char bracket)
{
    --depth_;
    if (!isEmpty_)
        text_.append(1, '\n').append(2 * depth_, ' ');
    text_ += bracket;
    isEmpty_ = false;
}

/// What stands before a value: a comma behind another one, its place in a line of its own, its name.
void JsonWriter::Name(std::string_view name)
{
    if (!isEmpty_)
        text_ += ',';
    isEmpty_ = false;
    text_.append(1, '\n').append(2 * depth_, ' ');
    if (name.empty())
        return;
    Quoted(name);
    text_ += ": ";
}

void JsonWriter::Quoted(std::string_view text)
{
    text_ += '"';
    while (!text.empty()) {
        const auto first = static_cast<unsigned char>(text.front());
        const std::size_t length = CharacterLength(text);
        if (length == 0)
            text_ += kReplacement;
        else if (first < 0x20 || first == 0x7F)
            text_.append("\\u00").append(1, kHexDigits[first >> 4]).append(1, kHexDigits[first & 0xF]);
        else if (first == '"' || first == '\\')
            text_.append(1, '\\').append(1, text.front());
        else
            text_ += text.substr(0, length);
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    text_ += '"';
}

} // namespace velmora
