#include "jet/store/header_page.h"

#include "jet/base/error.h"
#include "jet/base/rc4.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string>

namespace jet {

using namespace header_offset;

namespace {

constexpr std::array<Byte, 4> kSignature{0, 1, 0, 0};
constexpr std::string_view kJetName{"Standard Jet DB\0", 16};
constexpr std::string_view kLaterName{"Standard ACE DB\0", 16};
// The same for every file: it keeps page 0 from being read by eye, and no more.
constexpr std::array<Byte, 4> kMaskKey{0xC7, 0xDA, 0x39, 0x6B};
constexpr std::array<Byte, 8> kConstantBytes{0x54, 0x06, 0, 0, '4', '.', '0', 0};

constexpr std::uint16_t kJet3Country = 1; ///< as in Jet 3 files that the Jet 4 engine makes
// A counter of commits for each user of a shared database. Slot 0 belongs to whoever has the file alone.
constexpr std::size_t kCommitSlots = 256;
constexpr std::uint16_t kCommitUnused = 0x0100;
constexpr std::uint16_t kCommitFirst = 0x0101;

std::size_t MaskedSize(JetVersion version)
{
    return version == JetVersion::Jet3 ? 126 : 128;
}

void ApplyMask(MutableBytes page, JetVersion version)
{
    ApplyRc4(kMaskKey, page.subspan(kMasked, MaskedSize(version)));
}

/// What the password's bytes of Jet 4 are masked with once more: the whole days of the creation date, over and over.
void ApplyDayMask(MutableBytes password, double creationDate)
{
    const bool usable = creationDate >= 0 && creationDate < 4294967296.0;
    std::array<Byte, 4> mask{};
    StoreU32(mask, 0, usable ? static_cast<std::uint32_t>(creationDate) : 0);
    for (std::size_t i = 0; i < password.size(); ++i)
        password[i] ^= mask[i % mask.size()];
}

bool HoldsText(ByteSpan bytes, std::size_t at, std::string_view text)
{
    return std::equal(text.begin(), text.end(), bytes.begin() + static_cast<std::ptrdiff_t>(at),
                      [](char c, Byte b) { return static_cast<Byte>(c) == b; });
}

bool HoldsSignature(ByteSpan page) noexcept
{
    return std::equal(kSignature.begin(), kSignature.end(), page.begin());
}

JetVersion VersionOf(ByteSpan page, std::string_view name)
{
    const bool later = HoldsSignature(page) && HoldsText(page, kName, kLaterName);
    if (!later && !BearsSignature(page))
        throw Error(ErrorNumber::NotADatabase, {name});
    // Told apart from what is no database at all: this file is one, and Access can save it in the older format.
    if (later || page[kVersion] > 1)
        throw Error(ErrorNumber::UnrecognizedFormat, {name}, "It was made by Access 2007 or later.");
    return page[kVersion] == 0 ? JetVersion::Jet3 : JetVersion::Jet4;
}

bool HasPassword(MutableBytes plain, const DatabaseHeader& header)
{
    const bool jet3 = header.version == JetVersion::Jet3;
    const MutableBytes password = plain.subspan(kPassword, jet3 ? kJet3PasswordSize : kJet4PasswordSize);
    // Without a password the bytes are the day mask itself, so it has to come off before they are looked at.
    if (!jet3)
        ApplyDayMask(password, header.creationDate);
    return std::ranges::any_of(password, [](Byte b) { return b != 0; });
}

} // namespace

Bytes UnmaskedHeader(ByteSpan page)
{
    Bytes plain(page.begin(), page.begin() + kHeaderSize);
    ApplyMask(plain, plain[kVersion] == 0 ? JetVersion::Jet3 : JetVersion::Jet4);
    return plain;
}

bool BearsSignature(ByteSpan page) noexcept
{
    return HoldsSignature(page) && HoldsText(page, kName, kJetName);
}

DatabaseHeader ReadHeader(ByteSpan page, std::string_view name)
{
    DatabaseHeader header;
    header.version = VersionOf(page, name);
    Bytes plain = UnmaskedHeader(page);
    if (LoadU32(plain, kPageKey) != 0)
        throw Error(ErrorNumber::UnrecognizedFormat, {name}, "It is encoded; decode it in Access first.");

    header.freePages = RowId::FromPointer(LoadU32(plain, kFreePages));
    header.codePage = LoadU16(plain, kCodePage);
    if (header.version == JetVersion::Jet3) {
        header.country = LoadU16(plain, kCountry);
        header.sortOrder = LoadU16(plain, kJet3SortOrder);
        header.build = LoadU16(plain, kJet3Build);
    } else {
        header.sortOrder = LoadU16(plain, kJet4SortOrder);
        header.sortVersion = plain[kJet4SortVersion];
        header.build = LoadU32(plain, kJet4Build);
        header.creationDate = std::bit_cast<double>(LoadU64(plain, kCreationDate));
    }
    // Text of Jet 3 is bytes of the code page; written in the wrong one it would be other text.
    if (header.version == JetVersion::Jet3 && header.codePage != kWesternCodePage)
        throw Error(ErrorNumber::UnrecognizedFormat, {name},
                    "Its text is in code page " + std::to_string(header.codePage) + ", not 1252.");
    if (HasPassword(plain, header))
        throw Error(ErrorNumber::NotAValidPassword, {},
                    "(" + std::string(name) + " is protected by a password; remove it in Access first.)");
    return header;
}

DatabaseHeader ReadHeader(File& file, MutableBytes start)
{
    const std::string name = file.Name();
    const std::uint64_t size = file.Size();
    if (size < kHeaderSize)
        throw Error(ErrorNumber::NotADatabase, {name}, "It has only " + std::to_string(size) + " bytes.");
    file.ReadAt(0, start.first(kHeaderSize));
    return ReadHeader(start, name);
}

void MakeHeader(MutableBytes page, const DatabaseHeader& header)
{
    const bool jet3 = header.version == JetVersion::Jet3;
    std::ranges::copy(kSignature, page.begin());
    std::ranges::copy(kJetName, page.begin() + kName);
    page[kVersion] = jet3 ? 0 : 1;

    StoreU32(page, kFreePages, RowId{kGlobalMapPage, 0}.Pointer());
    StoreU32(page, kReleasedPages, RowId{kGlobalMapPage, 1}.Pointer());
    StoreU32(page, kSystemTables, kObjectsPage);
    StoreU32(page, kSystemTables + 4, kAcesPage);
    StoreU32(page, kSystemTables + 8, kQueriesPage);
    StoreU32(page, kSystemTables + 12, kRelationshipsPage);
    StoreU16(page, kCodePage, kWesternCodePage);
    if (jet3) {
        StoreU16(page, kCountry, kJet3Country);
        StoreU16(page, kJet3SortOrder, kGeneralSortOrder);
        StoreU32(page, kJet3Build, header.build);
    } else {
        // No password is twenty zero units, which the day mask turns into something else.
        ApplyDayMask(page.subspan(kPassword, kJet4PasswordSize), header.creationDate);
        StoreU32(page, kJet4Build, header.build);
        StoreU16(page, kJet4SortOrder, kGeneralSortOrder);
        StoreU64(page, kCreationDate, std::bit_cast<std::uint64_t>(header.creationDate));
        std::ranges::copy(kConstantBytes, page.begin() + kConstant);
    }
    // Last, when every field of the masked area has its value; the counters lie outside of it.
    ApplyMask(page, header.version);

    const std::size_t counters = FormatOf(header.version).commitCounters;
    for (std::size_t slot = 0; slot < kCommitSlots; ++slot)
        StoreU16(page, counters + 2 * slot, slot == 0 ? kCommitFirst : kCommitUnused);
}

std::uint16_t LoadCommitCounter(File& database, const Format& format)
{
    std::array<Byte, 2> bytes{};
    database.ReadAt(format.commitCounters, bytes);
    return LoadU16(bytes, 0);
}

void MarkWriteUnderWay(File& database, const Format& format)
{
    std::array<Byte, 2> bytes{};
    StoreU16(bytes, 0, kWriteUnderWay);
    database.WriteAt(format.commitCounters, bytes);
    database.Sync();
}

std::uint16_t NextCommitCounter(std::uint16_t counter) noexcept
{
    // 0 means that a write is under way, 1 that a damaged page was met: the count goes round past both.
    return counter == 0xFFFF || counter < 1 ? 2 : static_cast<std::uint16_t>(counter + 1);
}

void CountCommit(MutableBytes page, const Format& format)
{
    StoreU16(page, format.commitCounters, NextCommitCounter(LoadU16(page, format.commitCounters)));
}

} // namespace jet
