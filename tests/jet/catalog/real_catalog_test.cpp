#include "jet/catalog/schema_rowsets.h"
#include "support/process.h"
#include "support/shared.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <sstream>
#include <string>

namespace jet {
namespace {

namespace fs = std::filesystem;

/// A copy of a real file, opened with its catalog.
class RealFile {
public:
    explicit RealFile(const fs::path& original) : path_(folder_ / original.filename())
    {
        fs::copy_file(original, path_);
        fs::permissions(path_, fs::perms::owner_write, fs::perm_options::add);
        pager_ = Pager::Open(OpenFile(path_, OpenMode::ReadWrite));
        catalog_.emplace(*pager_);
    }

    [[nodiscard]] const fs::path& Path() const { return path_; }
    [[nodiscard]] Rowset Ask(SchemaKind kind, const Restrictions& restrictions)
    {
        return QuerySchema(*catalog_, kind, restrictions);
    }
    [[nodiscard]] Catalog& GetCatalog() { return *catalog_; }

private:
    velmora::testing::TempFolder folder_;
    fs::path path_;
    std::unique_ptr<Pager> pager_;
    std::optional<Catalog> catalog_;
};

/// The named fields of all rows, one row a line.
std::string Lines(Rowset rows, const std::vector<std::string>& fields)
{
    std::string text;
    for (; !rows.Eof(); rows.MoveNext()) {
        for (std::size_t i = 0; i < fields.size(); ++i)
            text += (i ? "|" : "") + rows.Text(fields[i]);
        text += '\n';
    }
    return text;
}

std::set<std::string> Split(const std::string& text)
{
    std::set<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        if (!line.empty())
            lines.insert(line);
    return lines;
}

TEST(RealCatalog, UserTablesAreThoseThatAnotherReaderSees)
{
    REQUIRE_SHARED(shared);
    for (const fs::directory_entry& entry : fs::directory_iterator(shared / "corpus/mdb")) {
        if (entry.path().extension() != ".mdb" || entry.path().filename() == "V2000_with-password.mdb")
            continue;
        SCOPED_TRACE(entry.path().filename().string());
        RealFile file(entry.path());
        const auto listed = velmora::testing::RunProcess({"mdb-tables", "-1", file.Path().string()});
        if (listed.status == 127)
            GTEST_SKIP() << "skipped: mdb-tables is not installed";
        EXPECT_EQ(Split(Lines(file.Ask(SchemaKind::Tables, {"", "", "", "TABLE"}), {"TABLE_NAME"})),
                  Split(listed.output));
    }
}

/// All that the rowsets tell, in the form of the script that reads the same with the checker.
std::set<std::string> SchemaLines(RealFile& file)
{
    std::set<std::string> lines;
    const auto each = [&](SchemaKind kind, const auto& line) {
        for (Rowset rows = file.Ask(kind, {}); !rows.Eof(); rows.MoveNext())
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

TEST(RealCatalog, RowsetsTellWhatTheCheckerReads)
{
    REQUIRE_SHARED(shared);
    for (const fs::directory_entry& entry : fs::directory_iterator(shared / "corpus/mdb")) {
        if (entry.path().extension() != ".mdb" || entry.path().filename() == "V2000_with-password.mdb")
            continue;
        SCOPED_TRACE(entry.path().filename().string());
        RealFile file(entry.path());
        const auto read = velmora::testing::RunProcess({"python3", SCHEMA_LINES, entry.path().string()},
                                                       {{"PYTHONPATH", (shared / "tools").string()},
                                                        {"PYTHONDONTWRITEBYTECODE", "1"},
                                                        {"PYTHONIOENCODING", "utf-8"}});
        EXPECT_EQ(read.status, 0) << read.errors;
        const std::set<std::string> ours = SchemaLines(file);
        const std::set<std::string> theirs = Split(read.output);
        std::vector<std::string> differences;
        std::ranges::set_symmetric_difference(ours, theirs, std::back_inserter(differences));
        EXPECT_EQ(differences, std::vector<std::string>());
    }
}

TEST(RealCatalog, AnswersQuestionsAsTheConverterAsksThem)
{
    REQUIRE_SHARED(shared);
    struct Case {
        const char* name;
        const char* file;
        SchemaKind kind;
        Restrictions restrictions;
        std::vector<std::string> fields;
        const char* answer;
    };
    const Case cases[] = {
        {"a table, letter case aside",
         "indexTestV2000.mdb",
         SchemaKind::Tables,
         {"", "", "TABLE1", "TABLE"},
         {"TABLE_NAME", "TABLE_TYPE"},
         "Table1|TABLE\n"},
        {"no such table", "indexTestV2000.mdb", SchemaKind::Tables, {"", "", "Table9", "TABLE"}, {"TABLE_NAME"}, ""},
        {"a system table is no table",
         "indexTestV2000.mdb",
         SchemaKind::Tables,
         {"", "", "MSysObjects", "TABLE"},
         {"TABLE_NAME"},
         ""},
        {"a query is a view", "queryTestV2000.mdb", SchemaKind::Tables, {"", "", "", "VIEW"}, {"TABLE_TYPE"}, nullptr},
        {"columns",
         "indexTestV2000.mdb",
         SchemaKind::Columns,
         {"", "", "Table1"},
         {"COLUMN_NAME", "ORDINAL_POSITION", "DATA_TYPE", "CHARACTER_MAXIMUM_LENGTH"},
         "id|1|3|\notherfk1|2|3|\notherfk2|3|3|\ndata|4|130|50\notherfk3|5|3|\n"},
        {"indexes without hidden ones",
         "indexTestV2000.mdb",
         SchemaKind::Indexes,
         {"", "", "", "", "Table2"},
         {"INDEX_NAME", "COLUMN_NAME", "UNIQUE", "PRIMARY_KEY"},
         "id|id|False|False\nPrimaryKey|id|True|True\n"},
        {"an index by name, wherever it is",
         "indexTestV2000.mdb",
         SchemaKind::Indexes,
         {"", "", "table2table1"},
         {"TABLE_NAME", "INDEX_NAME", "COLUMN_NAME"},
         "Table1|Table2Table1|otherfk1\n"},
        {"constraints",
         "indexTestV2000.mdb",
         SchemaKind::TableConstraints,
         {"", "", "", "", "", "Table1"},
         {"CONSTRAINT_NAME", "CONSTRAINT_TYPE"},
         "PrimaryKey|PRIMARY KEY\nTable2Table1|FOREIGN KEY\nTable3Table1|FOREIGN KEY\n"},
        {"a relation by name",
         "indexTestV2000.mdb",
         SchemaKind::ReferentialConstraints,
         {"", "", "Table2Table1"},
         {"CONSTRAINT_NAME", "UNIQUE_CONSTRAINT_NAME", "UPDATE_RULE", "DELETE_RULE"},
         nullptr},
        {"foreign keys of a table",
         "indexTestV1997.mdb",
         SchemaKind::ForeignKeys,
         {"", "", "", "", "", "Table1"},
         {"PK_TABLE_NAME", "PK_COLUMN_NAME", "FK_TABLE_NAME", "FK_COLUMN_NAME", "ORDINAL"},
         "Table2|id|Table1|otherfk1|1\nTable3|id|Table1|otherfk2|1\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        RealFile file(shared / "corpus/mdb" / c.file);
        const std::string answer = Lines(file.Ask(c.kind, c.restrictions), c.fields);
        if (c.answer)
            EXPECT_EQ(answer, c.answer);
        else
            EXPECT_NE(answer, "");
    }
}

TEST(RealCatalog, OwnerIdsFitTheDateInPageZero)
{
    REQUIRE_SHARED(shared);
    for (const char* name : {"testV2000.mdb", "indexTestV2003.mdb", "emptyJet4.mdb", "testV1997.mdb"}) {
        SCOPED_TRACE(name);
        RealFile file(shared / "corpus/mdb" / name);
        Pager& pager = file.GetCatalog().GetPager();
        const OwnerIds ids(pager);
        SystemTable& objects = file.GetCatalog().Objects().ObjectRows();
        Record record;
        objects.Rows().Read(file.GetCatalog().FindTable("MSysObjects")->row, record);
        constexpr std::uint16_t kOwner = 6;
        EXPECT_EQ(objects.Binary(record, kOwner), ids.engine);
    }
}

} // namespace
} // namespace jet
