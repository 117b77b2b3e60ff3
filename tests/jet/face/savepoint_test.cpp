#include "jet/catalog/catalog.h"
#include "jet/face/database.h"
#include "jet/relations/integrity.h"
#include "jet/sql/ast.h"
#include "jet/sql/executor.h"
#include "jet/store/crash_file_system.h"

#include <cstdlib>
#include <functional>
#include <new>

namespace {

/// Allocations until one fails; 0 = none does.
std::uint64_t allocationsLeft = 0;

} // namespace

void* operator new(std::size_t size)
{
    if (allocationsLeft != 0 && --allocationsLeft == 0)
        throw std::bad_alloc();
    if (void* memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}

// The library's own nothrow form may not come from malloc, as what is deleted below must.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return std::malloc(size == 0 ? 1 : size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace jet::testing {
namespace {

constexpr const char* kFile = "a.mdb";

/// The engine below the face, with so small a cache that statements write and read pages all the time.
class SmallEngine {
public:
    explicit SmallEngine(CrashFileSystem& system)
        : pager_(Pager::Open(system.Open(kFile, OpenMode::ReadWrite), 1, std::make_unique<Journal>(system, kFile))),
          catalog_(*pager_), integrity_(catalog_), executor_(catalog_, integrity_)
    {
    }

    void Execute(std::string_view sql) { executor_.Run(sql::ParseStatement(sql)); }
    /// Sets column `column` of the first row, as a recordset would.
    void SetFirst(std::string_view table, std::size_t column, std::string_view text)
    {
        const std::shared_ptr<Table> open = catalog_.Open(table);
        const RowId row = open->NextRow(std::nullopt).value();
        Record record;
        open->Read(row, record);
        Bytes stored;
        EncodeText(stored, catalog_.GetFormat(), open->Definition().columns[column].GetValueType(), text);
        record.SetStored(column, stored);
        Savepoint savepoint(catalog_);
        integrity_.UpdateRow(*open, row, record);
        savepoint.Release();
    }
    /// Adds a row of one number; true when that took a savepoint.
    bool Add(std::string_view table, std::size_t column, std::int32_t number)
    {
        const std::shared_ptr<Table> open = catalog_.Open(table);
        record_.Reset(open->Definition().columns.size());
        StoreI32(record_.SetSized(column, sizeof number), 0, number);
        Guard guard;
        const std::uint64_t before = allocationsLeft = 1000;
        open->Insert(record_, &guard);
        EXPECT_TRUE(guard.isAsked || allocationsLeft == before) << "row " << number;
        allocationsLeft = 0;
        return guard.isAsked;
    }
    void Commit() { pager_->Commit(); }
    void ThrowIfFailed() const { pager_->ThrowIfFailed(); }
    [[nodiscard]] std::vector<Bytes> Pages()
    {
        std::vector<Bytes> pages;
        for (PageNumber page = 0; page < pager_->PageCount(); ++page) {
            const PageRef ref = pager_->Read(page);
            pages.emplace_back(ref.Bytes().begin(), ref.Bytes().end());
        }
        return pages;
    }

private:
    struct Guard final : ChangeGuard {
        bool isAsked = false;
        void Begin() override { isAsked = true; }
    };
    std::unique_ptr<Pager> pager_;
    Catalog catalog_;
    ReferentialIntegrity integrity_;
    sql::Executor executor_;
    Record record_;
};

void MakeDatabase(CrashFileSystem& system, JetVersion version)
{
    const auto connection = Connection::Create(kFile, version, Existing::Refuse, system);
    for (const char* sql : {
             "CREATE TABLE p (PKEY Counter NOT NULL, KEY Long, name String, note Longtext)",
             "CREATE UNIQUE INDEX p_PKEY ON p (PKEY) WITH PRIMARY",
             "CREATE UNIQUE INDEX p_KEY ON p (KEY)",
             "CREATE TABLE c (FKEY Long, text String)",
             "CREATE INDEX c_text ON c (text)",
             "CREATE TABLE numbers (a Long, b Long)",
             "CREATE INDEX numbers_a ON numbers (a)",
             "ALTER TABLE c ADD CONSTRAINT LINK FOREIGN KEY (FKEY) REFERENCES p (KEY) ON UPDATE CASCADE ON DELETE "
             "CASCADE",
         })
        connection->Execute(sql);
    Recordset parents = connection->OpenTable("p");
    Recordset children = connection->OpenTable("c");
    Recordset numbers = connection->OpenTable("numbers");
    for (int i = 0; i < 60; ++i) {
        parents.AddNew();
        parents.SetLong(1, i);
        parents.SetText(2, std::string(static_cast<std::size_t>(i), 'x'));
        parents.SetText(3, std::string(static_cast<std::size_t>(i * 37 % 9000), 'n'));
        parents.Update();
    }
    for (int i = 0; i < 1200; ++i) {
        children.AddNew();
        children.SetLong(0, i < 400 ? 0 : i % 60);
        children.SetText(1, std::to_string(i * 7919 % 1200) + std::string(60, 't'));
        children.Update();
        numbers.AddNew();
        numbers.SetLong(0, i * 7919 % 1200);
        numbers.SetLong(1, i);
        numbers.Update();
    }
    parents.MoveFirst(); // leaves room in the middle of the file
    connection->Execute("CREATE TABLE gap (note Longtext)");
    Recordset gap = connection->OpenTable("gap");
    gap.AddNew();
    gap.SetText(0, std::string(60'000, 'g'));
    gap.Update();
    gap.Close();
    connection->Execute("CREATE TABLE after (a Long)");
    connection->Execute("DROP TABLE gap");
    connection->Commit();
}

/// Each of these goes through once nothing fails, one after another.
const std::function<void(SmallEngine&)> kChanges[] = {
    [](SmallEngine& e) { e.SetFirst("p", 2, std::string(200, 'y')); },
    [](SmallEngine& e) { e.SetFirst("p", 1, "77777"); }, // cascades to a third of the children
    [](SmallEngine& e) { e.Execute("CREATE TABLE t (PKEY Counter NOT NULL, a String NOT NULL, m Longtext)"); },
    [](SmallEngine& e) { e.Execute("CREATE INDEX c_both ON c (FKEY, text)"); },
    [](SmallEngine& e) { e.Execute("ALTER TABLE numbers ADD COLUMN t String NOT NULL"); },    // all rows written anew
    [](SmallEngine& e) { e.Execute("ALTER TABLE numbers ALTER COLUMN a TEXT(20), b TEXT"); }, // with an index
    [](SmallEngine& e) { e.Execute("ALTER TABLE c ADD COLUMN n Counter"); },
    [](SmallEngine& e) { e.Execute("UPDATE p SET note = name"); },
    [](SmallEngine& e) { e.Execute("ALTER TABLE p DROP COLUMN note"); },
    [](SmallEngine& e) { e.Execute("ALTER TABLE c DROP CONSTRAINT LINK"); },
    [](SmallEngine& e) { e.Execute("ALTER TABLE c ADD CONSTRAINT L2 FOREIGN KEY (FKEY) REFERENCES p (KEY)"); },
    [](SmallEngine& e) { e.Execute("DELETE * FROM numbers"); },
    [](SmallEngine& e) { e.Execute("DROP TABLE c"); },
};

/// Runs each change with the failure that `arm` sets, at 1, 2, 3 ... and ever wider steps, until it goes through. What
/// it left each time is compared byte by byte. With `writesBehind` a change may be through before the failure is seen,
/// and one that lasts may leave no way on but back to the last commit, which was before the change.
void RunWithFailures(const std::function<void(CrashFileSystem&, std::uint64_t)>& arm,
                     const std::function<bool(CrashFileSystem&)>& wasMet, bool writesBehind = false)
{
    for (const JetVersion version : kVersions) {
        CrashFileSystem system(1);
        MakeDatabase(system, version);
        if (writesBehind)
            system.SetWritesBehind();
        auto engine = std::make_unique<SmallEngine>(system);
        int refused = 0;
        for (std::size_t i = 0; i < std::size(kChanges); ++i) {
            SCOPED_TRACE("change " + std::to_string(i));
            const std::vector<Bytes> before = engine->Pages();
            bool isRefused = true;
            for (std::uint64_t at = 1; isRefused; at += 1 + at / 6) {
                SCOPED_TRACE("failure at " + std::to_string(at));
                isRefused = false;
                arm(system, at);
                try {
                    kChanges[i](*engine);
                } catch (const std::exception&) {
                    isRefused = true;
                    ++refused;
                }
                const bool isMet = wasMet(system);
                ASSERT_TRUE(isRefused == isMet || (writesBehind && isMet));
                if (writesBehind && ErrorOf([&] { engine->ThrowIfFailed(); })) {
                    engine.reset();
                    engine = std::make_unique<SmallEngine>(system);
                }
                if (isRefused) {
                    const std::vector<Bytes> after = engine->Pages();
                    ASSERT_EQ(after.size(), before.size());
                    for (std::size_t page = 0; page < before.size(); ++page)
                        ASSERT_TRUE(after[page] == before[page]) << "page " << page;
                }
            }
            engine->Commit();
        }
        EXPECT_GT(refused, 50);
        engine.reset();
        const velmora::testing::TempFolder folder;
        system.CopyOut(kFile, folder / kFile);
        EXPECT_TRUE(velmora::testing::ExpectSound({folder / kFile}));
    }
}

TEST(Savepoint, AFailureOfTheDiskLeavesEverythingAsItWas)
{
    struct Case {
        ErrorNumber error;
        std::uint64_t count;
        bool writesBehind;
    };
    constexpr std::uint64_t kEnd = ~std::uint64_t{0};
    for (const Case& c : {Case{ErrorNumber::DiskFull, 1, false},
                          {ErrorNumber::DiskError, 1, false},
                          {ErrorNumber::DiskFull, kEnd, true}}) {
        SCOPED_TRACE(c.writesBehind ? "with a thread" : "");
        std::uint64_t failsAt = 0;
        RunWithFailures(
            [&](CrashFileSystem& system, std::uint64_t at) {
                failsAt = system.Operations() + at;
                system.FailAt(failsAt, c.error, c.count);
            },
            [&](CrashFileSystem& system) {
                const bool isMet = system.Operations() >= failsAt;
                system.FailAt(0, c.error, 0);
                return isMet;
            },
            c.writesBehind);
    }
}

TEST(Savepoint, AnEndOfTheMemoryLeavesEverythingAsItWas)
{
    RunWithFailures([](CrashFileSystem&, std::uint64_t at) { allocationsLeft = at; },
                    [](CrashFileSystem&) {
                        const bool isMet = allocationsLeft == 0;
                        allocationsLeft = 0;
                        return isMet;
                    });
}

TEST(Savepoint, ARecordThatTakesOnlyWhatIsAtHandNeedsNoneAndNoMemory)
{
    for (const JetVersion version : kVersions) {
        CrashFileSystem system(1);
        MakeDatabase(system, version);
        SmallEngine engine(system);
        int asked = 0;
        for (int i = 0; i < 5000; ++i)
            asked += engine.Add("numbers", 0, 2000 + i) ? 1 : 0;
        EXPECT_GT(asked, 0); // pages become full
        EXPECT_LT(asked, 150);
        for (const int number : {1500, 1, 6999})
            EXPECT_TRUE(engine.Add("numbers", 0, number) || number == 6999) << number;
    }
}

} // namespace
} // namespace jet::testing
