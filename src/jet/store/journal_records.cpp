#include "jet/store/journal_records.h"

#include "jet/base/format.h"

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
