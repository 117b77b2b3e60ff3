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
    for (const fs::path& path : velmora::testing::RealDatabases(shared)) {
        SCOPED_TRACE(path.filename());
        RealFile file(path);
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
    for (const fs::path& path : velmora::testing::RealDatabases(shared)) {
        SCOPED_TRACE(path.filename());
        RealFile file(path);
        const auto read = velmora::testing::RunProcess({"python3", SCHEMA_LINES, path.string()},
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
