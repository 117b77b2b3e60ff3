#include "jet/face/database.h"
#include "support/process.h"

#include <algorithm>
#include <map>

namespace jet {
namespace {

namespace fs = std::filesystem;

/// A copy of a file that Access made, which is changed step by step; the states in between are kept.
class RealFile {
public:
    RealFile(const fs::path& original, const fs::path& folder) : folder_(folder), path_(folder / "changed.mdb")
    {
        fs::create_directory(folder);
        fs::copy_file(original, path_);
        fs::permissions(path_, fs::perms::owner_write, fs::perm_options::add);
        connection_ = Connection::Open(path_);
    }

    [[nodiscard]] Connection& Face() { return *connection_; }
    void Execute(const std::string& sql) { connection_->Execute(sql); }

    [[nodiscard]] std::vector<std::string> UserTables()
    {
        std::vector<std::string> names;
        for (Rowset rows = connection_->OpenSchema(SchemaKind::Tables, {"", "", "", "TABLE"}); !rows.Eof();
             rows.MoveNext())
            names.push_back(rows.Text("TABLE_NAME"));
        return names;
    }

    void Keep(const std::string& name)
    {
        connection_->Commit();
        connection_.reset();
        states_.push_back(folder_ / (name + ".mdb"));
        fs::copy_file(path_, states_.back());
        connection_ = Connection::Open(path_);
    }
    [[nodiscard]] const std::vector<fs::path>& States() const { return states_; }

private:
    fs::path folder_, path_;
    std::unique_ptr<Connection> connection_;
    std::vector<fs::path> states_;
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
bool AddRecords(RealFile& file, const std::string& table)
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
void Add(RealFile& file)
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

void Extend(RealFile& file, const std::vector<std::string>& tables)
{
    for (const std::string& table : tables) {
        SCOPED_TRACE(table);
        file.Execute("ALTER TABLE [" + table + "] ADD COLUMN [our text] String");
        file.Execute("ALTER TABLE [" + table + "] ADD COLUMN [our memo] Longtext");
    }
    ForAll(file.UserTables(), [&](const std::string& table) { return AddRecords(file, table); });
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

void Empty(RealFile& file)
{
    ForAll(file.UserTables(), [&](const std::string& table) {
        try {
            file.Execute("DELETE * FROM [" + table + "]");
            return true;
        } catch (const Error& error) {
            EXPECT_EQ(error.Number(), ErrorNumber::RelatedRecords);
            return false;
        }
    });
    for (const std::string& table : file.UserTables())
        EXPECT_TRUE(file.Face().OpenTable(table).Eof()) << table;
    file.Keep("emptied");
}

void Drop(RealFile& file)
{
    const std::vector<std::string> tables = file.UserTables();
    for (const std::string& table : tables) {
        const Restrictions ofTable{"", "", "", "", "", table, "FOREIGN KEY"};
        for (Rowset keys = file.Face().OpenSchema(SchemaKind::TableConstraints, ofTable); !keys.Eof(); keys.MoveNext())
            file.Execute("ALTER TABLE [" + table + "] DROP CONSTRAINT [" + keys.Text("CONSTRAINT_NAME") + "]");
    }
    for (const std::string& table : tables)
        file.Execute("DROP TABLE [" + table + "]");
    EXPECT_TRUE(file.UserTables().empty());
    file.Keep("dropped");
}

TEST(RealFiles, AreExtendedEmptiedAndDroppedAndKeepTheRest)
{
    REQUIRE_SHARED(shared);
    const velmora::testing::TempFolder folder;
    for (const fs::path& path : velmora::testing::RealDatabases(shared)) {
        SCOPED_TRACE(path.filename());
        RealFile file(path, folder / path.stem());
        try {
            const std::vector<std::string> tables = file.UserTables();
            Add(file);
            Extend(file, tables);
            Empty(file);
            Drop(file);
        } catch (const Error& error) {
            ADD_FAILURE() << static_cast<int>(error.Number()) << ": " << error.what();
        }
        std::vector<std::string> arguments{"python3", COMPARE_FILES, path.string()};
        for (const fs::path& state : file.States())
            arguments.push_back(state.string());
        const auto compared = velmora::testing::RunProcess(
            arguments, {{"PYTHONPATH", (shared / "tools").string()}, {"PYTHONDONTWRITEBYTECODE", "1"}});
        EXPECT_EQ(compared.status, 0) << compared.output << compared.errors;
    }
}

} // namespace
} // namespace jet
