// The engine by itself, beside SQLite with the same rows and indexes.
//
//   bench_engine insert ENGINE KEY ROWS FILE   makes FILE anew and inserts ROWS rows, with an index on the counter and
//                                              one on KEY, "long" or "text"; ENGINE is jet3, jet4 or sqlite
//   bench_engine nulls ENGINE ROWS FILE        makes FILE anew, with 1,500 rows of one foreign key and then ROWS of
//                                              none
//   bench_engine fill MEGABYTES FILE           makes a database (Jet 4) of that size
//   bench_engine open FILE                     opens it and reads one row
//
// Prints the seconds that it took: CPU time, then wall time; making the file and process start do not count.
#include "jet/base/error.h"
#include "jet/connection.h"
#include "measured_sqlite.h"

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
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
    SqliteTarget(const std::filesystem::path& path, const std::string& key) : database_(path), insert_(Make(key)) {}

    void Insert(const Row& row) override
    {
        insert_.Bind(1, row.foreignKey);
        insert_.Bind(2, row.code);
        insert_.Bind(3, row.city);
        insert_.Bind(4, row.remark);
        insert_.Run();
    }
    void Commit() override { database_.Execute("COMMIT"); }

private:
    bench::Sqlite::Insert Make(const std::string& key)
    {
        database_.Execute(
            "CREATE TABLE item (PKEY INTEGER PRIMARY KEY, FKEY INTEGER, code TEXT, city TEXT, remark TEXT)");
        database_.Execute("CREATE INDEX item_KEY ON item (" + key + ")");
        return {database_, "INSERT INTO item (FKEY, code, city, remark) VALUES (?, ?, ?, ?)"};
    }

    bench::Sqlite database_;
    bench::Sqlite::Insert insert_;
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
    const bench::Stopwatch watch;
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
    const bench::Stopwatch watch;
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
    const bench::Stopwatch watch;
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
    const bench::Stopwatch watch;
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
