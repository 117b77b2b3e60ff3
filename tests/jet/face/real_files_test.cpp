#include "jet/base/value_text.h"
#include "jet/face/database.h"
#include "support/shared.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

namespace jet {
namespace {

namespace fs = std::filesystem;

/// A copy of a file that Access made, which is changed step by step; the states in between are kept.
class ChangedFile {
public:
    ChangedFile(const fs::path& original, const fs::path& folder) : folder_(folder), path_(folder / "changed.mdb")
    {
        fs::create_directory(folder);
        connection_ = Connection::Open(velmora::testing::CopyOf(original, path_));
    }

    [[nodiscard]] Connection& Face() { return *connection_; }
    void Execute(const std::string& sql) { connection_->Execute(sql); }
    [[nodiscard]] std::vector<std::string> Tables() { return testing::UserTables(*connection_); }

    void Keep(const std::string& name)
    {
        connection_->Commit();
        connection_.reset();
        states_.push_back(velmora::testing::CopyOf(path_, folder_ / (name + ".mdb")).string());
        connection_ = Connection::Open(path_);
    }
    [[nodiscard]] const std::vector<std::string>& States() const { return states_; }

private:
    fs::path folder_, path_;
    std::unique_ptr<Connection> connection_;
    std::vector<std::string> states_;
};

/// A text that a field of the type (OLE DB's numbers) takes, another one for each `number` below 100.
std::string PlausibleText(int type, int characters, int number)
{
    const std::string digits = std::to_string(100 + number);
    switch (type) {
    case 11: // Boolean
        return number % 2 ? "True" : "False";
    case 7: // date
        return "2024-03-05 14:07:" + digits.substr(1);
    case 72: // GUID
        return "{12345678-9ABC-DEF0-0102-030405060" + digits + "}";
    case 128: // binary, OLE
        return "00FF" + std::string(characters == 0 ? 600 : 0, 'A') + "0" + digits;
    case 6: // currency
        return digits + ".25";
    case 4:
    case 5:
        return digits + ".5";
    case 130: {
        const std::string text = digits + " ünïcode" + std::string(characters == 0 ? 5000 : 0, '-');
        return characters > 0 && characters < 12 ? digits : text;
    }
    default:
        return digits;
    }
}

/// Adds three records with a value in every field that is there already; false when a record that one of them refers to
/// is still missing.
bool AddRecords(ChangedFile& file, const std::string& table)
{
    std::map<std::string, std::pair<int, int>> kinds;
    for (Rowset rows = file.Face().OpenSchema(SchemaKind::Columns, {"", "", table}); !rows.Eof(); rows.MoveNext()) {
        const std::string length = rows.Text("CHARACTER_MAXIMUM_LENGTH");
        kinds[rows.Text("COLUMN_NAME")] = {std::stoi(rows.Text("DATA_TYPE")), length.empty() ? -1 : std::stoi(length)};
    }
    Recordset records = file.Face().OpenTable(table);
    for (int number = 0; number < 3; ++number) {
        records.AddNew();
        for (std::size_t field = 0; field < records.FieldCount(); ++field) {
            const auto [type, characters] = kinds.at(records.FieldName(field));
            records.SetText(field, PlausibleText(type, characters, number));
        }
        try {
            records.Update();
        } catch (const Error& error) {
            if (error.Number() == ErrorNumber::RelatedRecordRequired && number == 0)
                return false;
            throw;
        }
    }
    return true;
}

/// Carries `action` out on every table, those that are not ready yet again after the others.
template <typename Action>
void ForAll(std::vector<std::string> tables, const Action& action)
{
    while (!tables.empty()) {
        const std::size_t before = tables.size();
        std::erase_if(tables, [&](const std::string& table) {
            SCOPED_TRACE(table);
            return action(table);
        });
        ASSERT_LT(tables.size(), before) << tables.front() << " is never ready";
    }
}

/// Tables of our own beside those that are there.
void Add(ChangedFile& file)
{
    file.Execute("CREATE TABLE [our parent] ([PKEY] Counter NOT NULL, [name] String, [note] Longtext)");
    file.Execute("CREATE UNIQUE INDEX [our parent_PKEY] ON [our parent] ([PKEY]) WITH PRIMARY");
    file.Execute("CREATE TABLE [our child] ([PKEY] Counter NOT NULL, [FKEY] Long, [name] String)");
    file.Execute("CREATE INDEX [our child_FKEY] ON [our child] ([FKEY])");
    file.Execute("ALTER TABLE [our child] ADD CONSTRAINT [our child_LINK] FOREIGN KEY ([FKEY]) REFERENCES [our parent] "
                 "([PKEY]) ON UPDATE CASCADE ON DELETE CASCADE");
    // Enough to take every free page, and then some.
    Recordset parents = file.Face().OpenTable("our parent");
    for (int number = 0; number < 60; ++number) {
        parents.AddNew();
        parents.SetText(2, std::string(3000, 'n'));
        parents.Update();
    }
    parents.Close();
    file.Keep("added");
}

void Extend(ChangedFile& file, const std::vector<std::string>& tables)
{
    for (const std::string& table : tables) {
        SCOPED_TRACE(table);
        file.Execute("ALTER TABLE [" + table + "] ADD COLUMN [our text] String");
        file.Execute("ALTER TABLE [" + table + "] ADD COLUMN [our memo] Longtext");
    }
    ForAll(file.Tables(), [&](const std::string& table) { return AddRecords(file, table); });
    file.Keep("extended");

    for (const std::string& table : tables) {
        SCOPED_TRACE(table);
        Recordset records = file.Face().OpenTable(table);
        if (records.FieldCount() > 200)
            continue;
        const std::string first = records.FieldName(0);
        const std::string second = records.IsMemo(0) ? "" : ", [" + first + "] DESC";
        records.Close();
        file.Execute("CREATE INDEX [our index] ON [" + table + "] ([our text]" + second + ")");
        if (!second.empty())
            file.Execute("UPDATE [" + table + "] SET [our text] = [" + first + "]");
        file.Execute("UPDATE [" + table + "] SET [our memo] = [" + first + "]");
    }
    file.Keep("extended and changed");

    for (const std::string& table : tables)
        file.Execute("ALTER TABLE [" + table + "] DROP COLUMN [our memo]");
    // Once the numbers for columns are used up, the table is written anew.
    for (int number = 0; !tables.empty() && number < 250; ++number) {
        file.Execute("ALTER TABLE [" + tables.front() + "] ADD COLUMN [our flag] YesNo");
        file.Execute("ALTER TABLE [" + tables.front() + "] DROP COLUMN [our flag]");
    }
    file.Keep("extended and shortened");
}

void Empty(ChangedFile& file)
{
    ForAll(file.Tables(), [&](const std::string& table) {
        try {
            file.Execute("DELETE * FROM [" + table + "]");
            return true;
        } catch (const Error& error) {
            EXPECT_EQ(error.Number(), ErrorNumber::RelatedRecords);
            return false;
        }
    });
    for (const std::string& table : file.Tables())
        EXPECT_TRUE(file.Face().OpenTable(table).Eof()) << table;
    file.Keep("emptied");
}

void Drop(ChangedFile& file)
{
    const std::vector<std::string> tables = file.Tables();
    for (const std::string& table : tables) {
        const Restrictions ofTable{"", "", "", "", "", table, "FOREIGN KEY"};
        for (Rowset keys = file.Face().OpenSchema(SchemaKind::TableConstraints, ofTable); !keys.Eof(); keys.MoveNext())
            file.Execute("ALTER TABLE [" + table + "] DROP CONSTRAINT [" + keys.Text("CONSTRAINT_NAME") + "]");
    }
    for (const std::string& table : tables)
        file.Execute("DROP TABLE [" + table + "]");
    EXPECT_TRUE(file.Tables().empty());
    file.Keep("dropped");
}

TEST(RealFiles, AreExtendedEmptiedAndDroppedAndKeepTheRest)
{
    REQUIRE_SHARED(shared);
    const velmora::testing::TempFolder folder;
    for (const fs::path& path : velmora::testing::RealDatabases(shared)) {
        SCOPED_TRACE(path.filename());
        ChangedFile file(path, folder / path.stem());
        try {
            const std::vector<std::string> tables = file.Tables();
            Add(file);
            Extend(file, tables);
            Empty(file);
            Drop(file);
        } catch (const Error& error) {
            ADD_FAILURE() << static_cast<int>(error.Number()) << ": " << error.what();
        }
        std::vector<std::string> arguments{COMPARE_FILES, path.string()};
        arguments.insert(arguments.end(), file.States().begin(), file.States().end());
        const auto compared = velmora::testing::RunPython(arguments);
        EXPECT_EQ(compared.status, 0) << compared.output << compared.errors;
    }
}

// ---- Reading --------------------------------------------------------------------------------------------------------

/// All that the rowsets tell of the schema, in the words of the script that reads the same with the checker.
std::multiset<std::string> SchemaLines(Connection& connection)
{
    std::multiset<std::string> lines;
    const auto each = [&](SchemaKind kind, const auto& line) {
        for (Rowset rows = connection.OpenSchema(kind); !rows.Eof(); rows.MoveNext())
            lines.insert(line([&](const char* field) { return rows.Text(field); }));
    };
    each(SchemaKind::Tables, [](const auto& at) { return "table " + at("TABLE_NAME") + " " + at("TABLE_TYPE"); });
    each(SchemaKind::Columns, [](const auto& at) {
        return "column " + at("TABLE_NAME") + "." + at("COLUMN_NAME") + " " + at("ORDINAL_POSITION") + " " +
               at("DATA_TYPE") + " " + at("CHARACTER_MAXIMUM_LENGTH");
    });
    each(SchemaKind::Indexes, [](const auto& at) {
        return "index " + at("TABLE_NAME") + "." + at("INDEX_NAME") + " " + at("COLUMN_NAME") + " " +
               at("ORDINAL_POSITION") + (at("COLLATION") == "1" ? " up " : " down ") + at("PRIMARY_KEY") + " " +
               at("UNIQUE");
    });
    each(SchemaKind::TableConstraints, [](const auto& at) {
        return "constraint " + at("TABLE_NAME") + " " + at("CONSTRAINT_NAME") + " " + at("CONSTRAINT_TYPE");
    });
    each(SchemaKind::ReferentialConstraints, [](const auto& at) {
        return "rule " + at("CONSTRAINT_NAME") + " " + at("UNIQUE_CONSTRAINT_NAME") + " " + at("UPDATE_RULE") + " " +
               at("DELETE_RULE");
    });
    each(SchemaKind::ForeignKeys, [](const auto& at) {
        return "key " + at("FK_NAME") + " " + at("FK_TABLE_NAME") + "." + at("FK_COLUMN_NAME") + " " +
               at("PK_TABLE_NAME") + "." + at("PK_COLUMN_NAME") + " " + at("ORDINAL") + " " + at("UPDATE_RULE") + " " +
               at("DELETE_RULE");
    });
    return lines;
}

/// The rows of the user's tables, in hex, since texts may hold line ends.
void AddRowLines(Connection& connection, std::multiset<std::string>& lines)
{
    for (const std::string& table : testing::UserTables(connection))
        for (Recordset records = connection.OpenTable(table); !records.Eof(); records.MoveNext()) {
            std::string row;
            for (std::size_t field = 0; field < records.FieldCount(); ++field) {
                const Value value = records.Get(field);
                const bool isCompared =
                    std::holds_alternative<std::string>(value) || std::holds_alternative<std::int32_t>(value);
                row.append(isCompared ? ToText(value) : "").append("|");
            }
            lines.insert("row " + table + " " + testing::Hex({reinterpret_cast<const Byte*>(row.data()), row.size()}));
        }
}

TEST(RealFiles, ReadAsTheCheckerReadsThem)
{
    REQUIRE_SHARED(shared);
    const velmora::testing::TempFolder folder;
    for (const fs::path& path : velmora::testing::RealDatabases(shared)) {
        SCOPED_TRACE(path.filename());
        const auto read = velmora::testing::RunPython({READ_DATABASE, path.string()});
        ASSERT_EQ(read.status, 0) << read.errors;
        std::multiset<std::string> theirs;
        std::istringstream stream(read.output);
        for (std::string line; std::getline(stream, line);)
            theirs.insert(line);

        const auto connection = Connection::Open(velmora::testing::CopyOf(path, folder / "copy.mdb"));
        std::multiset<std::string> ours = SchemaLines(*connection);
        AddRowLines(*connection, ours);
        std::vector<std::string> differences;
        std::ranges::set_symmetric_difference(ours, theirs, std::back_inserter(differences));
        EXPECT_EQ(differences, std::vector<std::string>());
    }
}

} // namespace
} // namespace jet
