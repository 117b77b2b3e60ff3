#include "key_text.h"

#include "jet/base/error.h"
#include "jet/base/text_codec.h"
#include "jet/base/value_codec.h"
#include "jet/base/value_text.h"
#include "jet/index/index_page.h"
#include "jet/index/text_key.h"
#include "text_forms.h"

#include <algorithm>
#include <map>

namespace jet {

namespace {

constexpr Byte kValueAscending = 0x7F;
constexpr Byte kValueDescending = 0x80;
constexpr Byte kNullAscending = 0x00;
constexpr Byte kNullDescending = 0xFF;
constexpr Byte kSignBit = 0x80;
constexpr std::size_t kGroup = 8;
constexpr Byte kGroupFollows = 9;

/// Thrown where the bytes stop making sense; caught at once.
struct NotAKey {};

/// Reads a key from front to back, turning the bytes of descending columns.
class KeyReader {
public:
    explicit KeyReader(ByteSpan key) : rest_(key) {}

    [[nodiscard]] ByteSpan Rest() const noexcept { return rest_; }
    [[nodiscard]] Byte Raw()
    {
        if (rest_.empty())
            throw NotAKey();
        const Byte byte = rest_.front();
        rest_ = rest_.subspan(1);
        return byte;
    }
    void Turn(bool isDescending) noexcept { turned_ = isDescending; }
    [[nodiscard]] Byte Next() { return static_cast<Byte>(turned_ ? ~Raw() : Raw()); }
    [[nodiscard]] Bytes Next(std::size_t size)
    {
        Bytes bytes(size);
        std::ranges::generate(bytes, [this] { return Next(); });
        return bytes;
    }

private:
    ByteSpan rest_;
    bool turned_ = false;
};

/// The code that follows in a row of codes (see Jet4WeightRow).
void StepCode(Bytes& code)
{
    std::size_t at = code.size() - 1;
    for (; at != 0 && code[at] == 0xFF; --at)
        code[at] = 0x02;
    ++code[at];
}

/// Not the vectors' own order: gcc 12 warns of the comparison that it makes of it.
struct SortsBefore {
    bool operator()(const Bytes& a, const Bytes& b) const noexcept { return CompareBytes(a, b) < 0; }
};
using LettersByCode = std::map<Bytes, std::uint16_t, SortsBefore>;

/// The first character that has each primary weight.
const LettersByCode& Jet4Letters()
{
    static const LettersByCode letters = [] {
        LettersByCode byCode;
        for (const Jet4WeightRow& row : kJet4General) {
            Bytes code;
            for (int shift = 24; shift >= 0; shift -= 8)
                if (row.primary >> shift != 0)
                    code.push_back(static_cast<Byte>(row.primary >> shift));
            if (code.empty())
                continue;
            for (std::uint32_t unit = row.first; unit <= row.last; ++unit) {
                byCode.emplace(code, static_cast<std::uint16_t>(unit));
                if (row.steps)
                    StepCode(code);
            }
        }
        return byCode;
    }();
    return letters;
}

void AppendUnit(Bytes& utf16, std::uint16_t unit)
{
    utf16.push_back(static_cast<Byte>(unit));
    utf16.push_back(static_cast<Byte>(unit >> 8));
}

/// Primary weights up to 01, then whatever else distinguishes the text, up to 00.
std::string Jet4Text(KeyReader& reader, bool isDescending)
{
    constexpr std::size_t kLongestCode = 4;
    Bytes utf16, code;
    for (Byte byte = reader.Next(); byte != 0x01 || !code.empty(); byte = reader.Next()) {
        code.push_back(byte);
        const auto letter = Jet4Letters().find(code);
        if (letter == Jet4Letters().end() && code.size() < kLongestCode)
            continue;
        AppendUnit(utf16, letter == Jet4Letters().end() ? 0xFFFD : letter->second);
        code.clear();
    }
    bool hasMore = false;
    while (reader.Next() != 0x00)
        hasMore = true;
    if (isDescending)
        static_cast<void>(reader.Raw());
    return '"' + DecodeText(utf16, FormatOf(JetVersion::Jet4)) + '"' + (hasMore ? "..." : "");
}

/// Weights from 10 on, then the accents, two to a byte, up to a 0.
std::string Jet3Text(KeyReader& reader)
{
    constexpr Byte kLowestWeight = 0x10;
    constexpr std::size_t kBlank = 0x20; // control characters have the weights of others
    Bytes letters;
    Byte byte = reader.Next();
    for (; byte >= kLowestWeight; byte = reader.Next()) {
        const auto letter = std::find_if(kJet3General.begin() + kBlank, kJet3General.end(),
                                         [&](const Jet3Weight& weight) { return weight.primary == byte; });
        letters.push_back(letter == kJet3General.end() ? '?' : static_cast<Byte>(letter - kJet3General.begin()));
    }
    const bool hasMore = byte != 0;
    while ((byte & 0x0F) != 0)
        byte = reader.Next();
    return '"' + DecodeText(letters, FormatOf(JetVersion::Jet3)) + '"' + (hasMore ? "..." : "");
}

/// Groups of eight bytes, each with its count.
Bytes Groups(KeyReader& reader, bool isDescending)
{
    Bytes bytes;
    for (;;) {
        const Bytes group = reader.Next(kGroup);
        AppendBytes(bytes, group);
        const Byte count = reader.Raw();
        if (count == kGroupFollows)
            continue;
        const std::size_t last = isDescending ? static_cast<Byte>(~count) : count;
        if (last > kGroup)
            throw NotAKey();
        bytes.resize(bytes.size() - kGroup + last);
        return bytes;
    }
}

/// The value as a row would hold it, of a type with a fixed size.
Bytes StoredNumber(KeyReader& reader, ColumnType type, std::size_t size)
{
    Bytes bytes = reader.Next(size);
    const bool isFloat = type == ColumnType::Single || type == ColumnType::Double || type == ColumnType::DateTime;
    if (isFloat && (bytes[0] & kSignBit) == 0)
        std::ranges::transform(bytes, bytes.begin(), [](Byte byte) { return static_cast<Byte>(~byte); });
    else if (type != ColumnType::Byte)
        bytes[0] ^= kSignBit;
    std::ranges::reverse(bytes);
    return bytes;
}

/// The sign byte stands as it is; the number is turned where sign and direction differ.
Bytes StoredNumeric(KeyReader& reader, bool isDescending)
{
    const bool isNegative = reader.Raw() == 0x00;
    reader.Turn(isNegative != isDescending);
    Bytes stored{isNegative ? kSignBit : Byte{0}};
    for (int part = 0; part < 4; ++part) {
        const Bytes bytes = reader.Next(4);
        stored.insert(stored.end(), bytes.rbegin(), bytes.rend());
    }
    return stored;
}

Bytes StoredGuid(const Bytes& text)
{
    if (text.size() != 16)
        throw NotAKey();
    Bytes stored = text;
    std::reverse(stored.begin(), stored.begin() + 4);
    std::reverse(stored.begin() + 4, stored.begin() + 6);
    std::reverse(stored.begin() + 6, stored.begin() + 8);
    return stored;
}

std::string ColumnText(KeyReader& reader, const Column& column, bool isDescending, const Format& format)
{
    const Byte flag = reader.Raw();
    if (flag == (isDescending ? kNullDescending : kNullAscending))
        return "Null";
    if (flag != (isDescending ? kValueDescending : kValueAscending))
        throw NotAKey();
    reader.Turn(isDescending);
    const auto text = [&](ByteSpan stored) { return ToText(DecodeValue(stored, format, column.GetValueType())); };
    switch (column.type) {
    case ColumnType::Boolean:
        return reader.Next() == 0 ? "True" : "False";
    case ColumnType::Text:
    case ColumnType::Memo:
        return format.version == JetVersion::Jet3 ? Jet3Text(reader) : Jet4Text(reader, isDescending);
    case ColumnType::Binary:
    case ColumnType::FixedBinary:
        return reader.Rest().empty() ? "empty" : Hex(Groups(reader, isDescending));
    case ColumnType::Guid:
        return text(StoredGuid(Groups(reader, isDescending)));
    case ColumnType::Numeric:
        return text(StoredNumeric(reader, isDescending));
    case ColumnType::Ole:
        throw NotAKey();
    default:
        return text(StoredNumber(reader, column.type, column.FixedSize()));
    }
}

} // namespace

std::string KeyText(ByteSpan key, const TableDef& def, const RealIndex& index)
{
    KeyReader reader(key);
    std::string all;
    try {
        for (const IndexColumn& part : index.columns) {
            const Column& column = def.columns[def.ColumnByNumber(part.column).value()];
            all += (all.empty() ? "" : ", ") + column.name + " " +
                   ColumnText(reader, column, part.order == SortOrder::Descending, *def.format);
        }
    } catch (const NotAKey&) {
        return all + "; the rest is no key of this index";
    } catch (const Error& error) {
        return all + "; " + error.what();
    }
    return reader.Rest().empty() ? all : all + "; more bytes than the index has columns";
}

} // namespace jet
