#include "xml/input_encoding.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>

#include <iconv.h>

namespace velmora {

namespace {

constexpr std::string_view kDeclarationStart = "<?xml";

// iconv_open answers a failure by this value.
const iconv_t kNoConverter = reinterpret_cast<iconv_t>(-1); // NOLINT: the type is a pointer, its failure a number

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
    const iconv_t descriptor = iconv_open("UTF-8", charset.c_str());
    if (descriptor == kNoConverter)
        return std::nullopt;
    std::string text(4 * bytes.size(), '\0');
    char* from = const_cast<char*>(bytes.data()); // iconv reads it only
    std::size_t fromLeft = bytes.size();
    char* to = text.data();
    std::size_t toLeft = text.size();
    iconv(descriptor, &from, &fromLeft, &to, &toLeft);
    iconv_close(descriptor);
    text.resize(text.size() - toLeft);
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

/// Some names stand for more than their standards say: files made on Windows use the characters of the code page.
std::string CharsetFor(std::string_view declared)
{
    struct Wider {
        std::string_view declared, charset;
    };
    constexpr std::array<Wider, 6> kWider{{{"SHIFT_JIS", "CP932"},
                                           {"SHIFT-JIS", "CP932"},
                                           {"SJIS", "CP932"},
                                           {"GB2312", "GB18030"},
                                           {"GBK", "GB18030"},
                                           {"EUC-KR", "CP949"}}};
    const std::string upper = Upper(declared);
    for (const Wider& wider : kWider) {
        if (wider.declared == upper)
            return std::string(wider.charset);
    }
    return upper;
}

InputEncoding ForDeclaration(std::string_view declared, std::string_view declarationBytes)
{
    if (declared.empty())
        return {};
    const std::string name = Upper(declared);
    for (const char* known : {"UTF-8", "ISO-8859-1", "US-ASCII"}) {
        if (name == known)
            return {};
    }
    const std::string charset = CharsetFor(declared);
    const std::optional<std::string> sample =
        ConvertSample(charset, declarationBytes.substr(0, kDeclarationStart.size()));
    if (!sample)
        return {};
    // The declaration could be read letter by letter: a file that says UTF-16 there has been saved anew by a program
    // that did not change what it says.
    if (*sample != kDeclarationStart)
        return {true, ""};
    return {true, charset};
}

InputEncoding Converted(const char* charset)
{
    return {true, charset};
}

} // namespace

InputEncoding DetectEncoding(std::string_view firstBytes)
{
    const auto startsWith = [&](std::string_view bytes) { return firstBytes.substr(0, bytes.size()) == bytes; };
    using namespace std::string_view_literals;
    if (startsWith("\xEF\xBB\xBF"sv))
        return {true, ""};
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

Utf8Converter::Utf8Converter(const std::string& charset) : descriptor_(iconv_open("UTF-8", charset.c_str())) {}

Utf8Converter::~Utf8Converter()
{
    if (descriptor_ != kNoConverter)
        iconv_close(descriptor_);
}

bool Utf8Converter::Convert(std::string_view bytes, std::string& text)
{
    if (descriptor_ == kNoConverter)
        return false;
    std::string joined;
    if (!rest_.empty()) {
        joined = rest_.append(bytes);
        bytes = joined;
        rest_.clear();
    }
    char* from = const_cast<char*>(bytes.data()); // iconv reads it only
    std::size_t fromLeft = bytes.size();
    bool good = true;
    while (fromLeft != 0 && good) {
        const std::size_t filled = text.size();
        text.resize(filled + fromLeft + fromLeft / 2 + 16);
        char* to = text.data() + filled;
        std::size_t toLeft = text.size() - filled;
        const bool failed = iconv(descriptor_, &from, &fromLeft, &to, &toLeft) == static_cast<std::size_t>(-1);
        const int error = errno;
        text.resize(text.size() - toLeft);
        if (failed && error == EINVAL)
            break; // an incomplete character at the end
        good = !failed || error == E2BIG;
    }
    convertedBytes_ += bytes.size() - fromLeft;
    if (good)
        rest_.assign(from, fromLeft);
    return good;
}

bool Utf8Converter::Finish(std::string& text)
{
    if (!rest_.empty())
        return false;
    std::array<char, 64> flushed{}; // what a stateful encoding may still hold back is one or two characters
    char* to = flushed.data();
    std::size_t toLeft = flushed.size();
    iconv(descriptor_, nullptr, nullptr, &to, &toLeft);
    text.append(flushed.data(), flushed.size() - toLeft);
    return true;
}

} // namespace velmora
