#include "jet/connection.h"

#include "jet/catalog/catalog.h"
#include "jet/relations/integrity.h"
#include "jet/sql/ast.h"
#include "jet/sql/executor.h"
#include "jet/store/header_page.h"
#include "jet/store/journal.h"
#include "jet/store/lock_file.h"
#include "jet/store/overlay_file_system.h"
#include "jet/store/pager.h"
#include "jet/store/recovery.h"
#include "jet/store/write_behind_file.h"

#include <array>
#include <string>
#include <utility>

namespace jet {

namespace {

/// Beside the target, until the first commit is on the disk.
constexpr const char* kNewFileSuffix = ".velmora-new";

std::unique_ptr<File> OpenLocked(FileSystem& system, const std::filesystem::path& path, OpenMode mode)
{
    std::unique_ptr<File> file = system.Open(path, mode);
    LockWhole(*file);
    return file;
}

/// A database that is being made beside the place where it is to stand, and is removed unless it gets there.
class UnfinishedDatabase {
public:
    UnfinishedDatabase(FileSystem& system, std::filesystem::path target, Existing existing)
        : system_(system), target_(std::move(target)), path_(target_), existing_(existing)
    {
        path_ += kNewFileSuffix;
        if (system_.Exists(target_))
            TakeOld();
    }
    ~UnfinishedDatabase()
    {
        try {
            if (isMade_)
                system_.Remove(path_);
        } catch (const Error&) {
            return; // the next one that is made here removes it
        }
    }
    UnfinishedDatabase(const UnfinishedDatabase&) = delete;
    UnfinishedDatabase& operator=(const UnfinishedDatabase&) = delete;

    /// The new file. What a run that was killed has left in its way is removed.
    [[nodiscard]] std::unique_ptr<File> Make()
    {
        ClearJournal();
        if (system_.Exists(path_)) {
            static_cast<void>(OpenLocked(system_, path_, OpenMode::ReadWrite));
            system_.Remove(path_);
        }
        std::unique_ptr<File> file = OpenLocked(system_, path_, OpenMode::CreateNew);
        isMade_ = true;
        return file;
    }

    void MoveIntoPlace()
    {
        if (existing_ == Existing::Refuse && system_.Exists(target_))
            throw Error(ErrorNumber::DatabaseExists, {}, "(" + target_.string() + ")");
        // Not every system replaces a file that is open. The lock file keeps others away from it meanwhile.
        old_.reset();
        system_.Rename(path_, target_);
        isMade_ = false;
        system_.SyncFolder(target_);
    }

private:
    /// Nobody may begin to use the old file as long as it is about to be replaced.
    void TakeOld()
    {
        if (existing_ == Existing::Refuse)
            throw Error(ErrorNumber::DatabaseExists, {}, "(" + target_.string() + ")");
        old_ = OpenLocked(system_, target_, OpenMode::ReadWrite);
        if (!system_.MayReplace(target_))
            throw Error(ErrorNumber::ReadOnly, {}, "('" + target_.string() + "' may not be replaced in its folder.)");
    }

    /// The new database must not meet a journal of the old one. That one stays until the new one is complete, so it
    /// has to be whole; when it cannot be, it is as good as thrown away already.
    void ClearJournal()
    {
        try {
            if (old_)
                Recover(system_, target_, *old_);
        } catch (const Error&) {
            SetJournalAside(system_, target_);
        }
        SetJournalAside(system_, target_);
    }

    FileSystem& system_;
    std::filesystem::path target_;
    std::filesystem::path path_;
    Existing existing_;
    std::unique_ptr<File> old_;
    bool isMade_ = false;
};

/// The file of a pager that changes it.
std::unique_ptr<File> WithThread(std::unique_ptr<File> file, int threads)
{
    constexpr std::uint64_t kBytesAtOnce = std::uint64_t{1} << 20;
    if (threads < 2)
        return file;
    return std::make_unique<WriteBehindFile>(std::move(file), kBytesAtOnce);
}

/// Refuses what is no database of ours before anything is made beside it.
void CheckHeader(File& file)
{
    std::array<Byte, kHeaderSize> start{};
    static_cast<void>(ReadHeader(file, start));
}

} // namespace

std::unique_ptr<FileSystem> MakeTrialFileSystem()
{
    return std::make_unique<OverlayFileSystem>();
}

class Connection::Impl {
public:
    /// `unfinished` is a new database that still has to find its place; null for one that was there. Without a `lock`
    /// nothing may be changed.
    Impl(std::unique_ptr<LockFile> lock, std::unique_ptr<UnfinishedDatabase> unfinished, std::unique_ptr<Pager> pager)
        : lock_(std::move(lock)), unfinished_(std::move(unfinished)), pager_(std::move(pager)), catalog_(*pager_),
          integrity_(catalog_), executor_(catalog_, integrity_)
    {
    }

    [[nodiscard]] Catalog& GetCatalog() noexcept { return catalog_; }
    [[nodiscard]] ReferentialIntegrity& Integrity() noexcept { return integrity_; }
    [[nodiscard]] RecordPool& Records() noexcept { return records_; }

    void Execute(std::string_view sql) { executor_.Run(sql::ParseStatement(sql)); }

    /// Counters go to their pages first, so that they are part of the commit; a new database takes its place only when
    /// all of it is on the disk.
    void Commit()
    {
        pager_->ThrowIfFailed();
        try {
            catalog_.FlushCounters();
            pager_->Commit();
            if (unfinished_)
                unfinished_->MoveIntoPlace();
            catalog_.ForgetMoves();
        } catch (...) { // nobody knows how much of it is in the file
            pager_->Fail(std::current_exception());
            throw;
        }
        unfinished_.reset();
    }

private:
    // The lock goes last, and the pager before what stands beside its file: it may have to undo something.
    std::unique_ptr<LockFile> lock_;
    std::unique_ptr<UnfinishedDatabase> unfinished_;
    std::unique_ptr<Pager> pager_;
    Catalog catalog_;
    ReferentialIntegrity integrity_;
    RecordPool records_;
    sql::Executor executor_;
};

Connection::Connection(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
Connection::~Connection() = default;

bool Connection::CanReplace(const std::filesystem::path& path, FileSystem& system)
{
    try {
        const std::filesystem::path target = system.Resolve(path);
        static_cast<void>(OpenLocked(system, target, OpenMode::ReadWrite));
        return system.MayReplace(target) && !LockFile::HasUsers(system, target);
    } catch (const Error&) {
        return false;
    }
}

bool Connection::IsInUse(const std::filesystem::path& path, FileSystem& system)
{
    try {
        const std::filesystem::path target = system.Resolve(path);
        if (system.Exists(target))
            static_cast<void>(OpenLocked(system, target, OpenMode::ReadWrite));
        return LockFile::HasUsers(system, target);
    } catch (const Error& error) {
        // What cannot be opened for any other reason is nobody's, as far as can be told.
        return error.Number() == ErrorNumber::FileInUse;
    }
}

bool Connection::IsDatabase(const std::filesystem::path& path, FileSystem& system)
{
    try {
        const std::unique_ptr<File> file = system.Open(path, OpenMode::ReadOnly);
        std::array<Byte, kHeaderSize> start{};
        if (file->Size() < start.size())
            return false;
        file->ReadAt(0, start);
        return BearsSignature(start);
    } catch (const Error&) {
        return true;
    }
}

std::unique_ptr<Connection> Connection::Create(const std::filesystem::path& path, JetVersion version, Existing existing,
                                               FileSystem& system, int threads)
{
    const std::filesystem::path target = system.Resolve(path);
    auto unfinished = std::make_unique<UnfinishedDatabase>(system, target, existing);
    auto lock = std::make_unique<LockFile>(system, target);
    // One moment for the header and all objects: owner ids depend on the first, and Access shows the others.
    const DateTime now = system.LocalTime();
    std::unique_ptr<Pager> pager = Pager::Create(WithThread(unfinished->Make(), threads), {version, now.days},
                                                 Pager::kDefaultCacheBytes, std::make_unique<Journal>(system, target));
    BuildEmptyDatabase(*pager, now);
    return std::unique_ptr<Connection>(
        new Connection(std::make_unique<Impl>(std::move(lock), std::move(unfinished), std::move(pager))));
}

std::unique_ptr<Connection> Connection::Open(const std::filesystem::path& path, FileSystem& system, int threads)
{
    const std::filesystem::path target = system.Resolve(path);
    // Before the lock file: what is no database gets none beside it.
    CheckHeader(*OpenLocked(system, target, OpenMode::ReadWrite));
    auto lock = std::make_unique<LockFile>(system, target);
    // Once more: somebody who was there before may have put another file in its place.
    std::unique_ptr<File> file = OpenLocked(system, target, OpenMode::ReadWrite);
    Recover(system, target, *file);
    std::unique_ptr<Pager> pager = Pager::Open(WithThread(std::move(file), threads), Pager::kDefaultCacheBytes,
                                               std::make_unique<Journal>(system, target));
    return std::unique_ptr<Connection>(
        new Connection(std::make_unique<Impl>(std::move(lock), nullptr, std::move(pager))));
}

std::unique_ptr<Connection> Connection::OpenReadOnly(const std::filesystem::path& path, FileSystem& system)
{
    const std::filesystem::path target = system.Resolve(path);
    std::unique_ptr<File> file = OpenLocked(system, target, OpenMode::ReadOnly);
    CheckHeader(*file);
    LockFile::CheckNoUsers(system, target);
    std::unique_ptr<Pager> pager = Pager::Open(AsCommitted(system, target, std::move(file)));
    // As after a failed commit, all that would change something is refused at the pager, whichever way it comes.
    pager->Fail(std::make_exception_ptr(Error(ErrorNumber::ReadOnly, {}, "(It was opened for reading only.)")));
    return std::unique_ptr<Connection>(new Connection(std::make_unique<Impl>(nullptr, nullptr, std::move(pager))));
}

void Connection::Execute(std::string_view sql)
{
    impl_->Execute(sql);
}

Rowset Connection::OpenSchema(SchemaKind kind, const Restrictions& restrictions)
{
    return QuerySchema(impl_->GetCatalog(), kind, restrictions);
}

Recordset Connection::OpenTable(std::string_view table)
{
    return {impl_->GetCatalog(), impl_->Integrity(), impl_->Records(), table};
}

std::vector<Property> Connection::Properties(std::string_view table)
{
    return impl_->GetCatalog().Properties(table);
}

void Connection::SetProperties(std::string_view table, std::span<const Property> properties)
{
    Savepoint savepoint(impl_->GetCatalog());
    impl_->GetCatalog().SetProperties(table, properties);
    savepoint.Release();
}

void Connection::Commit()
{
    impl_->Commit();
}

JetVersion Connection::Version() const noexcept
{
    return impl_->GetCatalog().GetFormat().version;
}

std::string Connection::NameKey(std::string_view name) const
{
    return jet::NameKey(impl_->GetCatalog().GetFormat(), name);
}

std::string Connection::ValidName(std::string_view name, std::size_t maxUnits) const
{
    return jet::ValidName(impl_->GetCatalog().GetFormat(), name, maxUnits);
}

std::uint64_t Connection::SizeBytes() const noexcept
{
    const Pager& pager = impl_->GetCatalog().GetPager();
    return std::uint64_t{pager.PageCount()} * pager.GetFormat().pageSize;
}

std::uint64_t Connection::MaxSizeBytes() const noexcept
{
    const Format& format = impl_->GetCatalog().GetFormat();
    return std::uint64_t{format.maxPages} * format.pageSize;
}

std::size_t Connection::ObjectsLeft()
{
    return impl_->GetCatalog().ObjectsLeft();
}

} // namespace jet
