// Statements, records, commits and crashes in random order, done to a database and to a model of it.
//
// VELMORA_MODEL_ROUNDS asks for that many runs in each format instead of one, VELMORA_MODEL_SEED for the first seed.

#include "jet/base/value_text.h"
#include "jet/connection.h"
#include "jet/face/model.h"
#include "jet/store/crash_file_system.h"
#include "support/shared.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <iterator>
#include <memory>
#include <random>
#include <sstream>

namespace jet {
namespace {

using testing::CrashFileSystem;
using testing::Loss;
using testing::Model;

constexpr const char* kFile = "test.mdb";

class RandomRun {
public:
    RandomRun(JetVersion version, unsigned seed, bool writesBehind) : random_(seed), disk_(seed)
    {
        if (writesBehind)
            disk_.SetWritesBehind();
        connection_ = Connection::Create(kFile, version, Existing::Refuse, disk_);
        connection_->Commit();
    }

    void Step()
    {
        using Action = void (RandomRun::*)();
        static const std::vector<Action> actions = [] {
            std::vector<Action> all;
            for (const auto& [weight, action] :
                 std::initializer_list<std::pair<std::size_t, Action>>{{3, &RandomRun::MakeTable},
                                                                       {1, &RandomRun::DropTable},
                                                                       {3, &RandomRun::AddColumn},
                                                                       {2, &RandomRun::DropColumn},
                                                                       {1, &RandomRun::CopyColumn},
                                                                       {2, &RandomRun::MakeIndex},
                                                                       {1, &RandomRun::WidenColumn},
                                                                       {1, &RandomRun::DropIndex},
                                                                       {3, &RandomRun::Relate},
                                                                       {1, &RandomRun::DropRelation},
                                                                       {8, &RandomRun::AddRows},
                                                                       {1, &RandomRun::Empty},
                                                                       {4, &RandomRun::DeleteOne},
                                                                       {8, &RandomRun::ChangeOne},
                                                                       {4, &RandomRun::ChangeOneKey},
                                                                       {2, &RandomRun::Commit},
                                                                       {1, &RandomRun::FailToCommit},
                                                                       {1, &RandomRun::RollBack},
                                                                       {2, &RandomRun::Crash}})
                all.insert(all.end(), weight, action);
            return all;
        }();
        (this->*actions[Below(actions.size())])();
    }

    void Compare() { ASSERT_EQ(Difference(model_), ""); }
    void CopyOut(const std::filesystem::path& path)
    {
        Commit();
        disk_.CopyOut(kFile, path);
    }

private:
    using Table = std::pair<const std::string, Model::Table>;

    [[nodiscard]] std::size_t Below(std::size_t end) { return random_() % end; }
    [[nodiscard]] bool OneIn(std::size_t count) { return Below(count) == 0; }
    [[nodiscard]] Table* AnyTable()
    {
        if (model_.tables.empty())
            return nullptr;
        return &*std::next(model_.tables.begin(), static_cast<std::ptrdiff_t>(Below(model_.tables.size())));
    }
    [[nodiscard]] std::string NewName(const char* kind) { return kind + std::to_string(++lastName_); }

    // ---- What is compared ----

    /// What is not as in `wanted`: a line of the structure, or else the first table with other rows; empty when all is.
    [[nodiscard]] std::string Difference(const Model& wanted)
    {
        std::vector<std::string> lines;
        std::ranges::set_symmetric_difference(wanted.Structure(), Structure(), std::back_inserter(lines));
        if (!lines.empty())
            return lines.front() + ": here, but not there";
        for (const auto& [name, table] : wanted.tables)
            if (const std::map<int, Model::Row> rows = RowsOf(name); rows != table.rows)
                return name + " holds\n" + AsText(rows) + "instead of\n" + AsText(table.rows);
        return "";
    }

    [[nodiscard]] std::set<std::string> Structure()
    {
        constexpr std::string_view kNoLimit = "0";
        std::set<std::string> lines;
        for (Rowset rows = connection_->OpenSchema(SchemaKind::Columns); !rows.Eof(); rows.MoveNext())
            if (!rows.Text("TABLE_NAME").starts_with("MSys"))
                lines.insert(Model::ColumnLine(rows.Text("TABLE_NAME"), rows.Text("COLUMN_NAME"),
                                               rows.Text("CHARACTER_MAXIMUM_LENGTH") == kNoLimit));
        for (Rowset rows = connection_->OpenSchema(SchemaKind::Indexes); !rows.Eof(); rows.MoveNext())
            if (!rows.Text("TABLE_NAME").starts_with("MSys"))
                lines.insert(Model::IndexLine(rows.Text("TABLE_NAME"), rows.Text("INDEX_NAME"),
                                              std::get<bool>(rows.Field("UNIQUE"))));
        for (Rowset rows = connection_->OpenSchema(SchemaKind::ForeignKeys); !rows.Eof(); rows.MoveNext())
            lines.insert(Model::RelationLine(rows.Text("FK_TABLE_NAME"), rows.Text("PK_TABLE_NAME"),
                                             rows.Text("DELETE_RULE") == "CASCADE"));
        return lines;
    }

    [[nodiscard]] std::map<int, Model::Row> RowsOf(const std::string& table)
    {
        std::map<int, Model::Row> rows;
        for (Recordset records = connection_->OpenTable(table); !records.Eof(); records.MoveNext()) {
            Model::Row row;
            for (std::size_t field = 0; field < records.FieldCount(); ++field)
                row[records.FieldName(field)] = ToText(records.Get(field));
            const int key = std::stoi(row.extract("PKEY").mapped());
            EXPECT_TRUE(rows.emplace(key, std::move(row)).second) << table << " has PKEY " << key << " twice";
        }
        return rows;
    }

    [[nodiscard]] static std::string AsText(const std::map<int, Model::Row>& rows)
    {
        std::ostringstream text;
        for (const auto& [key, row] : rows) {
            text << key;
            for (const auto& [column, value] : row)
                text << '|' << column << '=' << value.substr(0, 30) << '(' << value.size() << ')';
            text << '\n';
        }
        return text.str();
    }

    // ---- What is done ----

    using Refusals = std::set<ErrorNumber>;

    [[nodiscard]] static Refusals If(bool isRefused, ErrorNumber error)
    {
        return isRefused ? Refusals{error} : Refusals{};
    }

    /// Does something that must be refused with one of `refusals`, or succeed when there are none. Was it done?
    template <typename Action>
    bool Try(const Refusals& refusals, const std::string& what, Action&& action)
    {
        try {
            action();
        } catch (const Error& error) {
            EXPECT_TRUE(refusals.contains(error.Number())) << what << ": " << error.what();
            return false;
        }
        EXPECT_TRUE(refusals.empty()) << what << " was not refused";
        return refusals.empty();
    }
    bool Try(const Refusals& refusals, const std::string& sql)
    {
        return Try(refusals, sql, [&] { connection_->Execute(sql); });
    }

    void MakeTable()
    {
        const std::string name = NewName("table ");
        Try({}, "CREATE TABLE [" + name + "] ([PKEY] Counter NOT NULL, [KEY] Long, [FKEY] Long, [text] String)");
        Try({}, "CREATE UNIQUE INDEX [" + name + "_PKEY] ON [" + name + "] ([PKEY]) WITH PRIMARY");
        Try({}, "CREATE UNIQUE INDEX [" + name + "_KEY] ON [" + name + "] ([KEY])");
        model_.tables[name].columns = {{"KEY", "Long", name + "_KEY", true}, {"FKEY", "Long"}, {"text", "String"}};
    }

    void DropTable()
    {
        const Table* table = AnyTable();
        if (!table)
            return;
        const std::string name = table->first;
        const bool isReferred = std::ranges::any_of(
            model_.tables, [&](const Table& other) { return other.second.parent == name && other.first != name; });
        if (Try(If(isReferred, ErrorNumber::TableInRelation), "DROP TABLE [" + name + "]"))
            model_.tables.erase(name);
    }

    void AddColumn()
    {
        constexpr std::size_t kMaxColumns = 8; // so that the longest texts fit in a row
        Table* table = AnyTable();
        if (!table || table->second.columns.size() == kMaxColumns)
            return;
        static constexpr const char* kTypes[] = {"String", "Longtext", "Double", "YesNo"};
        const Model::Column column{NewName("column "), kTypes[Below(std::size(kTypes))]};
        Try({}, "ALTER TABLE [" + table->first + "] ADD COLUMN [" + column.name + "] " + column.type);
        for (auto& [key, row] : table->second.rows)
            row[column.name] = column.type == "YesNo" ? "False" : "";
        table->second.columns.push_back(column);
    }

    /// The last column of a table that may go or change; nullptr when it has only those that it began with.
    [[nodiscard]] Model::Column* LastOf(Table* table)
    {
        return table && table->second.columns.size() > 3 ? &table->second.columns.back() : nullptr;
    }

    void DropColumn()
    {
        Table* table = AnyTable();
        const Model::Column* column = LastOf(table);
        if (!column || !Try(If(!column->index.empty(), ErrorNumber::FieldInIndex),
                            "ALTER TABLE [" + table->first + "] DROP COLUMN [" + column->name + "]"))
            return;
        for (auto& [key, row] : table->second.rows)
            row.erase(column->name);
        table->second.columns.pop_back();
    }

    void CopyColumn()
    {
        Table* table = AnyTable();
        const Model::Column* column = LastOf(table);
        if (!column || column->isUnique || !column->IsText())
            return;
        Try({}, "UPDATE [" + table->first + "] SET [" + column->name + "] = [text]");
        for (auto& [key, row] : table->second.rows)
            row[column->name] = row["text"];
    }

    void WidenColumn()
    {
        Table* table = AnyTable();
        Model::Column* column = LastOf(table);
        if (!column || !column->IsText() ||
            !Try(If(!column->index.empty(), ErrorNumber::FieldInIndex),
                 "ALTER TABLE [" + table->first + "] ALTER COLUMN [" + column->name + "] Longtext"))
            return;
        column->type = "Longtext";
    }

    void MakeIndex()
    {
        Table* table = AnyTable();
        if (!table)
            return;
        Model::Column& column = table->second.columns[1 + Below(table->second.columns.size() - 1)];
        if (column.type == "Longtext" || !column.index.empty())
            return;
        const bool isUnique = column.name != "FKEY" && OneIn(2);
        const std::string index = NewName("index ");
        const std::string also = isUnique || OneIn(2) ? "" : ", [PKEY]";
        if (!Try(If(isUnique && Model::HasDuplicates(table->second, column.name), ErrorNumber::DuplicateKey),
                 std::string(isUnique ? "CREATE UNIQUE INDEX [" : "CREATE INDEX [") + index + "] ON [" + table->first +
                     "] ([" + column.name + (OneIn(2) ? "] DESC" : "]") + also + ")"))
            return;
        column.index = index;
        column.isUnique = isUnique;
    }

    void DropIndex()
    {
        Table* table = AnyTable();
        if (!table)
            return;
        Model::Column& column = table->second.columns[1 + Below(table->second.columns.size() - 1)];
        if (column.index.empty() || !Try({}, "DROP INDEX [" + column.index + "] ON [" + table->first + "]"))
            return;
        column.index.clear();
        column.isUnique = false;
    }

    void Relate()
    {
        Table* child = AnyTable();
        const Table* parent = AnyTable();
        if (!child || !child->second.parent.empty())
            return;
        const bool cascades = !OneIn(4);
        if (!Try(If(!Model::Refers(child->second, parent->second), ErrorNumber::DataViolatesRelation),
                 "ALTER TABLE [" + child->first + "] ADD CONSTRAINT [" + child->first +
                     "_LINK] FOREIGN KEY ([FKEY]) REFERENCES [" + parent->first + "] ([KEY])" +
                     (cascades ? " ON UPDATE CASCADE ON DELETE CASCADE" : "")))
            return;
        child->second.parent = parent->first;
        child->second.cascades = cascades;
    }

    void DropRelation()
    {
        Table* table = AnyTable();
        if (!table || table->second.parent.empty())
            return;
        Try({}, "ALTER TABLE [" + table->first + "] DROP CONSTRAINT [" + table->first + "_LINK]");
        table->second.parent.clear();
    }

    void AddRows()
    {
        Table* table = AnyTable();
        if (!table)
            return;
        Recordset records = connection_->OpenTable(table->first);
        for (std::size_t count = Below(40); count > 0; --count) {
            Model::Row row;
            for (const Model::Column& column : table->second.columns)
                row[column.name] = Value(column);
            records.AddNew();
            SetFields(records, row);
            const int key = std::stoi(ToText(records.Get(records.FieldIndex("PKEY").value())));
            if (Try(model_.Refusals(table->first, key, row), "adding to " + table->first, [&] { records.Update(); }))
                table->second.rows.emplace(key, std::move(row));
            else
                records.CancelUpdate();
        }
    }

    [[nodiscard]] std::string Value(const Model::Column& column)
    {
        if (column.name == "KEY" || column.name == "FKEY")
            return OneIn(4) ? std::string() : std::to_string(1 + Below(column.name == "KEY" ? 1000 : 30));
        if (column.type == "YesNo")
            return OneIn(2) ? "True" : "False";
        if (column.type == "Double")
            return OneIn(4) ? "" : std::to_string(Below(1000)) + ".5";
        const std::size_t longest = !OneIn(8) ? 40 : column.type == "String" ? 255 : OneIn(2) ? 300 : 9000;
        std::string text(Below(longest), ' ');
        std::ranges::generate(text, [&] { return static_cast<char>('a' + Below(26)); });
        return text;
    }

    /// An empty text stands for Null.
    static void SetFields(Recordset& records, const Model::Row& row)
    {
        for (const auto& [column, text] : row) {
            const std::size_t field = records.FieldIndex(column).value();
            if (text.empty())
                records.Set(field, Null{});
            else
                records.SetText(field, text);
        }
    }

    /// Calls `action` with a recordset on a row of any table, the table and the row's key, if there is a row.
    template <typename Action>
    void WithAnyRow(Action&& action)
    {
        Table* table = AnyTable();
        if (!table || table->second.rows.empty())
            return;
        Recordset records = connection_->OpenTable(table->first);
        for (std::size_t skip = Below(table->second.rows.size()); skip > 0; --skip)
            records.MoveNext();
        action(records, *table, std::stoi(ToText(records.Get(records.FieldIndex("PKEY").value()))));
    }

    void DeleteOne()
    {
        WithAnyRow([&](Recordset& records, Table& table, int key) {
            const bool isFree = model_.Delete({{table.first, key}});
            Try(If(!isFree, ErrorNumber::RelatedRecords), "deleting in " + table.first, [&] { records.Delete(); });
        });
    }

    void Empty()
    {
        const Table* table = AnyTable();
        if (!table)
            return;
        std::vector<Model::RowName> rows;
        for (const auto& [key, row] : table->second.rows)
            rows.emplace_back(table->first, key);
        const bool isFree = model_.Delete(std::move(rows));
        Try(If(!isFree, ErrorNumber::RelatedRecords), "DELETE * FROM [" + table->first + "]");
    }

    void ChangeOne()
    {
        WithAnyRow([&](Recordset& records, Table& table, int key) {
            Model::Row changed;
            Model::Row row = table.second.rows.at(key);
            for (const Model::Column& column : table.second.columns)
                if (column.name != "KEY" && OneIn(2))
                    row[column.name] = changed[column.name] = Value(column);
            if (changed.empty())
                return;
            SetFields(records, changed);
            if (Try(model_.Refusals(table.first, key, row), "changing " + table.first, [&] { records.Update(); }))
                table.second.rows.at(key) = std::move(row);
            else
                records.CancelUpdate();
        });
    }

    void ChangeOneKey()
    {
        WithAnyRow([&](Recordset& records, Table& table, int key) {
            const std::string value = std::to_string(1 + Below(1000));
            SetFields(records, {{"KEY", value}});
            if (Try(model_.KeyRefusals(table.first, key, value), "changing a key of " + table.first,
                    [&] { records.Update(); }))
                model_.ChangeKey(table.first, key, value);
            else
                records.CancelUpdate();
        });
    }

    // ---- What is kept ----

    void Commit()
    {
        connection_->Commit();
        committed_ = model_;
    }

    /// Does a commit fail? With the disk's help it should, at times.
    [[nodiscard]] bool CommitFails()
    {
        try {
            Commit();
            return false;
        } catch (const Error&) {
            return true;
        }
    }

    /// The disk refuses something once: after that there is no way on with the connection.
    void FailToCommit()
    {
        disk_.FailAt(disk_.Operations() + 1 + Below(20), OneIn(2) ? ErrorNumber::DiskFull : ErrorNumber::DiskError);
        const bool fails = CommitFails();
        disk_.FailAt(0, ErrorNumber::DiskError);
        if (!fails)
            return;
        EXPECT_TRUE(CommitFails());
        connection_.reset();
        Reopen(fails);
    }

    /// The machine stops between two statements, or somewhere in a commit.
    void Crash()
    {
        bool fails = false;
        if (!OneIn(3)) {
            disk_.StopAt(disk_.Operations() + 1 + Below(OneIn(2) ? 8 : 60));
            fails = CommitFails();
        }
        constexpr Loss kLosses[] = {Loss::Nothing, Loss::Some, Loss::All};
        disk_.Crash(connection_, kLosses[Below(std::size(kLosses))]);
        Reopen(fails);
    }

    void RollBack()
    {
        connection_.reset();
        Reopen(false);
    }

    /// `isOpen`: a commit was stopped at a moment that nobody knows, so all of it may be there, or nothing.
    void Reopen(bool isOpen)
    {
        connection_ = Connection::Open(kFile, disk_);
        if (isOpen && Difference(model_).empty())
            committed_ = model_;
        model_ = committed_;
        Compare();
    }

    std::mt19937 random_;
    CrashFileSystem disk_;
    std::unique_ptr<Connection> connection_;
    Model model_;     ///< what the connection should show
    Model committed_; ///< what should be there after a crash
    int lastName_ = 0;
};

unsigned FromEnvironment(const char* variable, unsigned otherwise)
{
    const char* text = std::getenv(variable);
    return text ? static_cast<unsigned>(std::stoul(text)) : otherwise;
}

void CompareInRandomOrder(JetVersion version, unsigned seed, bool writesBehind)
{
    SCOPED_TRACE("seed " + std::to_string(seed));
    constexpr int kSteps = 400;
    constexpr int kStepsBetweenChecks = 80;
    const velmora::testing::TempFolder folder;
    std::vector<std::filesystem::path> states;
    RandomRun run(version, seed, writesBehind);
    for (int step = 1; step <= kSteps; ++step) {
        SCOPED_TRACE("step " + std::to_string(step));
        EXPECT_NO_THROW(run.Step());
        if (step % kStepsBetweenChecks == 0) {
            run.Compare();
            states.push_back(folder / ("step" + std::to_string(step) + ".mdb"));
            run.CopyOut(states.back());
        }
        if (::testing::Test::HasFailure())
            return;
    }
    EXPECT_TRUE(velmora::testing::ExpectSound(states));
}

TEST(RandomStatements, DatabaseAndModelStayTheSame)
{
    const unsigned firstSeed = FromEnvironment("VELMORA_MODEL_SEED", 5076);
    const unsigned rounds = FromEnvironment("VELMORA_MODEL_ROUNDS", 1);
    for (unsigned round = 0; round < rounds && !HasFailure(); ++round)
        for (const auto& [version, writesBehind] :
             {std::pair(JetVersion::Jet3, false), {JetVersion::Jet4, false}, {JetVersion::Jet4, true}}) {
            SCOPED_TRACE(static_cast<int>(version));
            CompareInRandomOrder(version, firstSeed + round, writesBehind);
        }
}

} // namespace
} // namespace jet
