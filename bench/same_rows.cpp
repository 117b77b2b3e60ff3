// The rows of a converted database once more, in SQLite: what the records of a document cost there.
//
//   bench_same_rows MDB FILE   makes FILE anew with the tables, columns, keys and indexes of MDB, and inserts its rows
//
// Prints the seconds that making the tables and inserting took: CPU time, then wall time. Reading MDB does not count;
// relations are left out, and the tables come one after the other, the order that costs least.
#include "jet/connection.h"
#include "measured_sqlite.h"

#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace {

struct Column {
    std::string name;
    bool isNumber = false;
    bool isCounter = false;
};

/// A table in memory.
struct Table {
    std::string name;
    std::vector<Column> columns;
    std::vector<std::string> indexed; ///< columns with an index, those of counters aside
    std::vector<std::vector<std::optional<std::string>>> rows;
};

std::string Quoted(const std::string& name)
{
    return "[" + name + "]";
}

Table Read(jet::Connection& connection, const std::string& name)
{
    Table table{name, {}, {}, {}};
    jet::Recordset records = connection.OpenTable(name);
    std::map<std::string, bool> isCounter;
    for (std::size_t field = 0; field < records.FieldCount(); ++field) {
        const bool counts = records.IsAutonumber(field);
        table.columns.push_back({records.FieldName(field), records.IsLong(field), counts});
        isCounter[records.FieldName(field)] = counts;
    }
    for (jet::Rowset indexes = connection.OpenSchema(jet::SchemaKind::Indexes, {"", "", "", "", name}); !indexes.Eof();
         indexes.MoveNext())
        if (const std::string column = indexes.Text("COLUMN_NAME"); !isCounter[column])
            table.indexed.push_back(column);
    for (records.MoveFirst(); !records.Eof(); records.MoveNext()) {
        auto& row = table.rows.emplace_back();
        for (std::size_t field = 0; field < table.columns.size(); ++field)
            row.push_back(records.GetText(field));
    }
    return table;
}

std::vector<Table> ReadAll(const std::filesystem::path& path)
{
    const auto connection = jet::Connection::OpenReadOnly(path);
    std::vector<Table> tables;
    for (jet::Rowset names = connection->OpenSchema(jet::SchemaKind::Tables, {"", "", "", "TABLE"}); !names.Eof();
         names.MoveNext())
        tables.push_back(Read(*connection, names.Text("TABLE_NAME")));
    return tables;
}

void Make(bench::Sqlite& database, const Table& table)
{
    std::string columns;
    for (const Column& column : table.columns)
        columns.append(columns.empty() ? "" : ", ")
            .append(Quoted(column.name))
            .append(column.isCounter  ? " INTEGER PRIMARY KEY"
                    : column.isNumber ? " INTEGER"
                                      : " TEXT");
    database.Execute("CREATE TABLE " + Quoted(table.name) + " (" + columns + ")");
    std::size_t number = 0;
    for (const std::string& column : table.indexed)
        database.Execute("CREATE INDEX [" + table.name + " " + std::to_string(number++) + "] ON " + Quoted(table.name) +
                         " (" + Quoted(column) + ")");
}

void Fill(bench::Sqlite& database, const Table& table)
{
    std::string marks = "?";
    for (std::size_t field = 1; field < table.columns.size(); ++field)
        marks += ", ?";
    const bench::Sqlite::Insert insert(database, "INSERT INTO " + Quoted(table.name) + " VALUES (" + marks + ")");
    for (const auto& row : table.rows) {
        for (std::size_t field = 0; field < row.size(); ++field) {
            const int mark = static_cast<int>(field) + 1;
            if (!row[field])
                insert.BindNull(mark);
            else if (table.columns[field].isNumber)
                insert.Bind(mark, std::stoi(*row[field]));
            else
                insert.Bind(mark, *row[field]);
        }
        insert.Run();
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fputs("usage: bench_same_rows MDB FILE\n", stderr);
        return 2;
    }
    try {
        const std::vector<Table> tables = ReadAll(argv[1]);
        std::filesystem::remove(argv[2]);
        const bench::Stopwatch watch;
        bench::Sqlite database(argv[2]);
        for (const Table& table : tables)
            Make(database, table);
        for (const Table& table : tables)
            Fill(database, table);
        database.Execute("COMMIT");
        watch.Print();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 2;
    }
}
