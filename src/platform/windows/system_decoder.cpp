#include "platform/utf8_converter.h"

#include "platform/windows/windows.h"

#include <algorithm>
#include <charconv>

namespace velmora {

namespace {

using Outcome = Utf8Converter::Decoder::Outcome;

/// UTF-16 and UTF-32, which the system's function does not take. A byte order mark tells the order where the name does
/// not; big-endian without one.
class UnicodeDecoder final : public Utf8Converter::Decoder {
public:
    enum class Order { FromMark, Big, Little };
    UnicodeDecoder(std::size_t unitBytes, Order order) : unitBytes_(unitBytes), order_(order) {}

    [[nodiscard]] Outcome Decode(std::string_view& bytes, std::string& text) override
    {
        while (bytes.size() >= unitBytes_) {
            if (order_ == Order::FromMark && TakeMark(bytes))
                continue;
            std::uint32_t character = UnitAt(bytes, 0);
            std::size_t taken = unitBytes_;
            if (unitBytes_ == 2 && (character & 0xFC00) == 0xD800) {
                if (bytes.size() < 4)
                    return Outcome::Incomplete;
                const std::uint32_t low = UnitAt(bytes, 2);
                if ((low & 0xFC00) != 0xDC00)
                    return Outcome::Bad;
                character = 0x10000 + ((character & 0x3FF) << 10) + (low & 0x3FF);
                taken = 4;
            }
            if (character > 0x10FFFF || (character & 0xFFFFF800) == 0xD800)
                return Outcome::Bad;
            Append(character, text);
            bytes.remove_prefix(taken);
        }
        return bytes.empty() ? Outcome::All : Outcome::Incomplete;
    }

    void Finish(std::string&) override {}

private:
    [[nodiscard]] std::uint32_t UnitAt(std::string_view bytes, std::size_t at) const
    {
        std::uint32_t unit = 0;
        for (std::size_t i = 0; i < unitBytes_; ++i) {
            const std::size_t place = order_ == Order::Little ? unitBytes_ - 1 - i : i;
            unit = unit << 8 | static_cast<unsigned char>(bytes[at + place]);
        }
        return unit;
    }

    /// True when there was a mark.
    bool TakeMark(std::string_view& bytes)
    {
        constexpr std::uint32_t kMark = 0xFEFF;
        for (const Order order : {Order::Little, Order::Big}) {
            order_ = order;
            if (UnitAt(bytes, 0) == kMark) {
                bytes.remove_prefix(unitBytes_);
                return true;
            }
        }
        return false;
    }

    static void Append(std::uint32_t character, std::string& text)
    {
        const auto tail = [&](int shift) { text += static_cast<char>(0x80 | (character >> shift & 0x3F)); };
        if (character < 0x80) {
            text += static_cast<char>(character);
        } else if (character < 0x800) {
            text += static_cast<char>(0xC0 | character >> 6);
            tail(0);
        } else if (character < 0x10000) {
            text += static_cast<char>(0xE0 | character >> 12);
            tail(6);
            tail(0);
        } else {
            text += static_cast<char>(0xF0 | character >> 18);
            tail(12);
            tail(6);
            tail(0);
        }
    }

    std::size_t unitBytes_;
    Order order_;
};

/// A code page without states, whose characters have `longest` bytes at most.
class CodePageDecoder final : public Utf8Converter::Decoder {
public:
    CodePageDecoder(UINT codePage, std::size_t longest) : codePage_(codePage), longest_(longest) {}

    [[nodiscard]] Outcome Decode(std::string_view& bytes, std::string& text) override
    {
        // What is incomplete can only be at the end: all but that is taken at one go, unless something is bad.
        for (std::size_t held = 0; held < longest_ && held < bytes.size(); ++held) {
            if (Append(bytes.substr(0, bytes.size() - held), text)) {
                bytes.remove_prefix(bytes.size() - held);
                return held == 0 ? Outcome::All : Outcome::Incomplete;
            }
        }
        while (TakeCharacter(bytes, text)) {
        }
        if (bytes.empty())
            return Outcome::All;
        return bytes.size() < longest_ ? Outcome::Incomplete : Outcome::Bad;
    }

    void Finish(std::string&) override {}

private:
    [[nodiscard]] bool TakeCharacter(std::string_view& bytes, std::string& text) const
    {
        for (std::size_t count = 1; count <= std::min(longest_, bytes.size()); ++count) {
            if (Append(bytes.substr(0, count), text)) {
                bytes.remove_prefix(count);
                return true;
            }
        }
        return false;
    }

    [[nodiscard]] bool Append(std::string_view bytes, std::string& text) const
    {
        const int count = static_cast<int>(bytes.size());
        const int units = MultiByteToWideChar(codePage_, MB_ERR_INVALID_CHARS, bytes.data(), count, nullptr, 0);
        if (units == 0)
            return false;
        std::wstring wide(static_cast<std::size_t>(units), L'\0');
        MultiByteToWideChar(codePage_, MB_ERR_INVALID_CHARS, bytes.data(), count, wide.data(), units);
        // Bytes to which a Windows code page gives no character come as controls.
        const auto isControl = [](wchar_t c) { return c >= 0x80 && c <= 0x9F; };
        if (codePage_ >= 1250 && codePage_ <= 1258 && std::any_of(wide.begin(), wide.end(), isControl))
            return false;
        text += Utf8FromWide(wide);
        return true;
    }

    UINT codePage_;
    std::size_t longest_;
};

struct Name {
    std::string_view charset;
    UINT codePage;
};

// Not here: encodings with states (ISO-2022-*, UTF-7, HZ), of which the system does not tell where one is bad.
constexpr Name kNames[] = {
    {"US-ASCII", 20127},   {"ASCII", 20127},      {"ISO-8859-2", 28592},  {"ISO-8859-3", 28593},
    {"ISO-8859-4", 28594}, {"ISO-8859-5", 28595}, {"ISO-8859-6", 28596},  {"ISO-8859-7", 28597},
    {"ISO-8859-8", 28598}, {"ISO-8859-9", 28599}, {"ISO-8859-13", 28603}, {"ISO-8859-15", 28605},
    {"LATIN2", 28592},     {"LATIN5", 28599},     {"LATIN-9", 28605},     {"KOI8-R", 20866},
    {"KOI8-U", 21866},     {"MACINTOSH", 10000},  {"ISO-8859-11", 874},   {"MACCYRILLIC", 10007},
    {"IBM273", 20273},     {"TIS-620", 874},      {"BIG5", 950},          {"EUC-JP", 20932},
    {"JOHAB", 1361},       {"GB18030", 54936},
};

bool IsInstalled(UINT codePage)
{
    CPINFO info{};
    return IsValidCodePage(codePage) && GetCPInfo(codePage, &info);
}

/// The number of `charset`; 0 when it has none.
UINT CodePageOf(std::string_view charset)
{
    for (const Name& name : kNames)
        if (name.charset == charset)
            return name.codePage;
    using namespace std::string_view_literals;
    for (const std::string_view prefix : {"WINDOWS-"sv, "CP"sv, "IBM"sv}) {
        UINT number = 0;
        const std::string_view digits = charset.substr(std::min(prefix.size(), charset.size()));
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (charset.starts_with(prefix) && error == std::errc() && end == digits.data() + digits.size())
            return number;
    }
    return 0;
}

} // namespace

std::unique_ptr<Utf8Converter::Decoder> Utf8Converter::Decoder::Open(const std::string& charset)
{
    using Order = UnicodeDecoder::Order;
    for (const std::size_t unitBytes : {std::size_t{2}, std::size_t{4}}) {
        const std::string name = unitBytes == 2 ? "UTF-16" : "UTF-32";
        if (charset == name)
            return std::make_unique<UnicodeDecoder>(unitBytes, Order::FromMark);
        if (charset == name + "LE" || charset == name + "BE")
            return std::make_unique<UnicodeDecoder>(unitBytes, charset.ends_with("LE") ? Order::Little : Order::Big);
    }
    constexpr UINT kFourBytes = 54936;
    constexpr UINT kItsTwoBytes = 936; // all but rare characters, where a system lacks the larger one
    UINT codePage = CodePageOf(charset);
    if (codePage == kFourBytes && !IsInstalled(codePage))
        codePage = kItsTwoBytes;
    if (codePage == 0 || codePage >= 65000 || !IsInstalled(codePage))
        return nullptr;
    CPINFO info{};
    GetCPInfo(codePage, &info);
    return std::make_unique<CodePageDecoder>(codePage, codePage == kFourBytes ? 4 : std::size_t{info.MaxCharSize});
}

} // namespace velmora
