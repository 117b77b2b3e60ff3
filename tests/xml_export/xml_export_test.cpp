#include "xml_export/xml_export.h"

#include "schema/database_session.h"
#include "support/scripted_host.h"
#include "support/shared.h"

#include <algorithm>
#include <initializer_list>

namespace velmora::testing {

namespace {

/// A column and what it says of itself; "key" and "parent" are whole numbers with an index, the others memos.
struct ColumnSpec {
    const char* name;
    const char* origin; ///< nullptr: says nothing
};
/// Values by column, nullptr is Null.
using Row = std::vector<const char*>;

struct TableSpec {
    const char* name;
    const char* origin;
    std::vector<ColumnSpec> columns;
    std::vector<Row> rows;
};

constexpr ColumnSpec kKey{"PKEY", "key"};
constexpr ColumnSpec kParent{"FKEY", "parent"};

void Make(DatabaseSession& session, const TableSpec& table)
{
    const std::string name = "[" + std::string(table.name) + "]";
    std::string columns;
    std::vector<std::string> indexes;
    Origins origins{ReadTableOrigin(table.origin), {}};
    for (const ColumnSpec& column : table.columns) {
        const std::string bracketed = "[" + std::string(column.name) + "]";
        const auto origin = column.origin ? ReadColumnOrigin(column.origin) : std::nullopt;
        const bool isKey = origin && origin->kind == ColumnOrigin::Kind::Key;
        const bool isNumber = isKey || (origin && origin->kind == ColumnOrigin::Kind::Parent);
        columns += (columns.empty() ? "" : ", ") + bracketed + (isNumber ? " Long" : " Longtext");
        if (isNumber)
            indexes.push_back(std::string(isKey ? "CREATE UNIQUE INDEX [" : "CREATE INDEX [") + table.name + "_" +
                              column.name + "] ON " + name + " (" + bracketed + ")" + (isKey ? " WITH PRIMARY" : ""));
        if (origin)
            origins.columns.push_back({column.name, *origin});
    }
    session.ExecuteSql("CREATE TABLE " + name + " (" + columns + ")");
    for (const std::string& index : indexes)
        session.ExecuteSql(index);
    if (origins.table)
        session.SetOrigins(table.name, origins);
    Recordset records = session.OpenTable(table.name);
    for (const Row& row : table.rows) {
        records.AddNew();
        for (std::size_t field = 0; field < row.size(); ++field)
            if (row[field] != nullptr)
                records.SetText(field, row[field]);
        records.Update();
    }
}

class WayBack {
public:
    WayBack(jet::JetVersion version, const std::vector<TableSpec>& tables, const std::string& sql = {})
    {
        DatabaseSession session;
        session.Create(folder / "in.mdb", version, jet::Existing::Refuse);
        for (const TableSpec& table : tables)
            Make(session, table);
        if (!sql.empty())
            session.ExecuteSql(sql);
        session.Commit();
        job.settings.blQuiet = true;
        job.settings.targetFile = folder / "in.mdb";
        job.settings.xmlFile = folder / "out.xml";
    }

    /// The reason of a refusal; empty when there is none.
    std::string Export()
    {
        const std::string before = ReadFile(folder / "in.mdb");
        host.lines.clear();
        std::optional<std::string> refusal;
        Guarded(job.log, [&] { refusal = velExportXML(job); });
        EXPECT_TRUE(ReadFile(folder / "in.mdb") == before) << "the database was touched";
        for (const auto& entry : std::filesystem::directory_iterator(folder.Path()))
            EXPECT_EQ(entry.path().string().find(".velmora-"), std::string::npos) << entry.path();
        return refusal.value_or("");
    }
    [[nodiscard]] std::string File(const char* name) const
    {
        std::string text = std::filesystem::exists(folder / name) ? ReadFile(folder / name) : "no such file";
        std::erase(text, '\r');
        return text;
    }
    [[nodiscard]] bool HasLine(const std::string& part) const
    {
        return std::ranges::any_of(host.lines, [&](const std::string& line) { return line.find(part) != line.npos; });
    }

    TempFolder folder;
    ScriptedHost host;
    Job job{host};
};

constexpr jet::JetVersion kVersions[] = {jet::JetVersion::Jet3, jet::JetVersion::Jet4};
constexpr const char* kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

struct Case {
    const char* name;
    std::vector<TableSpec> tables;
    const char* xml;
    std::vector<const char*> lines = {}; ///< parts of protocol lines
};

const std::vector<Case>& Cases()
{
    static const std::vector<Case> cases{
        {"values come back where they were",
         {{"doc",
           "path //doc\nplace 0",
           {kKey,
            {"b", "child b\nplace 1"},
            {"attr_y", "attribute y\nplace 1"},
            {"doc", "text"},
            {"attr_x", "attribute x\nplace 0"},
            {"a", "child a\nplace 0"},
            {"absent", "child absent\nplace 2"}},
           {{"1", "", "\t\r\n<>&\"'", nullptr, "", "a\r\n<>&\"'", nullptr}}}},
         R"(<doc x="" y="&#9;&#13;&#10;&lt;&gt;&amp;&quot;&apos;">
  <a>a&#13;
&lt;&gt;&amp;"'</a>
  <b/>
</doc>
)"},
        {"records that lie in no order come in the order of their keys, orphans and what is below them not at all",
         {{"doc", "path //doc\nplace 0", {kKey}, {{"5"}}},
          {"r",
           "path //doc/r\nplace 0",
           {kKey, kParent, {"attr_n", "attribute n\nplace 0"}},
           {{"30", "5", "30"}, {"-1", "5", "-1"}, {"20", "5", "20"}, {"4", nullptr, ""}, {"6", "6", ""}}},
          {"s",
           "path //doc/r/s\nplace 0",
           {kKey, kParent, {"attr_n", "attribute n\nplace 0"}},
           {{"9", "20", "9"},
            {"1", "30", "1"},
            {"2", "4", ""},
            {"3", "-1", "3"},
            {"8", "20", "8"},
            {"10", "30", "10"}}}},
         R"(<doc>
  <r n="-1">
    <s n="3"/>
  </r>
  <r n="20">
    <s n="8"/>
    <s n="9"/>
  </r>
  <r n="30">
    <s n="1"/>
    <s n="10"/>
  </r>
</doc>
)",
         {"2 records of table [r]", "1 records of table [s]"}},
        {"continued tables, overflow, and what nobody knows",
         {{"doc", "path //doc\nplace 0", {kKey}, {{"1"}}},
          {"w",
           "path //doc/w\nplace 0",
           {kKey, kParent, {"a", "child a\nplace 0"}, {"a_text", "overflow a"}, {"mine", nullptr}},
           {{"1", "1", "1", nullptr, "x"}, {"2", "1", nullptr, "one", "y"}}},
          {"w_2",
           "continues w",
           {kKey, {"b", "child b\nplace 1"}, {"attr_c", "attribute c\nplace 0"}},
           {{"2", "B", "C"}}},
          {"notes", "", {kKey}, {{"1"}}}},
         R"(<doc>
  <w>
    <a>1</a>
  </w>
  <w c="C">
    <a>one</a>
    <b>B</b>
  </w>
</doc>
)",
         {"[w].[mine]", "document: [notes]"}},
        {"names of any letters, and characters that XML forbids",
         {{"doc",
           "path //sch\u00F6n:\u0416\nplace 0",
           {kKey, {"a", "child \U00020000\nplace 0"}},
           {{"1", "a\x01\x1F z"}}}},
         "<sch\u00F6n:\u0416>\n  <\U00020000>a z</\U00020000>\n</sch\u00F6n:\u0416>\n",
         {"2 characters, the first in [doc].[a]"}},
    };
    return cases;
}

TEST(XmlExport, TheDatabaseBecomesTheDocumentAgain)
{
    for (const jet::JetVersion version : kVersions) {
        for (const Case& c : Cases()) {
            SCOPED_TRACE(std::string(c.name) + (version == jet::JetVersion::Jet3 ? ", Access 97" : ""));
            WayBack run(version, c.tables);
            EXPECT_EQ(run.Export(), "");
            EXPECT_TRUE(run.host.errors.empty()) << run.host.errors[0].second;
            EXPECT_EQ(run.File("out.xml"), kDeclaration + std::string(c.xml));
            for (const char* line : c.lines)
                EXPECT_TRUE(run.HasLine(line)) << line;
            const std::size_t leftOut = static_cast<std::size_t>(std::ranges::count_if(
                run.host.lines, [](const std::string& line) { return line.find("Left out") != line.npos; }));
            EXPECT_EQ(leftOut, c.lines.size());
        }
    }
}

TEST(XmlExport, EachRecordOfADocumentElementGivesAFile)
{
    WayBack run(jet::JetVersion::Jet4,
                {{"doc", "path //doc\nplace 0", {kKey, kParent}, {{"2", "0"}, {"1"}}},
                 {"r", "path //doc/r\nplace 0", {kKey, kParent}, {{"1", "2"}}}},
                "DROP INDEX doc_FKEY ON doc"); // it stands in nothing

    WriteFile(run.folder / "out.xml", "old");
    WriteFile(run.folder / "out_2.xml", "old");
    EXPECT_NE(run.Export().find("out_2.xml\" is there already; +overwrite"), std::string::npos);
    EXPECT_EQ(run.File("out_1.xml"), "no such file");
    run.job.settings.blQuiet = false; // somebody can be asked
    run.host.answers = {Answer::No, Answer::Yes};
    EXPECT_NE(run.Export(), "");
    EXPECT_EQ(run.File("out_2.xml"), "old");
    EXPECT_EQ(run.Export(), "");
    EXPECT_NE(run.host.messages.back().find("out_2.xml\" is there already"), std::string::npos);
    run.job.settings.blQuiet = run.job.settings.blOverwrite = true;
    EXPECT_EQ(run.Export(), "");
    EXPECT_EQ(run.host.messages.size(), 2U);
    EXPECT_EQ(run.File("out.xml"), "old") << "which is none of these";
    EXPECT_EQ(run.File("out_1.xml"), kDeclaration + std::string("<doc/>\n"));
    EXPECT_EQ(run.File("out_2.xml"), kDeclaration + std::string("<doc>\n  <r/>\n</doc>\n"));
}

TEST(XmlExport, AnotherDatabaseIsRefusedWithTheReason)
{
    const TableSpec doc{"doc", "path //doc\nplace 0", {kKey}, {{"1"}}};
    struct Refusal {
        const char* reason;
        std::vector<TableSpec> tables;
        const char* sql = "";
    };
    const Refusal refusals[] = {
        {"not made with +complete", {{"doc", "", {{"PKEY", "key"}}, {{"1"}}}}},
        {"[r] does not say which record its own stand in; the database was made with -relations",
         {doc, {"r", "path //doc/r\nplace 0", {kKey}, {}}}},
        {"[r] does not say which column is its key; it was there before",
         {doc, {"r", "path //doc/r\nplace 0", {{"PKEY", nullptr}, kParent}, {}}}},
        {"the index on column [r].[FKEY]",
         {doc, {"r", "path //doc/r\nplace 0", {kKey, kParent}, {}}},
         "DROP INDEX r_FKEY ON r"},
        {"\"a b\", which no element", {{"doc", "path //doc\nplace 0", {kKey, {"a", "child a b"}}, {{"1"}}}}},
        {"no record of a document element", {{"doc", "path //doc\nplace 0", {kKey}, {}}}},
    };
    for (const Refusal& refusal : refusals) {
        WayBack run(jet::JetVersion::Jet4, refusal.tables, refusal.sql);
        const std::string reason = run.Export();
        EXPECT_NE(reason.find(refusal.reason), std::string::npos) << reason;
        EXPECT_EQ(run.File("out.xml"), "no such file");
    }
}

/// What cannot be written, and a cancel, leave the folder and an old file as they were.
TEST(XmlExport, WhatEndsEarlyLeavesNothingBehind)
{
    std::vector<Row> rows;
    std::vector<std::string> numbers;
    for (int i = 1; i <= 600; ++i)
        numbers.push_back(std::to_string(i));
    for (const std::string& number : numbers)
        rows.push_back({number.c_str(), "1"});
    const std::vector<TableSpec> tables{{"doc", "path //doc\nplace 0", {kKey}, {{"1"}}},
                                        {"r", "path //doc/r\nplace 0", {kKey, kParent}, rows}};
    {
        WayBack run(jet::JetVersion::Jet4, tables);
        run.job.settings.xmlFile = run.folder / "nowhere" / "out.xml";
        EXPECT_EQ(run.Export(), "");
        ASSERT_EQ(run.host.errors.size(), 1u);
        EXPECT_NE(run.host.errors[0].second.find("nowhere"), std::string::npos);
    }
    WayBack run(jet::JetVersion::Jet4, tables);
    WriteFile(run.folder / "out.xml", "old");
    run.job.settings.blOverwrite = true;
    run.host.onEvents = [&] { run.job.settings.blAbort = true; };
    EXPECT_EQ(run.Export(), "");
    EXPECT_EQ(run.File("out.xml"), "old");
}

} // namespace

} // namespace velmora::testing
