#include "jet/store/recovery.h"

#include "jet/store/header_page.h"
#include "jet/store/journal_format.h"

#include <algorithm>
#include <array>
#include <string>
#include <unordered_map>
#include <utility>

namespace jet {

namespace fmt = journal_format;

namespace {

/// What the file says of itself, and what stands beside it.
struct State {
    std::uint16_t counter = kWriteUnderWay + 1;
    std::unique_ptr<File> journal; ///< none when there is none
    fmt::HeaderState headerState = fmt::HeaderState::Absent;
    fmt::Header header;
    bool isOwn = false; ///< the journal's header is whole and names this database

    [[nodiscard]] bool IsInterrupted() const noexcept { return counter == kWriteUnderWay; }
};

/// The journal is opened with `mode`; when `onlyIfNeeded`, not for a database at rest.
State StateOf(FileSystem& system, const std::filesystem::path& path, File& database, OpenMode mode, bool onlyIfNeeded)
{
    State state;
    std::array<Byte, kHeaderSize> start{};
    const Format& format = FormatOf(ReadHeader(database, start).version);
    if (database.Size() < format.pageSize)
        return state; // which is no database: to be told where its pages are counted
    state.counter = LoadCommitCounter(database, format);
    const std::filesystem::path journalPath = fmt::PathFor(path);
    if ((onlyIfNeeded && !state.IsInterrupted()) || !system.Exists(journalPath))
        return state;
    state.journal = system.Open(journalPath, mode);
    state.headerState = fmt::Load(*state.journal, state.header);
    // A journal of another database, or of this one at another size, would put pages where they do not belong.
    state.isOwn = state.headerState == fmt::HeaderState::Whole && state.header.identity == fmt::IdentityOf(start) &&
                  state.header.pageSize == format.pageSize && state.header.pageCount != 0 &&
                  database.Size() / format.pageSize >= state.header.pageCount;
    return state;
}

/// Throws unless the journal can put the database back.
void RequireJournal(const State& state, const std::filesystem::path& path)
{
    if (!state.journal)
        throw Interrupted(path, "there is no journal of it beside it");
    const std::string journal = "'" + fmt::PathFor(path).string() + "'";
    if (!state.isOwn)
        throw Interrupted(path, journal + " is not its journal");
    if (!JournalRecords(*state.journal, state.header).IsWhole())
        throw Interrupted(path, "its journal " + journal + " is damaged");
}

/// The file with the pages of its journal in their places.
/// Who only reads does not repair: media may be read-only, and somebody else may want to look at what was left.
class CommittedFile final : public File {
public:
    CommittedFile(std::unique_ptr<File> database, std::unique_ptr<File> journal, const fmt::Header& header)
        : database_(std::move(database)), journal_(std::move(journal)), header_(header)
    {
        JournalRecords records(*journal_, header_);
        for (std::uint64_t i = 0; i < records.Count(); ++i)
            if (const std::optional<fmt::Record> record = records.Read(i))
                kept_.emplace(record->page, i);
    }

    void ReadAt(std::uint64_t offset, MutableBytes out) override
    {
        if (offset + out.size() > Size())
            throw Error(ErrorNumber::DiskError, {}, "(" + Name() + " ends at byte " + std::to_string(Size()) + ")");
        while (!out.empty()) {
            const std::uint64_t within = offset % header_.pageSize;
            const std::size_t size = std::min<std::size_t>(out.size(), header_.pageSize - within);
            const auto kept = kept_.find(static_cast<PageNumber>(offset / header_.pageSize));
            if (kept == kept_.end())
                database_->ReadAt(offset, out.first(size));
            else
                journal_->ReadAt(fmt::RecordOffset(kept->second, header_.pageSize) + fmt::kRecordHeaderSize + within,
                                 out.first(size));
            offset += size;
            out = out.subspan(size);
        }
    }
    [[nodiscard]] std::uint64_t Size() override { return std::uint64_t{header_.pageCount} * header_.pageSize; }
    void WriteAt(std::uint64_t /*offset*/, ByteSpan /*bytes*/) override { Refuse(); }
    void Truncate(std::uint64_t /*size*/) override { Refuse(); }
    void Sync() override {}
    [[nodiscard]] std::string Name() const override { return database_->Name(); }

private:
    [[noreturn]] void Refuse() const { throw Error(ErrorNumber::ReadOnly, {}, "(" + Name() + ")"); }

    std::unique_ptr<File> database_;
    std::unique_ptr<File> journal_;
    fmt::Header header_;
    std::unordered_map<PageNumber, std::uint64_t> kept_; ///< records, by page
};

} // namespace

Error Interrupted(const std::filesystem::path& database, std::string_view why)
{
    std::string text = "A write to it was interrupted, and ";
    text.append(why).append(". Let Access repair the file, or take a copy from before.");
    return Error(ErrorNumber::NotADatabase, {database.string()}, text);
}

/// Not removed: it may be the only place where somebody's pages still are.
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
    State state = StateOf(system, path, database, OpenMode::ReadWrite, false);
    const std::filesystem::path journalPath = fmt::PathFor(path);
    if (state.IsInterrupted()) {
        RequireJournal(state, path);
        // Put back, made void, removed: wherever this ends, whoever comes next begins again or has nothing left to do.
        JournalRecords(*state.journal, state.header).PutBack(database);
        fmt::Invalidate(*state.journal);
        state.journal->Sync();
        state.journal.reset();
        system.Remove(journalPath);
        return;
    }
    if (!state.journal)
        return;
    // The database is whole: nothing in it was overwritten yet, or the commit was complete but for its journal.
    const std::uint16_t then = state.header.commitCounter;
    const bool isOfUse = state.headerState == fmt::HeaderState::Foreign ||
                         (state.headerState == fmt::HeaderState::Whole && !state.isOwn) ||
                         (state.isOwn && state.counter != then && state.counter != NextCommitCounter(then));
    state.journal.reset();
    if (isOfUse)
        SetJournalAside(system, path);
    else
        system.Remove(journalPath);
}

std::unique_ptr<File> AsCommitted(FileSystem& system, const std::filesystem::path& path, std::unique_ptr<File> database)
{
    State state = StateOf(system, path, *database, OpenMode::ReadOnly, true);
    if (!state.IsInterrupted())
        return database;
    RequireJournal(state, path);
    return std::make_unique<CommittedFile>(std::move(database), std::move(state.journal), state.header);
}

} // namespace jet
