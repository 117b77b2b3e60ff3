#include "jet/store/journal.h"

#include "jet/base/error.h"
#include "jet/store/bitmap.h"
#include "jet/store/header_page.h"
#include "jet/store/journal_format.h"
#include "jet/store/recovery.h"

#include <array>

namespace jet {

namespace fmt = journal_format;

namespace {

/// Records are written to the journal so many bytes at a time.
constexpr std::size_t kBufferSize = std::size_t{1} << 18;
/// A longer one is removed after its commit: the disk has better uses for the room.
constexpr std::uint64_t kMostKeptBytes = std::uint64_t{1} << 20;

std::uint64_t NewSalt(FileSystem& system)
{
    std::array<Byte, 8> bytes{};
    system.FillRandom(bytes);
    return LoadU64(bytes, 0);
}

} // namespace

// ---- Writing it -----------------------------------------------------------------------------------------------------

Journal::Journal(FileSystem& system, std::filesystem::path database)
    : system_(system), databasePath_(std::move(database))
{
}

Journal::~Journal()
{
    if (isActive_ || file_ == nullptr)
        return;
    try {
        RemoveFile();
    } catch (const Error&) {
        return; // it counts for nothing, and whoever opens the database next removes it
    }
}

void Journal::MakeFile()
{
    const std::filesystem::path path = fmt::PathFor(databasePath_);
    if (system_.Exists(path)) // one that is done with and could not be removed
        system_.Remove(path);
    std::unique_ptr<File> file = system_.Open(path, OpenMode::CreateNew);
    // It holds the database's content, which not everybody may read.
    system_.CopyRights(databasePath_, path);
    file_ = std::move(file);
    hasSafeName_ = false;
}

void Journal::Begin(File& database, const Format& format, PageNumber pageCount)
{
    if (file_ == nullptr)
        MakeFile();
    database_ = &database;
    format_ = &format;
    pageCount_ = pageCount;
    salt_ = NewSalt(system_);
    safeRecords_ = 0;
    safeEnd_ = 0;
    mayBeOverwritten_ = isMarked_ = false;
    held_.assign(pageCount / 8 + 1, 0);

    std::array<Byte, kHeaderSize> start{};
    database.ReadAt(0, start);
    header_ = fmt::Store({.pageSize = static_cast<std::uint32_t>(format.pageSize),
                          .pageCount = pageCount,
                          .commitCounter = LoadCommitCounter(database, format),
                          .salt = salt_,
                          .identity = fmt::IdentityOf(start)});
    isActive_ = true; // only now: until here every step may throw
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
    // From the file and not from the cache, which has the new content already.
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
    // Page 0 goes with the first batch, changed or not: the mark set below is a change of it.
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
    // A journal whose name a power failure takes is none, however safe its content is.
    if (!hasSafeName_)
        system_.SyncFolder(databasePath_);
    hasSafeName_ = true;

    SetBit(held_, kHeaderPage);
    for (const PageNumber page : pages)
        if (page < pageCount_)
            SetBit(held_, page);
    safeEnd_ = end_;
    safeRecords_ =
        static_cast<std::uint32_t>((safeEnd_ - fmt::kHeaderSize) / (fmt::kRecordHeaderSize + format_->pageSize));
    mayBeOverwritten_ = true;
    // After everything else: whoever meets the mark looks for a journal, and has to find it whole.
    if (!isMarked_)
        MarkWriteUnderWay(*database_, *format_);
    isMarked_ = true;
}

// ---- The end of it --------------------------------------------------------------------------------------------------

void Journal::Finish()
{
    // Nobody waits for the disk: the database says of itself that it is whole, and as long as this run has it, nobody
    // else makes it say otherwise.
    fmt::Invalidate(*file_);
    file_->BeginToWrite(0, fmt::kHeaderSize);
    isActive_ = false;
    buffer_ = Bytes();
    if (end_ <= kMostKeptBytes)
        return;
    try {
        RemoveFile();
    } catch (const Error&) {
        file_.reset(); // the next one replaces it
    }
}

/// Should a power failure bring it back, it still counts for nothing.
void Journal::RemoveFile()
{
    file_->Sync();
    file_.reset();
    system_.Remove(fmt::PathFor(databasePath_));
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
        JournalRecords(*file_, header).PutBack(*database_);
    }
    Finish();
}

} // namespace jet
