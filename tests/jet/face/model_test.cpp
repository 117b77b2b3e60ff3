#include "jet/face/database.h"

#include <algorithm>
#include <map>
#include <random>

namespace jet {
namespace {

using testing::Database;
using testing::kVersions;

/// What a database should hold, kept in the simplest way: rows of text by column names.
class Model {
public:
    using Row = std::map<std::string, std::string>;
    struct Table {
        std::vector<std::string> columns; ///< besides the counter PKEY
        std::vector<Row> rows;            ///< in the order of their keys
        std::string parent;               ///< its FKEY refers there; empty = to nothing
    };

    std::map<std::string, Table> tables;

    void DeleteRow(const std::string& table, const std::string& key)
    {
        auto& rows = tables[table].rows;
        std::erase_if(rows, [&](const Row& row) { return row.at("PKEY") == key; });
        for (auto& [name, other] : tables) {
            if (other.parent != table)
                continue;
            std::vector<std::string> gone;
            for (const Row& row : other.rows)
                if (row.at("FKEY") == key)
                    gone.push_back(row.at("PKEY"));
            for (const std::string& child : gone)
                DeleteRow(name, child);
        }
    }
};

/// Does the same to a database and to a model, and compares them.
class RandomRun {
public:
    RandomRun(JetVersion version, unsigned seed) : database_(version), random_(seed) {}

    void Step()
    {
        switch (Below(20)) {
        case 0:
        case 1:
            return MakeTable();
        case 2:
            return DropTable();
        case 3:
            return AddColumn();
        case 4:
            return DropColumn();
        case 5:
            return CopyColumn();
        case 6:
            return Relate();
        case 7:
            return DropRelation();
        case 8:
            return Empty();
        case 9:
        case 10:
            return DeleteOne();
        case 11:
            return database_.Reopen();
        default:
            return AddRows();
        }
    }

    void Compare()
    {
        for (const auto& [name, table] : model_.tables) {
            std::vector<Model::Row> rows;
            for (Recordset records = database_.Open(name); !records.Eof(); records.MoveNext()) {
                Model::Row& row = rows.emplace_back();
                for (std::size_t field = 0; field < records.FieldCount(); ++field)
                    row[records.FieldName(field)] = ToText(records.Get(field));
            }
            std::ranges::sort(rows, {}, [](const Model::Row& row) { return std::stoi(row.at("PKEY")); });
            ASSERT_EQ(rows, table.rows) << name;
        }
    }

    [[nodiscard]] Database& GetDatabase() { return database_; }

private:
    [[nodiscard]] std::size_t Below(std::size_t end) { return random_() % end; }
    [[nodiscard]] Model::Table* Any(std::string& name)
    {
        if (model_.tables.empty())
            return nullptr;
        const auto at = std::next(model_.tables.begin(), static_cast<std::ptrdiff_t>(Below(model_.tables.size())));
        name = at->first;
        return &at->second;
    }
    [[nodiscard]] std::string Text()
    {
        std::string text;
        for (std::size_t i = Below(8) ? Below(40) : Below(255); i > 0; --i)
            text += static_cast<char>('a' + Below(26));
        return text;
    }

    void MakeTable()
    {
        const std::string name = "table " + std::to_string(nextName_++);
        database_.Execute("CREATE TABLE [" + name + "] ([PKEY] Counter NOT NULL, [FKEY] Long, [text] String)");
        database_.Execute("CREATE UNIQUE INDEX [" + name + "_PKEY] ON [" + name + "] ([PKEY]) WITH PRIMARY");
        if (Below(2))
            database_.Execute("CREATE INDEX [" + name + "_FKEY] ON [" + name + "] ([FKEY])");
        model_.tables[name].columns = {"FKEY", "text"};
    }

    void DropTable()
    {
        std::string name;
        const Model::Table* table = Any(name);
        if (!table || Below(3))
            return;
        const bool referred = std::ranges::any_of(
            model_.tables, [&](const auto& other) { return other.second.parent == name && other.first != name; });
        ASSERT_EQ(database_.Try("DROP TABLE [" + name + "]"),
                  referred ? std::optional(ErrorNumber::TableInRelation) : std::nullopt);
        if (!referred)
            model_.tables.erase(name);
    }

    void AddColumn()
    {
        std::string name;
        Model::Table* table = Any(name);
        if (!table)
            return;
        const std::string column = "c" + std::to_string(nextName_++);
        database_.Execute("ALTER TABLE [" + name + "] ADD COLUMN [" + column + "] " +
                          (Below(2) ? "Longtext" : "String"));
        table->columns.push_back(column);
        for (Model::Row& row : table->rows)
            row[column];
    }

    void DropColumn()
    {
        std::string name;
        Model::Table* table = Any(name);
        if (!table || table->columns.size() < 3)
            return;
        const std::string column = table->columns.back();
        database_.Execute("ALTER TABLE [" + name + "] DROP COLUMN [" + column + "]");
        table->columns.pop_back();
        for (Model::Row& row : table->rows)
            row.erase(column);
    }

    void CopyColumn()
    {
        std::string name;
        Model::Table* table = Any(name);
        if (!table || table->columns.size() < 3)
            return;
        const std::string& target = table->columns.back();
        database_.Execute("UPDATE [" + name + "] SET [" + target + "] = [text]");
        for (Model::Row& row : table->rows)
            row[target] = row["text"];
    }

    void Relate()
    {
        std::string child, parent;
        Model::Table* table = Any(child);
        const Model::Table* other = Any(parent);
        if (!table || !table->parent.empty())
            return;
        const bool whole = std::ranges::all_of(table->rows, [&](const Model::Row& row) {
            return row.at("FKEY").empty() || std::ranges::any_of(other->rows, [&](const Model::Row& referred) {
                       return referred.at("PKEY") == row.at("FKEY");
                   });
        });
        ASSERT_EQ(database_.Try("ALTER TABLE [" + child + "] ADD CONSTRAINT [" + child +
                                "_LINK] FOREIGN KEY ([FKEY]) REFERENCES [" + parent +
                                "] ([PKEY]) ON UPDATE CASCADE ON DELETE CASCADE"),
                  whole ? std::nullopt : std::optional(ErrorNumber::DataViolatesRelation));
        if (whole)
            table->parent = parent;
    }

    void DropRelation()
    {
        std::string name;
        Model::Table* table = Any(name);
        if (!table || table->parent.empty() || Below(3))
            return;
        database_.Execute("ALTER TABLE [" + name + "] DROP CONSTRAINT [" + name + "_LINK]");
        table->parent.clear();
    }

    void Empty()
    {
        std::string name;
        const Model::Table* table = Any(name);
        if (!table || Below(3))
            return;
        database_.Execute("DELETE * FROM [" + name + "]");
        while (!table->rows.empty())
            model_.DeleteRow(name, std::string(table->rows.front().at("PKEY")));
    }

    void DeleteOne()
    {
        std::string name;
        const Model::Table* table = Any(name);
        if (!table || table->rows.empty())
            return;
        Recordset records = database_.Open(name);
        for (std::size_t skip = Below(table->rows.size()); skip > 0; --skip)
            records.MoveNext();
        const std::string key = ToText(records.Get(records.FieldIndex("PKEY").value()));
        records.Delete();
        model_.DeleteRow(name, key);
    }

    void AddRows()
    {
        std::string name;
        Model::Table* table = Any(name);
        if (!table)
            return;
        Recordset records = database_.Open(name);
        for (std::size_t count = Below(30); count > 0; --count) {
            Model::Row row;
            records.AddNew();
            for (const std::string& column : table->columns)
                row[column] = Value(column);
            for (const auto& [column, text] : row)
                if (!text.empty())
                    records.SetText(records.FieldIndex(column).value(), text);
            row["PKEY"] = ToText(records.Get(records.FieldIndex("PKEY").value()));
            if (Refers(*table, name, row)) {
                records.Update();
                table->rows.push_back(std::move(row));
            } else {
                ASSERT_THROW(records.Update(), Error);
                records.CancelUpdate();
            }
        }
    }

    [[nodiscard]] std::string Value(const std::string& column)
    {
        if (column != "FKEY")
            return Text();
        return Below(4) ? std::to_string(1 + Below(20)) : std::string();
    }

    /// Is there the row that `row` of table `name` refers to? It may be the row itself.
    [[nodiscard]] bool Refers(const Model::Table& table, const std::string& name, const Model::Row& row)
    {
        const std::string& key = row.at("FKEY");
        if (table.parent.empty() || key.empty() || (table.parent == name && row.at("PKEY") == key))
            return true;
        return std::ranges::any_of(model_.tables[table.parent].rows,
                                   [&](const Model::Row& referred) { return referred.at("PKEY") == key; });
    }

    Database database_;
    std::mt19937 random_;
    Model model_;
    int nextName_ = 0;
};

TEST(RandomStatements, DatabaseAndModelStayTheSame)
{
    for (const JetVersion version : kVersions) {
        const unsigned seed = version == JetVersion::Jet3 ? 19'970'301 : 20'000'607;
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomRun run(version, seed);
        constexpr int kSteps = 300;
        for (int step = 0; step < kSteps && !::testing::Test::HasFatalFailure(); ++step) {
            SCOPED_TRACE("step " + std::to_string(step));
            run.Step();
            if (step % 50 == 49) {
                run.Compare();
                run.GetDatabase().Keep();
            }
        }
        run.Compare();
        EXPECT_TRUE(run.GetDatabase().AllSound());
    }
}

} // namespace
} // namespace jet
