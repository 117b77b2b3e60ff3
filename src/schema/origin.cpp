#include "schema/origin.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>

namespace velmora {

namespace {

constexpr std::string_view kVersion = "velmora 1";
constexpr std::string_view kPath = "path";
constexpr std::string_view kPlace = "place";
constexpr std::string_view kContinues = "continues";

struct KindWord {
    ColumnOrigin::Kind kind;
    std::string_view word;
    std::string_view description;
};
constexpr KindWord kKinds[] = {
    {ColumnOrigin::Kind::Child, "child", "Element"},
    {ColumnOrigin::Kind::Attribute, "attribute", "Attribute"},
    {ColumnOrigin::Kind::Text, "text", "Text of the element"},
    {ColumnOrigin::Kind::Overflow, "overflow", "What does not fit column"},
    {ColumnOrigin::Kind::Key, "key", "Key of the record"},
    {ColumnOrigin::Kind::Parent, "parent", "Key of the record around"},
    {ColumnOrigin::Kind::Master, "master", "Table of the record around"},
};

struct TypeWord {
    ColumnType type;
    std::string_view word;
};
constexpr TypeWord kTypes[] = {
    {ColumnType::Text, "text"},     {ColumnType::YesNo, "yes/no"}, {ColumnType::Long, "long"},
    {ColumnType::Double, "double"}, {ColumnType::Date, "date"},    {ColumnType::Time, "time"},
};

const KindWord& WordsOf(ColumnOrigin::Kind kind)
{
    for (const KindWord& words : kKinds)
        if (words.kind == kind)
            return words;
    return kKinds[0];
}

/// "&#xE4;" for what is beyond ASCII; names hold no "&" of their own.
std::string WithReferences(std::string_view utf8)
{
    std::string text;
    for (std::size_t at = 0; at < utf8.size();) {
        const auto lead = static_cast<unsigned char>(utf8[at]);
        if (lead < 0x80) {
            text += utf8[at++];
            continue;
        }
        const std::size_t size = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        std::uint32_t character = lead & (0x7Fu >> size);
        for (std::size_t i = 1; i < size && at + i < utf8.size(); ++i)
            character = character << 6 | (static_cast<unsigned char>(utf8[at + i]) & 0x3Fu);
        char digits[8];
        const auto end = std::to_chars(digits, digits + sizeof digits, character, 16).ptr;
        text.append("&#x").append(digits, end).append(";");
        at += size;
    }
    return text;
}

void AppendCharacter(std::string& utf8, std::uint32_t character)
{
    const auto append = [&](std::uint32_t byte) { utf8 += static_cast<char>(byte); };
    if (character < 0x80)
        return append(character);
    if (character < 0x800) {
        append(0xC0 | character >> 6);
    } else if (character < 0x1'0000) {
        append(0xE0 | character >> 12);
        append(0x80 | (character >> 6 & 0x3F));
    } else {
        append(0xF0 | character >> 18);
        append(0x80 | (character >> 12 & 0x3F));
        append(0x80 | (character >> 6 & 0x3F));
    }
    append(0x80 | (character & 0x3F));
}

std::string WithoutReferences(std::string_view text)
{
    constexpr std::string_view kBegin = "&#x";
    std::string utf8;
    for (std::size_t at = text.find(kBegin); at != text.npos; at = text.find(kBegin)) {
        utf8 += text.substr(0, at);
        text.remove_prefix(at + kBegin.size());
        std::uint32_t character = 0;
        const char* const end = text.data() + text.size();
        const auto [behind, error] = std::from_chars(text.data(), end, character, 16);
        if (error == std::errc() && behind != end && *behind == ';' && character < 0x11'0000) {
            AppendCharacter(utf8, character);
            text.remove_prefix(static_cast<std::size_t>(behind - text.data()) + 1);
        }
    }
    return utf8.append(text);
}

void AppendLine(std::string& text, std::string_view word, std::string_view value)
{
    if (!text.empty())
        text += '\n';
    text += word;
    if (!value.empty())
        text.append(" ").append(value);
}

/// Calls `use(word, value)` for each line.
template <typename Use>
void ForEachFact(std::string_view text, const Use& use)
{
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.ends_with('\r')) // somebody has edited it
            line.remove_suffix(1);
        const std::size_t blank = std::min(line.find(' '), line.size());
        use(line.substr(0, blank), line.substr(std::min(blank + 1, line.size())));
    }
}

std::vector<std::size_t> Numbers(std::string_view text)
{
    std::vector<std::size_t> numbers;
    const char* at = text.data();
    const char* const end = at + text.size();
    for (std::size_t number = 0; at != end;) {
        const auto [behind, error] = std::from_chars(at, end, number);
        if (error != std::errc())
            break;
        numbers.push_back(number);
        at = behind != end && *behind == ' ' ? behind + 1 : behind;
    }
    return numbers;
}

} // namespace

std::string OriginText(const TableOrigin& origin, bool access97)
{
    const auto encoded = [&](const std::string& name) { return access97 ? WithReferences(name) : name; };
    std::string text(kVersion);
    if (!origin.continues.empty())
        AppendLine(text, kContinues, encoded(origin.continues));
    for (const TablePath& path : origin.paths) {
        AppendLine(text, kPath, encoded(path.path));
        std::string places;
        for (const std::size_t place : path.places)
            places.append(places.empty() ? "" : " ").append(std::to_string(place));
        AppendLine(text, kPlace, places);
    }
    return text;
}

std::string OriginText(const ColumnOrigin& origin, bool access97)
{
    std::string text;
    AppendLine(text, WordsOf(origin.kind).word, access97 ? WithReferences(origin.name) : origin.name);
    if (origin.kind == ColumnOrigin::Kind::Child || origin.kind == ColumnOrigin::Kind::Attribute)
        AppendLine(text, kPlace, std::to_string(origin.place));
    return text;
}

std::optional<TableOrigin> ReadTableOrigin(std::string_view text)
{
    TableOrigin origin;
    ForEachFact(text, [&](std::string_view word, std::string_view value) {
        if (word == kContinues)
            origin.continues = WithoutReferences(value);
        else if (word == kPath)
            origin.paths.push_back({WithoutReferences(value), {}});
        else if (word == kPlace && !origin.paths.empty())
            origin.paths.back().places = Numbers(value);
    });
    if (origin.paths.empty() && origin.continues.empty())
        return std::nullopt;
    return origin;
}

std::optional<ColumnOrigin> ReadColumnOrigin(std::string_view text)
{
    std::optional<ColumnOrigin> origin;
    ForEachFact(text, [&](std::string_view word, std::string_view value) {
        for (const KindWord& words : kKinds)
            if (words.word == word)
                origin = ColumnOrigin{.kind = words.kind, .name = WithoutReferences(value)};
        if (const std::vector<std::size_t> numbers = Numbers(value); word == kPlace && origin && !numbers.empty())
            origin->place = numbers.front();
    });
    return origin;
}

std::string_view TypeText(ColumnType type)
{
    const auto* const found = std::ranges::find(kTypes, type, &TypeWord::type);
    return found == std::end(kTypes) ? kTypes->word : found->word;
}

std::optional<ColumnType> ReadType(std::string_view text)
{
    const auto* const found = std::ranges::find(kTypes, text, &TypeWord::word);
    return found == std::end(kTypes) ? std::nullopt : std::optional(found->type);
}

std::string Describe(const TableOrigin& origin)
{
    if (!origin.continues.empty())
        return "Continues table " + origin.continues;
    std::string text = "Element ";
    text += origin.paths.empty() ? std::string_view() : origin.paths.front().path;
    if (origin.paths.size() > 1)
        text.append(" and in ").append(std::to_string(origin.paths.size() - 1)).append(" other places");
    return text;
}

std::string Describe(const ColumnOrigin& origin)
{
    std::string text(WordsOf(origin.kind).description);
    return origin.name.empty() ? text : text.append(" ").append(origin.name);
}

} // namespace velmora
