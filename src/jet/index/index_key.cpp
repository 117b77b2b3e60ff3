#include "jet/index/index_key.h"

#include "jet/base/error.h"
#include "jet/base/text_codec.h"
#include "jet/base/value.h"
#include "jet/index/text_key.h"

#include <algorithm>
#include <array>
#include <string>

namespace jet {

namespace {

constexpr Byte kValueAscending = 0x7F;
constexpr Byte kValueDescending = 0x80;
constexpr Byte kNullAscending = 0x00;
constexpr Byte kNullDescending = 0xFF;
constexpr Byte kSignBit = 0x80;

/// A key of another length, from a damaged row, could be the beginning of another one, which no key may be.
void RequireSize(ByteSpan stored, std::size_t size)
{
    if (stored.size() != size)
        throw CorruptValue("a value of " + std::to_string(stored.size()) + " bytes stands in an indexed column of " +
                           std::to_string(size) + " bytes");
}

/// Appends `stored`, a little-endian number, with its most significant byte first.
void AppendReversed(Bytes& key, ByteSpan stored)
{
    key.insert(key.end(), stored.rbegin(), stored.rend());
}

void AppendInteger(Bytes& key, ByteSpan stored)
{
    const std::size_t begin = key.size();
    AppendReversed(key, stored);
    // Two's complement sorts like a number without a sign once its top bit is turned.
    key[begin] ^= kSignBit;
}

void AppendFloat(Bytes& key, ByteSpan stored)
{
    const std::size_t begin = key.size();
    AppendReversed(key, stored);
    // As bits, positive floating-point numbers sort as they should and negative ones the other way round.
    if (key[begin] & kSignBit)
        Complement(MutableBytes(key).subspan(begin));
    else
        key[begin] |= kSignBit;
}

/// Groups of 8 bytes, the last filled with zeros, each followed by a count: 9 when more follow, else the bytes in it.
void AppendGroups(Bytes& key, ByteSpan bytes, SortOrder order)
{
    constexpr std::size_t kGroup = 8;
    constexpr Byte kMoreFollow = 9;
    while (!bytes.empty()) {
        const std::size_t size = std::min(bytes.size(), kGroup);
        const bool isLast = size == bytes.size();
        const std::size_t begin = key.size();
        AppendBytes(key, bytes.first(size));
        key.resize(begin + kGroup);
        if (isLast)
            key.push_back(static_cast<Byte>(size));
        if (order == SortOrder::Descending)
            Complement(MutableBytes(key).subspan(begin));
        // This count is the same in both directions.
        if (!isLast)
            key.push_back(kMoreFollow);
        bytes = bytes.subspan(size);
    }
}

void AppendGuid(Bytes& key, ByteSpan stored, SortOrder order)
{
    // A row holds the first three fields little-endian; the key has them as the text form shows them.
    constexpr std::array<std::size_t, 16> kTextOrder{3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
    std::array<Byte, kTextOrder.size()> bytes{};
    std::ranges::transform(kTextOrder, bytes.begin(), [&](std::size_t at) { return stored[at]; });
    AppendGroups(key, bytes, order);
}

void AppendNumeric(Bytes& key, ByteSpan stored, SortOrder order)
{
    const bool isNegative = stored[0] & kSignBit;
    // The sign byte does not turn with the direction, so a descending index has the negative values first. Meant so:
    // it is how the engine of these formats has always written them.
    key.push_back(isNegative ? 0x00 : 0xFF);
    const std::size_t begin = key.size();
    for (std::size_t at = 1; at < stored.size(); at += 4)
        AppendReversed(key, stored.subspan(at, 4));
    if (isNegative == (order == SortOrder::Ascending))
        Complement(MutableBytes(key).subspan(begin));
}

void AppendTextKey(Bytes& key, const Format& format, const KeyColumn& column, ByteSpan stored)
{
    // Put in by the wrong weights, an entry would stand where neither Access nor we would ever find it.
    if (column.collation != Collation{})
        throw Error(ErrorNumber::UnrecognizedFormat,
                    {"sort order " + std::to_string(column.collation.locale) + ", version " +
                     std::to_string(column.collation.version)},
                    "Indexes on text can only be used in the sort order General (1033, version 0).");
    if (format.version == JetVersion::Jet3)
        AppendJet3TextKey(key, stored, column.order);
    else
        AppendJet4TextKey(key, KeyUnits::OfStored(stored), column.order);
}

/// Appends a number by `append`, which takes the stored bytes and gives the ascending form.
void AppendTurned(Bytes& key, ByteSpan stored, std::size_t size, SortOrder order, void (*append)(Bytes&, ByteSpan))
{
    RequireSize(stored, size);
    const std::size_t begin = key.size();
    append(key, stored);
    if (order == SortOrder::Descending)
        Complement(MutableBytes(key).subspan(begin));
}

/// A boolean has no null state: one that is not there is False. True sorts first.
void AppendBoolean(Bytes& key, SortOrder order, std::optional<ByteSpan> stored)
{
    const bool isTrue = stored && !stored->empty() && stored->front() != 0;
    key.push_back(isTrue == (order == SortOrder::Ascending) ? 0x00 : 0xFF);
}

} // namespace

void AppendKey(Bytes& key, const Format& format, const KeyColumn& column, std::optional<ByteSpan> stored)
{
    const SortOrder order = column.order;
    const bool isAscending = order == SortOrder::Ascending;
    if (!stored && column.type != ColumnType::Boolean) {
        key.push_back(isAscending ? kNullAscending : kNullDescending);
        return;
    }
    key.push_back(isAscending ? kValueAscending : kValueDescending);
    const TypeFacts& facts = FactsOf(column.type);
    switch (facts.key) {
    case KeyForm::Boolean:
        return AppendBoolean(key, order, stored);
    case KeyForm::Unsigned:
        return AppendTurned(key, *stored, facts.size, order, AppendReversed);
    case KeyForm::Signed:
        return AppendTurned(key, *stored, facts.size, order, AppendInteger);
    case KeyForm::Float:
        return AppendTurned(key, *stored, facts.size, order, AppendFloat);
    case KeyForm::Guid:
        RequireSize(*stored, facts.size);
        return AppendGuid(key, *stored, order);
    case KeyForm::Numeric:
        RequireSize(*stored, facts.size);
        return AppendNumeric(key, *stored, order);
    case KeyForm::Groups:
        return AppendGroups(key, *stored, order);
    case KeyForm::Text:
        return AppendTextKey(key, format, column, *stored);
    case KeyForm::None:
        break;
    }
    throw CorruptValue("a column of type " + std::to_string(static_cast<int>(column.type)) + " cannot be indexed");
}

Bytes TextKey(const Format& format, std::string_view utf8)
{
    Bytes text;
    Bytes key;
    key.reserve(2 * utf8.size() + sizeof(std::uint64_t)); // what most texts need
    key.push_back(kValueAscending);
    if (format.version == JetVersion::Jet3) {
        AppendCp1252(text, utf8);
        AppendJet3TextKey(key, text, SortOrder::Ascending);
    } else if (!AppendPlainJet4TextKey(key, utf8)) {
        AppendUtf16(text, utf8);
        AppendJet4TextKey(key, KeyUnits::OfUtf16(text), SortOrder::Ascending);
    }
    return key;
}

} // namespace jet
