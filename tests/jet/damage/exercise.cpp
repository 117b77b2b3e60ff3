#include "jet/damage/exercise.h"

#include "jet/connection.h"
#include "jet/store/crash_file_system.h"

#include <functional>
#include <memory>
#include <random>
#include <vector>

namespace jet::testing {

namespace {

/// Enough for every form of damage to be met; whole tables would make each run long.
constexpr std::size_t kMaxRows = 400;
constexpr std::size_t kMaxTables = 40;

constexpr const char* kFile = "test.mdb";

class Exerciser {
public:
    Exerciser(CrashFileSystem& disk, unsigned seed, std::size_t changes) : disk_(disk), random_(seed), changes_(changes)
    {
    }

    void Run()
    {
        Attempt([&] { connection_ = Connection::Open(kFile, disk_); });
        if (!connection_)
            return;
        ReadEverything();
        for (std::size_t i = 0; i < changes_ && !tables_.empty(); ++i)
            Attempt([&] { ChangeSomething(); });
        if (changes_ == 0)
            return;
        bool isCommitted = false;
        Attempt([&] {
            connection_->Commit();
            isCommitted = true;
        });
        connection_.reset();
        Attempt([&] { connection_ = Connection::Open(kFile, disk_); });
        if (connection_ && isCommitted)
            ReadEverything();
    }
    [[nodiscard]] const std::string& Fault() const { return fault_; }

private:
    void Attempt(const std::function<void()>& action)
    {
        try {
            action();
        } catch (const Error& error) {
            const std::string text = error.what();
            if (error.Number() == ErrorNumber::NotADatabase && connection_ && text.find("Page ") == std::string::npos &&
                fault_.empty())
                fault_ = text;
        }
    }

    void ReadEverything()
    {
        tables_.clear();
        for (const SchemaKind kind : {SchemaKind::Columns, SchemaKind::ReferentialConstraints,
                                      SchemaKind::TableConstraints, SchemaKind::Indexes, SchemaKind::ForeignKeys})
            Attempt([&] { static_cast<void>(connection_->OpenSchema(kind)); });
        Attempt([&] {
            for (Rowset rows = connection_->OpenSchema(SchemaKind::Tables); !rows.Eof(); rows.MoveNext())
                if (tables_.size() < kMaxTables)
                    tables_.push_back(rows.Text("TABLE_NAME"));
        });
        for (const std::string& table : tables_)
            Attempt([&] { ReadRows(table); });
    }

    void ReadRows(const std::string& table)
    {
        Recordset records = connection_->OpenTable(table);
        for (std::size_t row = 0; row < kMaxRows && !records.Eof(); ++row, records.MoveNext())
            for (std::size_t field = 0; field < records.FieldCount(); ++field)
                Attempt([&] { static_cast<void>(records.Get(field)); });
    }

    /// %t is the table, %f any of its fields, another one each time, %u any table.
    static constexpr const char* kStatements[] = {
        "CREATE TABLE [new] ([PKEY] Counter NOT NULL, [FKEY] Long, [text] String, [memo] Longtext)",
        "ALTER TABLE [%t] ADD COLUMN [more] Longtext",
        "ALTER TABLE [%t] DROP COLUMN [%f]",
        "CREATE INDEX [fresh] ON [%t] ([%f])",
        "UPDATE [%t] SET [%f] = [%f]",
        "ALTER TABLE [%t] ADD CONSTRAINT [link] FOREIGN KEY ([%f]) REFERENCES [%u] ([PKEY]) "
        "ON UPDATE CASCADE ON DELETE CASCADE",
        "DELETE * FROM [%t]",
        "DROP TABLE [%t]",
        nullptr, // a commit
        "ALTER TABLE [%t] ALTER COLUMN [%f] Longtext",
    };

    void ChangeSomething()
    {
        constexpr std::size_t kCommit = 8;
        const std::string table = tables_[Below(tables_.size())];
        const std::size_t choice = Below(15);
        if (choice == kCommit)
            connection_->Commit();
        else if (choice < std::size(kStatements))
            connection_->Execute(FilledIn(kStatements[choice], table));
        else if (choice < 12)
            DeleteSomeRows(table);
        else
            AddRows(table);
    }

    [[nodiscard]] std::string FilledIn(std::string statement, const std::string& table)
    {
        for (std::size_t at = 0; (at = statement.find('%', at)) != statement.npos;) {
            const char kind = statement[at + 1];
            const std::string name = kind == 't'   ? table
                                     : kind == 'f' ? AnyField(table)
                                                   : tables_[Below(tables_.size())];
            statement.replace(at, 2, name);
            at += name.size();
        }
        return statement;
    }

    [[nodiscard]] std::string AnyField(const std::string& table)
    {
        const Recordset records = connection_->OpenTable(table);
        return records.FieldCount() == 0 ? std::string() : records.FieldName(Below(records.FieldCount()));
    }

    void AddRows(const std::string& table)
    {
        Recordset records = connection_->OpenTable(table);
        for (std::size_t row = Below(30); row > 0; --row) {
            records.AddNew();
            for (std::size_t field = 0; field < records.FieldCount(); ++field)
                Attempt([&] { records.SetText(field, AnyText(records.IsMemo(field))); });
            records.Update();
        }
    }

    [[nodiscard]] std::string AnyText(bool memo)
    {
        if (Below(2) == 0)
            return std::to_string(Below(1000));
        return std::string(Below(memo && Below(4) == 0 ? 9000 : 60), static_cast<char>('a' + Below(26)));
    }

    void DeleteSomeRows(const std::string& table)
    {
        Recordset records = connection_->OpenTable(table);
        for (std::size_t row = 0; row < kMaxRows && !records.Eof(); ++row, records.MoveNext())
            if (Below(3) == 0)
                records.Delete();
    }

    [[nodiscard]] std::size_t Below(std::size_t end) { return random_() % end; }

    CrashFileSystem& disk_;
    std::mt19937 random_;
    std::size_t changes_;
    std::unique_ptr<Connection> connection_;
    std::vector<std::string> tables_;
    std::string fault_;
};

void AddRow(Recordset& records, const std::vector<std::string>& texts)
{
    records.AddNew();
    for (std::size_t field = 0; field < texts.size(); ++field)
        if (!texts[field].empty())
            records.SetText(field + 1, texts[field]);
    records.Update();
}

} // namespace

Bytes SmallDatabase(JetVersion version)
{
    CrashFileSystem disk;
    const std::unique_ptr<Connection> database = Connection::Create(kFile, version, Existing::Refuse, disk);
    database->Execute("CREATE TABLE [order] ([PKEY] Counter NOT NULL, [gone] String, [name] String, [note] Longtext)");
    database->Execute("CREATE UNIQUE INDEX [order_PKEY] ON [order] ([PKEY]) WITH PRIMARY");
    database->Execute("CREATE TABLE [item] ([PKEY] Counter NOT NULL, [FKEY] Long, [code] String)");
    database->Execute("CREATE UNIQUE INDEX [item_PKEY] ON [item] ([PKEY]) WITH PRIMARY");
    database->Execute("CREATE INDEX [code] ON [item] ([code])");
    database->Execute("ALTER TABLE [item] ADD CONSTRAINT [item_LINK] FOREIGN KEY ([FKEY]) REFERENCES [order] ([PKEY]) "
                      "ON UPDATE CASCADE ON DELETE CASCADE");
    {
        Recordset orders = database->OpenTable("order");
        for (int i = 1; i <= 40; ++i)
            AddRow(orders,
                   {"g", "order " + std::to_string(i), std::string(static_cast<std::size_t>(i * i * i / 5), 'n')});
        Recordset items = database->OpenTable("item");
        for (int i = 1; i <= 300; ++i)
            AddRow(items, {std::to_string(1 + i % 40), std::string(20, 'x') + std::to_string(i * 7919 % 300)});
        items.MoveFirst();
        for (int i = 0; i < 100; ++i, items.MoveNext())
            if (i % 3 == 0)
                items.Delete();
    }
    database->Execute("ALTER TABLE [order] DROP COLUMN [gone]");
    database->Execute("ALTER TABLE [order] ADD COLUMN [copy] String");
    database->Execute("UPDATE [order] SET [copy] = [name]");
    database->Commit();
    return disk.Content(kFile);
}

Bytes TinyDatabase(JetVersion version)
{
    CrashFileSystem disk;
    const std::unique_ptr<Connection> database = Connection::Create(kFile, version, Existing::Refuse, disk);
    database->Execute("CREATE TABLE [a] ([PKEY] Counter NOT NULL, [name] String, [note] Longtext)");
    database->Execute("CREATE UNIQUE INDEX [a_PKEY] ON [a] ([PKEY]) WITH PRIMARY");
    database->Execute("CREATE TABLE [b] ([PKEY] Counter NOT NULL, [FKEY] Long)");
    database->Execute("ALTER TABLE [b] ADD CONSTRAINT [b_LINK] FOREIGN KEY ([FKEY]) REFERENCES [a] ([PKEY]) "
                      "ON UPDATE CASCADE ON DELETE CASCADE");
    for (int i = 1; i <= 3; ++i) {
        Recordset parents = database->OpenTable("a");
        AddRow(parents, {"name", std::string(static_cast<std::size_t>(700 * i), 'n')});
        Recordset children = database->OpenTable("b");
        AddRow(children, {std::to_string(i)});
    }
    database->Commit();
    return disk.Content(kFile);
}

std::string Exercise(ByteSpan file, unsigned seed, std::size_t changes)
{
    CrashFileSystem disk;
    disk.Put(kFile, file);
    Exerciser exerciser(disk, seed, changes);
    exerciser.Run();
    return exerciser.Fault();
}

} // namespace jet::testing
