// The engine by itself, beside SQLite with the same rows and indexes.
//
//   bench_engine insert ENGINE KEY ROWS FILE   makes FILE anew and inserts ROWS rows, with an index on the counter and
//                                              one on KEY, "long" or "text"; ENGINE is jet3, jet4 or sqlite
//   bench_engine nulls ENGINE ROWS FILE        makes FILE anew, with 1,500 rows of one foreign key and then ROWS of
//   none bench_engine fill MEGABYTES FILE           makes a database (Jet 4) of that size bench_engine open FILE opens
//   it and reads one row
//
// Prints the seconds that it took: CPU time, then wall time; making the file and process start do not count.
#include "jet/base/error.h"
#include "jet/connection.h"

#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>
#include <sqlite3.h>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

/// One record as a conversion would bring it: a foreign key that repeats, and texts.
class Row {
public:
    explicit Row(std::uint32_t number) : foreignKey(static_cast<std::int32_t>(number / 8 + 1))
    {
        // Multiplying by an odd number permutes: all codes differ, and they come in no order.
        char* const end = std::to_chars(code_, code_ + sizeof code_, number * 2'654'435'761u, 36).ptr;
        code = {code_, static_cast<std::size_t>(end - code_)};
        city = kCities[number % std::size(kCities)];
        remark = std::string_view(kRemark).substr(0, 20 + number % 40);
    }

    std::int32_t foreignKey; ///< 0 = Null
    std::string_view code, city, remark;

private:
    static constexpr std::string_view kCities[] = {"Amsterdam", "Berlin", "Copenhagen", "Dublin", "Edinburgh",
                                                   "Florence",  "Geneva", "Helsinki",   "Izmir"};
    static constexpr char kRemark[] = "Delivered between nine and twelve, the bell at the back door";
    char code_[16];
};

/// A table of one engine, ready to take rows.
class Target {
public:
    virtual ~Target() = default;
    virtual void Insert(const Row& row) = 0;
    virtual void Commit() = 0;
};

class JetTarget final : public Target {
public:
    JetTarget(const std::filesystem::path& path, jet::JetVersion version, const std::string& key)
        : connection_(jet::Connection::Create(path, version)), records_(MakeTable(*connection_, key))
    {
    }

    void Insert(const Row& row) override
    {
        records_.AddNew();
        if (row.foreignKey != 0)
            records_.SetLong(1, row.foreignKey);
        records_.SetText(2, row.code);
        records_.SetText(3, row.city);
        records_.SetText(4, row.remark);
        records_.Update();
    }
    void Commit() override { connection_->Commit(); }

private:
    static jet::Recordset MakeTable(jet::Connection& connection, const std::string& key)
    {
        connection.Execute("CREATE TABLE [item] ([PKEY] Counter NOT NULL, [FKEY] Long, [code] Text(50), "
                           "[city] Text(50), [remark] Text(255))");
        connection.Execute("CREATE UNIQUE INDEX [item_PKEY] ON [item] ([PKEY]) WITH PRIMARY");
        connection.Execute("CREATE INDEX [item_KEY] ON [item] ([" + key + "])");
        return connection.OpenTable("item");
    }

    std::unique_ptr<jet::Connection> connection_;
    jet::Recordset records_;
};

class SqliteTarget final : public Target {
public:
    SqliteTarget(const std::filesystem::path& path, const std::string& key)
    {
        Check(sqlite3_open(path.c_str(), &database_));
        Execute("PRAGMA journal_mode = OFF");
        Execute("PRAGMA synchronous = OFF");
        Execute("PRAGMA cache_size = -65536"); // KiB: as much as the other engine takes
        Execute("CREATE TABLE item (PKEY INTEGER PRIMARY KEY, FKEY INTEGER, code TEXT, city TEXT, remark TEXT)");
        Execute("CREATE INDEX item_KEY ON item (" + key + ")");
        Check(sqlite3_prepare_v2(database_, "INSERT INTO item (FKEY, code, city, remark) VALUES (?, ?, ?, ?)", -1,
                                 &insert_, nullptr));
        Execute("BEGIN");
    }
    ~SqliteTarget() override
    {
        sqlite3_finalize(insert_);
        sqlite3_close(database_);
    }
    SqliteTarget(const SqliteTarget&) = delete;
    SqliteTarget& operator=(const SqliteTarget&) = delete;

    void Insert(const Row& row) override
    {
        sqlite3_bind_int(insert_, 1, row.foreignKey);
        Bind(2, row.code);
        Bind(3, row.city);
        Bind(4, row.remark);
        if (sqlite3_step(insert_) != SQLITE_DONE)
            Check(SQLITE_ERROR);
        Check(sqlite3_reset(insert_));
    }
    void Commit() override { Execute("COMMIT"); }

private:
    void Check(int result) const
    {
        if (result != SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(database_));
    }
    void Execute(const std::string& sql) { Check(sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr)); }
    void Bind(int parameter, std::string_view text)
    {
        Check(sqlite3_bind_text(insert_, parameter, text.data(), static_cast<int>(text.size()), SQLITE_STATIC));
    }

    sqlite3* database_ = nullptr;
    sqlite3_stmt* insert_ = nullptr;
};

/// Measures from its making on.
class Stopwatch {
public:
    void Print() const
    {
        const double cpu = static_cast<double>(std::clock() - cpuBegin_) / CLOCKS_PER_SEC;
        const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - wallBegin_;
        std::printf("%.6f %.6f\n", cpu, wall.count());
    }

private:
    std::clock_t cpuBegin_ = std::clock();
    std::chrono::steady_clock::time_point wallBegin_ = std::chrono::steady_clock::now();
};

std::unique_ptr<Target> MakeTarget(std::string_view engine, std::string_view key, const std::filesystem::path& path)
{
    const std::string column = key == "long" ? "FKEY" : "code";
    std::filesystem::remove(path);
    if (engine == "sqlite")
        return std::make_unique<SqliteTarget>(path, column);
    return std::make_unique<JetTarget>(path, engine == "jet3" ? jet::JetVersion::Jet3 : jet::JetVersion::Jet4, column);
}

void Insert(std::string_view engine, std::string_view key, std::uint32_t rows, const std::filesystem::path& path)
{
    const std::unique_ptr<Target> target = MakeTarget(engine, key, path);
    const Stopwatch watch;
    for (std::uint32_t number = 0; number < rows; ++number)
        target->Insert(Row(number));
    target->Commit();
    watch.Print();
}

/// Null sorts before every key, and shares nothing with the equal keys whose pages it comes to.
void InsertNulls(std::string_view engine, std::uint32_t rows, const std::filesystem::path& path)
{
    constexpr std::uint32_t kEqualKeys = 1500;
    const std::unique_ptr<Target> target = MakeTarget(engine, "long", path);
    const Stopwatch watch;
    for (std::uint32_t number = 0; number < kEqualKeys + rows; ++number) {
        Row row(number);
        row.foreignKey = number < kEqualKeys ? 1 : 0;
        target->Insert(row);
    }
    target->Commit();
    watch.Print();
}

void Fill(std::uint64_t megabytes, const std::filesystem::path& path)
{
    constexpr std::uint64_t kCommitBytes = 64'000'000;
    const Stopwatch watch;
    std::filesystem::remove(path);
    const std::unique_ptr<jet::Connection> connection = jet::Connection::Create(path, jet::JetVersion::Jet4);
    connection->Execute("CREATE TABLE [page] ([PKEY] Counter NOT NULL, [title] Text(50), [body] Longtext)");
    connection->Execute("CREATE UNIQUE INDEX [page_PKEY] ON [page] ([PKEY]) WITH PRIMARY");
    connection->Execute("CREATE INDEX [page_title] ON [page] ([title])");
    connection->Commit();
    jet::Recordset records = connection->OpenTable("page");
    const std::string body(1900, 'x'); // two bytes a character: a page for each
    for (std::uint32_t number = 0; std::filesystem::file_size(path) < megabytes * 1'000'000;) {
        for (std::uint64_t bytes = 0; bytes < kCommitBytes; bytes += 2 * body.size(), ++number) {
            records.AddNew();
            records.SetText(1, Row(number).code);
            records.SetText(2, body);
            records.Update();
        }
        connection->Commit();
    }
    watch.Print();
}

void Open(const std::filesystem::path& path)
{
    const Stopwatch watch;
    const std::unique_ptr<jet::Connection> connection = jet::Connection::Open(path);
    jet::Recordset records = connection->OpenTable("page");
    if (records.Eof() || jet::IsNull(records.Get(2)))
        throw std::runtime_error("there is no row in " + path.string());
    watch.Print();
}

} // namespace

int main(int argc, char** argv)
{
    const std::string_view what = argc > 1 ? argv[1] : "";
    try {
        if (what == "insert" && argc == 6)
            Insert(argv[2], argv[3], static_cast<std::uint32_t>(std::stoul(argv[4])), argv[5]);
        else if (what == "nulls" && argc == 5)
            InsertNulls(argv[2], static_cast<std::uint32_t>(std::stoul(argv[3])), argv[4]);
        else if (what == "fill" && argc == 4)
            Fill(std::stoul(argv[2]), argv[3]);
        else if (what == "open" && argc == 3)
            Open(argv[2]);
        else
            throw std::invalid_argument(
                "usage: bench_engine insert ENGINE KEY ROWS FILE | nulls ENGINE ROWS FILE | fill MEGABYTES FILE | open "
                "FILE");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 2;
    }
}
