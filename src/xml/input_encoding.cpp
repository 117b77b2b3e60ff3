#include "xml/input_encoding.h"

#include "platform/utf8_converter.h"

#include <algorithm>
#include <array>
#include <optional>

namespace velmora {

namespace {

constexpr std::string_view kDeclarationStart = "<?xml";

std::string Upper(std::string_view text)
{
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return upper;
}

/// `bytes` in UTF-8 as far as they can be converted; nullopt when iconv does not know `charset`.
std::optional<std::string> ConvertSample(const std::string& charset, std::string_view bytes)
{
    Utf8Converter converter(charset);
    if (!converter.IsKnown())
        return std::nullopt;
    std::string text;
    // Encodings that write an accent behind its letter hold the last letter back until they know what follows.
    if (converter.Convert(bytes, text))
        static_cast<void>(converter.Finish(text));
    return text;
}

bool IsEncodingName(std::string_view name)
{
    const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    return !name.empty() && isLetter(name[0]) && std::all_of(name.begin(), name.end(), [&](char c) {
        return isLetter(c) || (c >= '0' && c <= '9') || c == '.' || c == '_' || c == '-';
    });
}

/// The encoding named by the XML declaration that `text` begins with; empty when it names none.
std::string_view DeclaredName(std::string_view text)
{
    constexpr std::string_view kKey = "encoding";
    constexpr std::string_view kBlanks = " \t\r\n";
    if (text.substr(0, kDeclarationStart.size()) != kDeclarationStart)
        return {};
    const std::string_view declaration = text.substr(0, text.find("?>"));
    const std::size_t key = declaration.find(kKey);
    if (key == std::string_view::npos)
        return {};
    std::string_view rest = declaration.substr(key + kKey.size());
    const auto skipBlanks = [&] { rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size())); };
    skipBlanks();
    if (rest.empty() || rest[0] != '=')
        return {};
    rest.remove_prefix(1);
    skipBlanks();
    if (rest.empty() || (rest[0] != '"' && rest[0] != '\''))
        return {};
    const std::size_t end = rest.find(rest[0], 1);
    const std::string_view name = end == std::string_view::npos ? std::string_view{} : rest.substr(1, end - 1);
    return IsEncodingName(name) ? name : std::string_view{};
}

/// iconv's name for `declared`, which is in upper case. Some names stand for more than their standards say: files made
/// on Windows use the characters of the code page.
std::string CharsetFor(std::string_view declared)
{
    struct Charset {
        std::string_view declared, name;
    };
    constexpr std::array<Charset, 9> kCharsets{{{"SHIFT_JIS", "CP932"},
                                                {"SHIFT-JIS", "CP932"},
                                                {"SJIS", "CP932"},
                                                {"GB2312", "GB18030"},
                                                {"GBK", "GB18030"},
                                                {"EUC-KR", "CP949"},
                                                {"KS_C_5601-1987", "CP949"},
                                                {"KS_C_5601-1989", "CP949"},
                                                {"MAC-ROMAN", "MACINTOSH"}}};
    // What was no standard once was marked so: x-sjis, x-mac-roman, x-euc-jp.
    if (declared.starts_with("X-"))
        declared.remove_prefix(2);
    for (const Charset& charset : kCharsets) {
        if (charset.declared == declared)
            return std::string(charset.name);
    }
    return std::string(declared);
}

bool IsLatin1(std::string_view name)
{
    constexpr std::array<std::string_view, 6> kNames{"ISO-8859-1", "ISO_8859-1", "ISO8859-1",
                                                     "LATIN1",     "LATIN-1",    "L1"};
    return std::find(kNames.begin(), kNames.end(), name) != kNames.end();
}

InputEncoding ForDeclaration(std::string_view declared, std::string_view declarationBytes)
{
    const std::string name = Upper(declared);
    if (name.empty() || name == "UTF-8" || name == "US-ASCII")
        return {};
    if (IsLatin1(name))
        return {ParseAs::Latin1, ""};
    const std::string charset = CharsetFor(name);
    const std::optional<std::string> sample =
        ConvertSample(charset, declarationBytes.substr(0, kDeclarationStart.size()));
    if (!sample)
        return {};
    // The declaration could be read letter by letter: a file that says UTF-16 there has been saved anew by a program
    // that did not change what it says.
    if (*sample != kDeclarationStart)
        return {ParseAs::Utf8, ""};
    return {ParseAs::Utf8, charset};
}

InputEncoding Converted(const char* charset)
{
    return {ParseAs::Utf8, charset};
}

} // namespace

std::optional<InputEncoding> EncodingNamed(std::string_view name)
{
    const std::string upper = Upper(name);
    if (IsLatin1(upper))
        return InputEncoding{ParseAs::Latin1, ""};
    if (upper == "UTF-8" || upper == "UTF8")
        return InputEncoding{ParseAs::Utf8, ""};
    std::string charset = CharsetFor(upper);
    if (!IsEncodingName(name) || !Utf8Converter(charset).IsKnown())
        return std::nullopt;
    return InputEncoding{ParseAs::Utf8, std::move(charset)};
}

InputEncoding EncodingOf(const Source& source, std::string_view firstBytes)
{
    if (!source.encoding.empty() && !HasByteOrderMark(firstBytes))
        if (const auto named = EncodingNamed(source.encoding))
            return *named;
    return DetectEncoding(firstBytes);
}

std::size_t CountControlBytes(const InputEncoding& encoding, std::string_view bytes) noexcept
{
    const auto isControl = [](char byte) { return (static_cast<unsigned char>(byte) & 0xE0) == 0x80; };
    return encoding.parseAs == ParseAs::Latin1
               ? static_cast<std::size_t>(std::count_if(bytes.begin(), bytes.end(), isControl))
               : 0;
}

std::string FirstBytes(SourceStream& stream)
{
    std::string head(kEncodingSniffBytes, '\0');
    head.resize(stream.Read(head.data(), head.size()));
    return head;
}

bool HasByteOrderMark(std::string_view firstBytes) noexcept
{
    using namespace std::string_view_literals;
    return firstBytes.starts_with("\xEF\xBB\xBF"sv) || firstBytes.starts_with("\xFF\xFE"sv) ||
           firstBytes.starts_with("\xFE\xFF"sv) || firstBytes.starts_with("\0\0\xFE\xFF"sv);
}

InputEncoding DetectEncoding(std::string_view firstBytes)
{
    const auto startsWith = [&](std::string_view bytes) { return firstBytes.substr(0, bytes.size()) == bytes; };
    using namespace std::string_view_literals;
    if (startsWith("\xEF\xBB\xBF"sv))
        return {ParseAs::Utf8, ""};
    if (startsWith("\xFF\xFE\0\0"sv) || startsWith("\0\0\xFE\xFF"sv))
        return Converted("UTF-32");
    if (startsWith("\xFF\xFE"sv) || startsWith("\xFE\xFF"sv))
        return Converted("UTF-16");
    if (startsWith("<\0\0\0"sv))
        return Converted("UTF-32LE");
    if (startsWith("\0\0\0<"sv))
        return Converted("UTF-32BE");
    if (startsWith("<\0"sv))
        return Converted("UTF-16LE");
    if (startsWith("\0<"sv))
        return Converted("UTF-16BE");
    // "<?xm" in every EBCDIC code page; 037 reads the declaration of all of them.
    if (startsWith("\x4C\x6F\xA7\x94"sv)) {
        const std::string declaration = ConvertSample("IBM037", firstBytes).value_or("");
        return ForDeclaration(DeclaredName(declaration), firstBytes);
    }
    return ForDeclaration(DeclaredName(firstBytes), firstBytes);
}

} // namespace velmora
