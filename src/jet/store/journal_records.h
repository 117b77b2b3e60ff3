#pragma once

#include "jet/store/file.h"
#include "jet/store/journal_format.h"

#include <cstdint>
#include <optional>

namespace jet {

/// The pages in a journal whose header is whole. Both must outlive it.
class JournalRecords {
public:
    JournalRecords(File& journal, const journal_format::Header& header);

    [[nodiscard]] std::uint64_t Count() const noexcept { return count_; }
    /// Reads record `index`, 0-based; Page() is what it holds then. nullopt when it is not whole.
    [[nodiscard]] std::optional<journal_format::Record> Read(std::uint64_t index);
    [[nodiscard]] ByteSpan Page() const { return ByteSpan(record_).subspan(journal_format::kRecordHeaderSize); }

    /// Is every record whole that was once known to be safe on the disk? Those of the last batch need not be: as long
    /// as they were not, none of their pages was overwritten.
    [[nodiscard]] bool IsWhole();
    /// Makes `database` what it was at its last commit.
    void PutBack(File& database);

private:
    void WriteBack(File& database, PageNumber page);

    File& journal_;
    const journal_format::Header& header_;
    Bytes record_;
    std::uint64_t count_;
};

} // namespace jet
