#include "jet/connection.h"

#include "jet/catalog/bootstrap.h"
#include "jet/catalog/catalog.h"
#include "jet/catalog/local_time.h"
#include "jet/catalog/schema_rowsets.h"
#include "jet/recordset_impl.h"
#include "jet/relations/integrity.h"
#include "jet/sql/executor.h"
#include "jet/sql/parser.h"
#include "jet/store/pager.h"

#include <string>
#include <utility>

namespace jet {

namespace {

/// The build number in page 0 of files that this engine makes. Access shows it nowhere and does not act on it, and no
/// engine of its makers ever carried it: it tells who made a file that is looked into.
constexpr std::uint32_t kOwnBuild = 27'182;

/// Beside the target, until the first commit.
constexpr const char* kNewFileSuffix = ".velmora-new";

std::unique_ptr<File> OpenLocked(FileSystem& system, const std::filesystem::path& path, OpenMode mode)
{
    std::unique_ptr<File> file = system.Open(path, mode);
    LockWhole(*file);
    return file;
}

/// Removes what a run that was killed has left; throws FileInUse while that run is still there.
void RemoveLeftover(FileSystem& system, const std::filesystem::path& path)
{
    if (!system.Exists(path))
        return;
    static_cast<void>(OpenLocked(system, path, OpenMode::ReadWrite));
    system.Remove(path);
}

} // namespace

class Connection::Impl {
public:
    /// `unfinished`: where a new file stands until its first commit moves it to `path`.
    Impl(FileSystem& system, std::unique_ptr<Pager> pager, std::filesystem::path path, std::filesystem::path unfinished,
         Existing existing)
        : pager_(std::move(pager)), path_(std::move(path)), unfinished_(system, std::move(unfinished)),
          existing_(existing), catalog_(*pager_), integrity_(catalog_), executor_(catalog_, integrity_)
    {
    }

    [[nodiscard]] Catalog& GetCatalog() noexcept { return catalog_; }
    [[nodiscard]] ReferentialIntegrity& Integrity() noexcept { return integrity_; }

    void Execute(std::string_view sql) { executor_.Run(sql::ParseStatement(sql)); }

    void Commit()
    {
        catalog_.FlushCounters();
        pager_->Commit();
        if (!unfinished_.Path().empty())
            unfinished_.MoveTo(path_, existing_);
    }

private:
    /// A file that is removed unless it has found its place.
    class UnfinishedFile {
    public:
        UnfinishedFile(FileSystem& system, std::filesystem::path path) : system_(system), path_(std::move(path)) {}
        ~UnfinishedFile()
        {
            try {
                if (!path_.empty())
                    system_.Remove(path_);
            } catch (const Error&) {
                return; // the next one that is made here removes it
            }
        }
        UnfinishedFile(const UnfinishedFile&) = delete;
        UnfinishedFile& operator=(const UnfinishedFile&) = delete;

        [[nodiscard]] const std::filesystem::path& Path() const noexcept { return path_; }
        void MoveTo(const std::filesystem::path& target, Existing existing)
        {
            if (existing == Existing::Refuse && system_.Exists(target))
                throw Error(ErrorNumber::DatabaseExists, {}, "(" + target.string() + ")");
            system_.Rename(path_, target);
            system_.SyncFolder(target);
            path_.clear();
        }

    private:
        FileSystem& system_;
        std::filesystem::path path_;
    };

    std::unique_ptr<Pager> pager_;
    std::filesystem::path path_;
    UnfinishedFile unfinished_;
    Existing existing_;
    Catalog catalog_;
    ReferentialIntegrity integrity_;
    sql::Executor executor_;
};

Connection::Connection(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}
Connection::~Connection() = default;

bool Connection::CanReplace(const std::filesystem::path& path, FileSystem& system)
{
    try {
        static_cast<void>(OpenLocked(system, path, OpenMode::ReadWrite));
        return system.MayReplace(path);
    } catch (const Error&) {
        return false;
    }
}

std::unique_ptr<Connection> Connection::Create(const std::filesystem::path& path, JetVersion version, Existing existing,
                                               FileSystem& system)
{
    if (existing == Existing::Refuse && system.Exists(path))
        throw Error(ErrorNumber::DatabaseExists, {}, "(" + path.string() + ")");
    std::filesystem::path unfinished = path;
    unfinished += kNewFileSuffix;
    RemoveLeftover(system, unfinished);

    const DateTime now = LocalNow();
    std::unique_ptr<Pager> pager =
        Pager::Create(OpenLocked(system, unfinished, OpenMode::CreateNew), {version, now.days, kOwnBuild});
    BuildEmptyDatabase(*pager, now);
    return std::unique_ptr<Connection>(
        new Connection(std::make_unique<Impl>(system, std::move(pager), path, std::move(unfinished), existing)));
}

std::unique_ptr<Connection> Connection::Open(const std::filesystem::path& path, FileSystem& system)
{
    std::unique_ptr<Pager> pager = Pager::Open(OpenLocked(system, path, OpenMode::ReadWrite));
    return std::unique_ptr<Connection>(new Connection(
        std::make_unique<Impl>(system, std::move(pager), path, std::filesystem::path(), Existing::Refuse)));
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
    return Recordset(std::make_unique<Recordset::Impl>(impl_->GetCatalog().Open(table), impl_->Integrity()));
}

void Connection::Commit()
{
    impl_->Commit();
}

JetVersion Connection::Version() const noexcept
{
    return impl_->GetCatalog().GetFormat().version;
}

std::size_t Connection::ObjectsLeft()
{
    return impl_->GetCatalog().ObjectsLeft();
}

} // namespace jet
