#include "jet/store/journal.h"

#include "jet/error.h"
#include "jet/store/bitmap.h"
#include "jet/store/header_page.h"
#include "jet/store/journal_format.h"

#include <array>
#include <optional>
#include <random>
#include <string>

namespace jet {

namespace fmt = journal_format;

namespace {

/// Records are written to the journal so many bytes at a time.
constexpr std::size_t kBufferSize = std::size_t{1} << 18;

std::uint64_t NewSalt()
{
    std::random_device device;
    return std::uint64_t{device()} << 32 | device();
}

std::uint16_t LoadCounter(File& database, const Format& format)
{
    std::array<Byte, 2> bytes{};
    database.ReadAt(format.commitCounters, bytes);
    return LoadU16(bytes, 0);
}

/// From here on, and until a whole page 0 is back, the file says of itself that it is in the midst of a write.
void MarkWriteUnderWay(File& database, const Format& format)
{
    std::array<Byte, 2> bytes{};
    StoreU16(bytes, 0, kWriteUnderWay);
    database.WriteAt(format.commitCounters, bytes);
    database.Sync();
}

/// A journal without a header is one that is done with.
void Invalidate(File& journal)
{
    journal.WriteAt(0, Bytes(fmt::kHeaderSize));
    journal.Sync();
}

Error Interrupted(const std::filesystem::path& database, const std::string& why)
{
    return Error(ErrorNumber::NotADatabase, {database.string()},
                 "A write to it was interrupted, and " + why +
                     ". Let Access repair the file, or take a copy from before.");
}

/// Reads a journal whose header is whole and puts its pages back.
class PutBack {
public:
    PutBack(File& journal, const fmt::Header& header, File& database)
        : journal_(journal), header_(header), database_(database), record_(fmt::kRecordHeaderSize + header.pageSize),
          count_((journal.Size() - fmt::kHeaderSize) / record_.size())
    {
    }

    /// Is every record whole that was once known to be safe on the disk? Those of the last batch need not be: as long
    /// as they were not, none of their pages was overwritten.
    [[nodiscard]] bool IsWhole()
    {
        std::optional<std::uint64_t> firstBroken;
        for (std::uint64_t i = 0; i < count_; ++i) {
            const std::optional<fmt::Record> record = Read(i);
            if (!record)
                firstBroken = firstBroken.value_or(i);
            else if (record->page >= header_.pageCount || (firstBroken && record->batch > *firstBroken))
                return false;
        }
        // Page 0 is always the first; the database would not need the journal had that not been safe.
        return count_ != 0 && firstBroken != 0;
    }

    void Run()
    {
        for (std::uint64_t i = 1; i < count_; ++i)
            if (const std::optional<fmt::Record> record = Read(i))
                WriteBack(record->page);
        database_.Truncate(std::uint64_t{header_.pageCount} * header_.pageSize);
        database_.Sync();
        // With page 0 the file says that it is at rest again, so everything else must be there before.
        if (Read(0))
            WriteBack(kHeaderPage);
        database_.Sync();
    }

private:
    std::optional<fmt::Record> Read(std::uint64_t index)
    {
        journal_.ReadAt(fmt::RecordOffset(index, header_.pageSize), record_);
        return fmt::Unseal(record_, header_.salt);
    }
    void WriteBack(PageNumber page)
    {
        database_.WriteAt(std::uint64_t{page} * header_.pageSize, ByteSpan(record_).subspan(fmt::kRecordHeaderSize));
    }

    File& journal_;
    const fmt::Header& header_;
    File& database_;
    Bytes record_;
    std::uint64_t count_;
};

} // namespace

// ---- Writing it -----------------------------------------------------------------------------------------------------

Journal::Journal(FileSystem& system, std::filesystem::path database)
    : system_(system), databasePath_(std::move(database))
{
}

void Journal::Begin(File& database, const Format& format, PageNumber pageCount)
{
    const std::filesystem::path path = fmt::PathFor(databasePath_);
    if (system_.Exists(path)) // one that is done with and could not be removed
        system_.Remove(path);
    std::unique_ptr<File> file = system_.Open(path, OpenMode::CreateNew);
    // It holds the database's content, which not everybody may read.
    system_.CopyRights(databasePath_, path);

    database_ = &database;
    format_ = &format;
    pageCount_ = pageCount;
    salt_ = NewSalt();
    safeRecords_ = 0;
    safeEnd_ = 0;
    mayBeOverwritten_ = isMarked_ = false;
    held_.assign(pageCount / 8 + 1, 0);

    std::array<Byte, kHeaderSize> start{};
    database.ReadAt(0, start);
    header_ = fmt::Store({.pageSize = static_cast<std::uint32_t>(format.pageSize),
                          .pageCount = pageCount,
                          .commitCounter = LoadCounter(database, format),
                          .salt = salt_,
                          .identity = fmt::IdentityOf(start)});
    file_ = std::move(file);
}

bool Journal::Holds(PageNumber page) const noexcept
{
    return page >= pageCount_ || TestBit(held_, page);
}

void Journal::Append(PageNumber page)
{
    const std::size_t at = buffer_.size();
    buffer_.resize(at + fmt::kRecordHeaderSize + format_->pageSize);
    const MutableBytes record = MutableBytes(buffer_).subspan(at);
    database_->ReadAt(std::uint64_t{page} * format_->pageSize, record.subspan(fmt::kRecordHeaderSize));
    fmt::Seal(record, {page, safeRecords_}, salt_);
    if (buffer_.size() >= kBufferSize)
        Flush();
}

void Journal::Flush()
{
    file_->WriteAt(end_, buffer_);
    end_ += buffer_.size();
    buffer_.clear();
}

/// One batch. Until all of it is safe nothing of it counts: one that fails is written over by the next.
void Journal::Keep(std::span<const PageNumber> pages)
{
    const bool isFirst = safeEnd_ == 0;
    end_ = safeEnd_;
    buffer_.clear();
    if (isFirst) {
        buffer_ = header_;
        Append(kHeaderPage);
    }
    const auto belongs = [&](PageNumber page) { return !Holds(page) && !(isFirst && page == kHeaderPage); };
    for (const PageNumber page : pages)
        if (belongs(page))
            Append(page);
    if (!buffer_.empty())
        Flush();
    file_->Sync();
    if (isFirst)
        system_.SyncFolder(databasePath_);

    SetBit(held_, kHeaderPage);
    for (const PageNumber page : pages)
        if (page < pageCount_)
            SetBit(held_, page);
    safeEnd_ = end_;
    safeRecords_ =
        static_cast<std::uint32_t>((safeEnd_ - fmt::kHeaderSize) / (fmt::kRecordHeaderSize + format_->pageSize));
    mayBeOverwritten_ = true;
    if (!isMarked_)
        MarkWriteUnderWay(*database_, *format_);
    isMarked_ = true;
}

// ---- The end of it --------------------------------------------------------------------------------------------------

void Journal::Finish()
{
    Invalidate(*file_);
    file_.reset();
    buffer_ = Bytes();
    try {
        system_.Remove(fmt::PathFor(databasePath_));
    } catch (const Error&) {
        return; // it counts no longer, and the next one replaces it
    }
}

void Journal::RollBack()
{
    if (!IsActive())
        return;
    if (mayBeOverwritten_) {
        fmt::Header header;
        if (fmt::Load(*file_, header) != fmt::HeaderState::Whole)
            throw Interrupted(databasePath_, "its journal has been changed by somebody else");
        // A commit that failed late may have left the next counter there, which tells of a whole file.
        MarkWriteUnderWay(*database_, *format_);
        PutBack(*file_, header, *database_).Run();
    }
    Finish();
}

void CheckAtRest(FileSystem& system, const std::filesystem::path& path, File& database)
{
    std::array<Byte, kHeaderSize> start{};
    const Format& format = FormatOf(ReadHeader(database, start).version);
    if (database.Size() >= format.pageSize && LoadCounter(database, format) == kWriteUnderWay &&
        system.Exists(fmt::PathFor(path)))
        throw Error(ErrorNumber::NotADatabase, {path.string()},
                    "A write to it was interrupted; it is put back when it is next opened for writing.");
}

void SetJournalAside(FileSystem& system, const std::filesystem::path& database)
{
    const std::filesystem::path path = fmt::PathFor(database);
    if (!system.Exists(path))
        return;
    std::filesystem::path aside = path;
    system.Rename(path, aside += ".old");
    system.SyncFolder(path);
}

void Recover(FileSystem& system, const std::filesystem::path& path, File& database)
{
    std::array<Byte, kHeaderSize> start{};
    const Format& format = FormatOf(ReadHeader(database, start).version);
    if (database.Size() < format.pageSize)
        return; // which is no database: to be told where its pages are counted
    const std::uint16_t counter = LoadCounter(database, format);
    const bool isInterrupted = counter == kWriteUnderWay;
    const std::filesystem::path journalPath = fmt::PathFor(path);
    if (!system.Exists(journalPath)) {
        if (isInterrupted)
            throw Interrupted(path, "there is no journal of it beside it");
        return;
    }

    std::unique_ptr<File> journal = system.Open(journalPath, OpenMode::ReadWrite);
    fmt::Header header;
    const fmt::HeaderState state = fmt::Load(*journal, header);
    const bool isOwn = state == fmt::HeaderState::Whole && header.identity == fmt::IdentityOf(start) &&
                       header.pageSize == format.pageSize && header.pageCount != 0 &&
                       database.Size() / format.pageSize >= header.pageCount;
    if (!isInterrupted) {
        // The database is whole: nothing in it was overwritten yet, or the commit was complete but for its journal.
        const bool isOfUse =
            state == fmt::HeaderState::Foreign || (state == fmt::HeaderState::Whole && !isOwn) ||
            (isOwn && counter != header.commitCounter && counter != NextCommitCounter(header.commitCounter));
        journal.reset();
        if (isOfUse)
            SetJournalAside(system, path);
        else
            system.Remove(journalPath);
        return;
    }
    if (!isOwn)
        throw Interrupted(path, "'" + journalPath.string() + "' is not its journal");
    PutBack putBack(*journal, header, database);
    if (!putBack.IsWhole())
        throw Interrupted(path, "its journal '" + journalPath.string() + "' is damaged");
    putBack.Run();
    Invalidate(*journal);
    journal.reset();
    system.Remove(journalPath);
}

} // namespace jet
