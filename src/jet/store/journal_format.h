#pragma once

#include "jet/base/format.h"
#include "jet/store/file_system.h"

#include <cstdint>
#include <filesystem>
#include <optional>

/// How a journal looks; see docs/file-format/journal.md.
namespace jet::journal_format {

/// One sector, which disks write whole or not at all.
inline constexpr std::size_t kHeaderSize = 512;
/// Before each page: its number, the index of the first record of the batch, and the checksum.
inline constexpr std::size_t kRecordHeaderSize = 16;

/// Beside the database.
[[nodiscard]] std::filesystem::path PathFor(const std::filesystem::path& database);

struct Header {
    std::uint32_t pageSize = 0;
    PageNumber pageCount = 0;        ///< at the last commit
    std::uint16_t commitCounter = 0; ///< slot 0 at the last commit
    std::uint64_t salt = 0;
    std::uint64_t identity = 0; ///< of the database, see IdentityOf
};

enum class HeaderState {
    Absent, ///< nothing was overwritten yet, or the commit is done
    Foreign,
    Whole,
};

[[nodiscard]] Bytes Store(const Header& header);
/// Reads the header of `journal` into `header`.
[[nodiscard]] HeaderState Load(File& journal, Header& header);

/// Without its header a journal is one that is done with. A Sync has to follow where that matters.
void Invalidate(File& journal);

/// Tells databases apart by the part of page 0 (its first jet::kHeaderSize bytes) that never changes.
[[nodiscard]] std::uint64_t IdentityOf(ByteSpan page0);

struct Record {
    PageNumber page = 0;
    std::uint32_t batch = 0; ///< index of the first record that became safe together with this one
};

[[nodiscard]] inline std::uint64_t RecordOffset(std::uint64_t index, std::size_t pageSize)
{
    return kHeaderSize + index * (kRecordHeaderSize + pageSize);
}
/// Fills the first kRecordHeaderSize bytes of `bytes`, behind which the page's content stands.
void Seal(MutableBytes bytes, const Record& record, std::uint64_t salt);
/// nullopt when the checksum does not fit.
[[nodiscard]] std::optional<Record> Unseal(ByteSpan bytes, std::uint64_t salt);

} // namespace jet::journal_format

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
