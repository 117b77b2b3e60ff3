#include "jet/store/journal_format.h"
#include "jet/base/format.h"

#include "jet/store/header_page.h"

#include <algorithm>
#include <string_view>

namespace jet::journal_format {

namespace {

constexpr std::string_view kMagic{"velmora journal\0", 16};
constexpr std::uint32_t kFormatVersion = 1;

constexpr std::size_t kVersion = 16;
constexpr std::size_t kPageSize = 20;
constexpr std::size_t kPageCount = 24;
constexpr std::size_t kCommitCounter = 28;
constexpr std::size_t kSalt = 32;
constexpr std::size_t kIdentity = 40;
constexpr std::size_t kHeaderSum = 48;

constexpr std::size_t kRecordPage = 0;
constexpr std::size_t kRecordBatch = 4;
constexpr std::size_t kRecordSum = 8;

/// `bytes` are a multiple of 8.
/// Finds writes that were torn or never came. It is no help against forgery, and need not be.
std::uint64_t Checksum(std::uint64_t sum, ByteSpan bytes)
{
    for (std::size_t at = 0; at < bytes.size(); at += 8) {
        sum = (sum ^ LoadU64(bytes, at)) * 0x9E37'79B9'7F4A'7C15;
        sum ^= sum >> 32;
    }
    return sum;
}

/// The salt is another one in each journal, so what an earlier one has left in the same blocks does not pass.
std::uint64_t RecordSum(ByteSpan bytes, std::uint64_t salt)
{
    return Checksum(Checksum(salt, bytes.first(kRecordSum)), bytes.subspan(kRecordHeaderSize));
}

} // namespace

std::filesystem::path PathFor(const std::filesystem::path& database)
{
    std::filesystem::path path = database;
    return path += ".velmora-journal";
}

Bytes Store(const Header& header)
{
    Bytes bytes(kHeaderSize);
    std::ranges::copy(kMagic, bytes.begin());
    StoreU32(bytes, kVersion, kFormatVersion);
    StoreU32(bytes, kPageSize, header.pageSize);
    StoreU32(bytes, kPageCount, header.pageCount);
    StoreU32(bytes, kCommitCounter, header.commitCounter);
    StoreU64(bytes, kSalt, header.salt);
    StoreU64(bytes, kIdentity, header.identity);
    StoreU64(bytes, kHeaderSum, Checksum(0, ByteSpan(bytes).first(kHeaderSum)));
    return bytes;
}

HeaderState Load(File& journal, Header& header)
{
    if (journal.Size() < kHeaderSize)
        return HeaderState::Absent;
    Bytes bytes(kHeaderSize);
    journal.ReadAt(0, bytes);
    if (std::ranges::all_of(bytes, [](Byte b) { return b == 0; }))
        return HeaderState::Absent;
    if (!std::ranges::equal(kMagic, ByteSpan(bytes).first(kMagic.size()), {}, {},
                            [](Byte b) { return static_cast<char>(b); }) ||
        LoadU32(bytes, kVersion) != kFormatVersion)
        return HeaderState::Foreign;
    // A sum that does not fit: the run ended while the header was being written, before any page was overwritten.
    if (LoadU64(bytes, kHeaderSum) != Checksum(0, ByteSpan(bytes).first(kHeaderSum)))
        return HeaderState::Absent;
    header.pageSize = LoadU32(bytes, kPageSize);
    header.pageCount = LoadU32(bytes, kPageCount);
    header.commitCounter = LoadU16(bytes, kCommitCounter);
    header.salt = LoadU64(bytes, kSalt);
    header.identity = LoadU64(bytes, kIdentity);
    return HeaderState::Whole;
}

void Invalidate(File& journal)
{
    // The header is one sector: it is there, or it is gone.
    journal.WriteAt(0, Bytes(kHeaderSize));
}

std::uint64_t IdentityOf(ByteSpan page0)
{
    static_assert(jet::kHeaderSize % 8 == 0);
    return Checksum(0, page0.first(jet::kHeaderSize));
}

void Seal(MutableBytes bytes, const Record& record, std::uint64_t salt)
{
    StoreU32(bytes, kRecordPage, record.page);
    StoreU32(bytes, kRecordBatch, record.batch);
    StoreU64(bytes, kRecordSum, RecordSum(bytes, salt));
}

std::optional<Record> Unseal(ByteSpan bytes, std::uint64_t salt)
{
    if (LoadU64(bytes, kRecordSum) != RecordSum(bytes, salt))
        return std::nullopt;
    return Record{LoadU32(bytes, kRecordPage), LoadU32(bytes, kRecordBatch)};
}

} // namespace jet::journal_format

namespace jet {

namespace fmt = journal_format;

/// What does not make a whole record at the end was being written when the run ended, and does not count.
JournalRecords::JournalRecords(File& journal, const fmt::Header& header)
    : journal_(journal), header_(header), record_(fmt::kRecordHeaderSize + header.pageSize),
      count_((journal.Size() - fmt::kHeaderSize) / record_.size())
{
}

std::optional<fmt::Record> JournalRecords::Read(std::uint64_t index)
{
    journal_.ReadAt(fmt::RecordOffset(index, header_.pageSize), record_);
    return fmt::Unseal(record_, header_.salt);
}

bool JournalRecords::IsWhole()
{
    std::optional<std::uint64_t> firstBroken;
    for (std::uint64_t i = 0; i < count_; ++i) {
        const std::optional<fmt::Record> record = Read(i);
        if (!record)
            firstBroken = firstBroken.value_or(i);
        // A record names the first of its batch. One that was begun behind the broken record proves that the broken one
        // was once safe, and that its page may have been overwritten.
        else if (record->page >= header_.pageCount || (firstBroken && record->batch > *firstBroken))
            return false;
    }
    // Page 0 is always the first; the database would not need the journal had that not been safe.
    return count_ != 0 && firstBroken != 0;
}

void JournalRecords::PutBack(File& database)
{
    for (std::uint64_t i = 1; i < count_; ++i)
        if (const std::optional<fmt::Record> record = Read(i))
            WriteBack(database, record->page);
    database.Truncate(std::uint64_t{header_.pageCount} * header_.pageSize);
    database.Sync();
    // With page 0 the file says that it is at rest again, so everything else must be there before.
    if (Read(0))
        WriteBack(database, kHeaderPage);
    database.Sync();
}

void JournalRecords::WriteBack(File& database, PageNumber page)
{
    database.WriteAt(std::uint64_t{page} * header_.pageSize, Page());
}

} // namespace jet
