#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <sqlite3.h>
#include <stdexcept>
#include <string>
#include <string_view>

namespace bench {

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

/// A database of SQLite inside one transaction, without journal and without synchronising, with as much memory for its
/// cache as the other engine takes.
class Sqlite {
public:
    explicit Sqlite(const std::filesystem::path& path)
    {
        Check(sqlite3_open(path.c_str(), &database_));
        Execute("PRAGMA journal_mode = OFF");
        Execute("PRAGMA synchronous = OFF");
        Execute("PRAGMA cache_size = -65536"); // KiB
        Execute("BEGIN");
    }
    ~Sqlite() { sqlite3_close(database_); }
    Sqlite(const Sqlite&) = delete;
    Sqlite& operator=(const Sqlite&) = delete;

    void Execute(const std::string& sql) { Check(sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, nullptr)); }

    /// A prepared statement; parameters count from 1, and texts must live until Run().
    class Insert {
    public:
        Insert(Sqlite& database, const std::string& sql) : database_(database)
        {
            database_.Check(sqlite3_prepare_v2(database_.database_, sql.c_str(), -1, &insert_, nullptr));
        }
        ~Insert() { sqlite3_finalize(insert_); }
        Insert(const Insert&) = delete;
        Insert& operator=(const Insert&) = delete;

        void Bind(int parameter, std::int32_t number) const { sqlite3_bind_int(insert_, parameter, number); }
        void BindNull(int parameter) const { sqlite3_bind_null(insert_, parameter); }
        void Bind(int parameter, std::string_view text) const
        {
            database_.Check(
                sqlite3_bind_text(insert_, parameter, text.data(), static_cast<int>(text.size()), SQLITE_STATIC));
        }
        void Run() const
        {
            if (sqlite3_step(insert_) != SQLITE_DONE)
                database_.Check(SQLITE_ERROR);
            database_.Check(sqlite3_reset(insert_));
        }

    private:
        Sqlite& database_;
        sqlite3_stmt* insert_ = nullptr;
    };

private:
    void Check(int result) const
    {
        if (result != SQLITE_OK)
            throw std::runtime_error(sqlite3_errmsg(database_));
    }

    sqlite3* database_ = nullptr;
};

} // namespace bench
