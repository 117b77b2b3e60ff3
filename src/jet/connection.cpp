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
#include <system_error>
#include <utility>

namespace jet {

namespace {

/// The build number in page 0 of files that this engine makes. Access shows it nowhere and does not act on it, and no
/// engine of its makers ever carried it: it tells who made a file that is looked into.
constexpr std::uint32_t kOwnBuild = 27'182;

/// Beside the target, until the first commit.
constexpr const char* kNewFileSuffix = ".velmora-new";

/// Removes what a run that was killed has left; throws FileInUse while that run is still there.
void RemoveLeftover(const std::filesystem::path& path)
{
    if (!std::filesystem::exists(path))
        return;
    static_cast<void>(OpenFile(path, OpenMode::ReadWrite));
    std::filesystem::remove(path);
}

} // namespace

class Connection::Impl {
public:
    /// `unfinished`: where a new file stands until its first commit moves it to `path`.
    Impl(std::unique_ptr<Pager> pager, std::filesystem::path path, std::filesystem::path unfinished, Existing existing)
        : pager_(std::move(pager)), path_(std::move(path)), unfinished_(std::move(unfinished)), existing_(existing),
          catalog_(*pager_), integrity_(catalog_), executor_(catalog_, integrity_)
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
        explicit UnfinishedFile(std::filesystem::path path) : path_(std::move(path)) {}
        ~UnfinishedFile()
        {
            std::error_code ignored;
            if (!path_.empty())
                std::filesystem::remove(path_, ignored);
        }
        UnfinishedFile(const UnfinishedFile&) = delete;
        UnfinishedFile& operator=(const UnfinishedFile&) = delete;

        [[nodiscard]] const std::filesystem::path& Path() const noexcept { return path_; }
        void MoveTo(const std::filesystem::path& target, Existing existing)
        {
            if (existing == Existing::Refuse && std::filesystem::exists(target))
                throw Error(ErrorNumber::DatabaseExists, {}, "(" + target.string() + ")");
            std::error_code failure;
            std::filesystem::rename(path_, target, failure);
            if (failure)
                throw Error(ErrorNumber::DiskError, {}, "(" + target.string() + ": " + failure.message() + ")");
            path_.clear();
        }

    private:
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

bool Connection::CanReplace(const std::filesystem::path& path)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        return false;
    try {
        static_cast<void>(OpenFile(path, OpenMode::ReadWrite));
        return true;
    } catch (const Error&) {
        return false;
    }
}

std::unique_ptr<Connection> Connection::Create(const std::filesystem::path& path, JetVersion version, Existing existing)
{
    if (existing == Existing::Refuse && std::filesystem::exists(path))
        throw Error(ErrorNumber::DatabaseExists, {}, "(" + path.string() + ")");
    std::filesystem::path unfinished = path;
    unfinished += kNewFileSuffix;
    RemoveLeftover(unfinished);

    const DateTime now = LocalNow();
    std::unique_ptr<Pager> pager =
        Pager::Create(OpenFile(unfinished, OpenMode::CreateNew), {version, now.days, kOwnBuild});
    BuildEmptyDatabase(*pager, now);
    return std::unique_ptr<Connection>(
        new Connection(std::make_unique<Impl>(std::move(pager), path, std::move(unfinished), existing)));
}

std::unique_ptr<Connection> Connection::Open(const std::filesystem::path& path)
{
    std::unique_ptr<Pager> pager = Pager::Open(OpenFile(path, OpenMode::ReadWrite));
    return std::unique_ptr<Connection>(
        new Connection(std::make_unique<Impl>(std::move(pager), path, std::filesystem::path(), Existing::Refuse)));
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
