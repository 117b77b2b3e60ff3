// The program as a user starts it.

#include "schema/database_session.h"
#include "support/process.h"
#include "support/shared.h"

#include <gtest/gtest.h>

namespace velmora::testing {
namespace {

class ProgramTest : public ::testing::Test {
protected:
    [[nodiscard]] ProcessResult Run(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), VELMORA_PROGRAM);
        return RunCommand(arguments);
    }
    [[nodiscard]] ProcessResult RunCommand(const std::vector<std::string>& command) const
    {
        return RunProcess(command, {{"DISPLAY", ""}, {"WAYLAND_DISPLAY", ""}, {"TERM", "xterm"}}, folder.Path());
    }

    TempFolder folder;
};

bool Contains(const std::string& text, std::string_view part)
{
    return text.find(part) != std::string::npos;
}

TEST_F(ProgramTest, SaysAtOnceWhyThereIsNothingToConvert)
{
    WriteFile(folder / "a.xml", "<a><b>1</b></a>");
    struct Case {
        std::vector<std::string> arguments;
        const char* output; ///< in standard output or standard error
    };
    const Case cases[] = {
        {{}, "velmora orders.xml orders.mdb"},
        {{"mdb=new.mdb"}, "no source is named"},
        {{"new.mdb"}, "No XML file specified!"},
        {{"a.xml", "new.mdb", "b.mdb"}, "Two databases are named, \"new.mdb\" and \"b.mdb\""},
        {{"a.xml", "none.xml", "new.mdb"}, "File does not exist! [none.xml]; nothing was converted"},
        {{"+quiet", "mdb=new.mdb"}, "No XML file specified!"},
        {{"+quiet", "mdb=new.mdb", "xml=none.xml"}, "File does not exist!"},
        {{"+quiet", "mdb=new.mdb", "xml=none*"}, "No files to import"},
        {{"+quiet", "mdb=a.xml", "xml=./a.xml"}, "a.xml"},
        {{"+quiet", "mdb=new.mdb", "xml=a\"b.xml"}, "a\"b.xml"},
        {{"mdb=new.mdb", "export=out.xml"}, "\"new.mdb\" does not exist"},
        {{"mdb=a.xml", "export=out.xml"}, "no database"},
        {{"export=out.xml"}, "needs the database"},
        {{"mdb=new.mdb", "export=out.xml", "xml=a.xml"}, "no source can be named"},
        {{"mdb=new.mdb", "export=out.xml", "url=http://a"}, "no source can be named"},
        {{"mdb=new.mdb", "export=out.xml", "txt=."}, "no folder for text files"},
        {{"mdb=a.xml", "export=./a.xml"}, "is also the database"},
        {{"mdb=new.mdb", "export=a.xml", "log=a.xml"}, "is also the XML file"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.output);
        const ProcessResult result = Run(c.arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_TRUE(Contains(result.output + result.errors, c.output)) << result.output << result.errors;
        EXPECT_FALSE(std::filesystem::exists(folder / "new.mdb"));
        EXPECT_EQ(ReadFile(folder / "a.xml"), "<a><b>1</b></a>");
    }
}

TEST_F(ProgramTest, HelpAndVersionComeBeforeEverythingElse)
{
    const ProcessResult help = Run({"xml=\"", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(Contains(help.output, "Exit status"));
    EXPECT_EQ(help.errors, "");
    for (const char* word : {"-h", "-help", "/?", "help"})
        EXPECT_EQ(Run({word}).output, help.output) << word;
    const ProcessResult version = Run({"--version", "+quiet"});
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.output.substr(0, 8), "velmora ");
}

TEST_F(ProgramTest, ConvertsAndTellsWhatHappened)
{
    WriteFile(folder / "one file.xml", "<people><person><name>Ann</name></person></people>");
    WriteFile(folder / "broken.xml", "<people><person>");
    const ProcessResult result = Run({"quiet", "bogus", "log=run.log", "mdb=all.mdb", "xml=one file.xml"});
    EXPECT_EQ(result.status, 0) << result.output << result.errors;
    EXPECT_EQ(result.errors, "") << "no progress outside a terminal";
    EXPECT_TRUE(Contains(result.output, " Unknown parameter:bogus\n"));
    EXPECT_FALSE(Contains(result.output, "Unknown parameter:\n")) << "quotes are the program's own affair";
    EXPECT_TRUE(Contains(result.output, "File 1 of 1: one file.xml\n"));
    EXPECT_TRUE(Contains(result.output, "Columns widened\n"));
    EXPECT_TRUE(Contains(ReadFile(folder / "run.log"), " Done\r\n"));
    EXPECT_SOUND(folder / "all.mdb");

    EXPECT_EQ(Run({"q", "mdb=all.mdb", "xml=*.xml"}).status, 3) << "a source that is no XML";
    WriteFile(folder / "mixed.xml", "<people><person>text<name>Ann</name></person></people>");
    for (const auto& [word, status] : {std::pair("-strict", 0), {"+strict", 3}})
        EXPECT_EQ(Run({"q", "mdb=mixed.mdb", "xml=mixed.xml", word}).status, status) << "a text beside elements";
    WriteFile(folder / "damaged.tsv", "a\tb\r\n\r\n");
    for (const char* mapping : {"tags=none.tsv", "tags=damaged.tsv"})
        EXPECT_EQ(Run({"q", "mdb=all.mdb", "xml=one file.xml", mapping}).status, 3) << mapping;
    const ProcessResult failed = Run({"q", "mdb=no/such/folder/all.mdb", "xml=one file.xml"});
    EXPECT_EQ(failed.status, 1);
    EXPECT_TRUE(Contains(failed.errors, "velmora: error ")) << failed.errors;
}

TEST_F(ProgramTest, ConvertsPlainNamesAtOnceIntoADatabaseThatIsKept)
{
    WriteFile(folder / "a.xml", "<people><person><name>Ann</name></person></people>");
    WriteFile(folder / "b c.xml", "<people><person><name>Bob</name></person></people>");
    struct Case {
        std::vector<std::string> arguments;
        std::string names;
    };
    const Case cases[] = {
        {{"a.xml", "all.mdb"}, "Ann"},          {{"b c.xml", "all.mdb"}, "Ann Bob"},
        {{"all.mdb", "b c.xml", "+d"}, "Bob"},  {{"b c.xml", "a.xml", "keys.mdb"}, "Ann Bob"},
        {{"xml=@list", "mdb=keys.mdb"}, "Ann"}, // by key, where no window can be opened
    };
    WriteFile(folder / "list", "a.xml\n");
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::PrintToString(c.arguments));
        const ProcessResult result = Run(c.arguments);
        EXPECT_EQ(result.status, 0) << result.output << result.errors;
        const bool byKeys = Contains(::testing::PrintToString(c.arguments), "keys.mdb");
        const std::string bytes = ReadFile(folder / (byKeys ? "keys.mdb" : "all.mdb"));
        for (const char* name : {"Ann", "Bob"})
            EXPECT_EQ(Contains(bytes, name), Contains(c.names, name)) << name;
    }
    EXPECT_SOUND(std::vector({folder / "all.mdb", folder / "keys.mdb"}));
}

TEST_F(ProgramTest, AnInterruptEndsTheRunInGoodOrderAndASecondOneAtOnce)
{
    std::string document = "<list>";
    for (int record = 0; record < 600'000; ++record) // some time to interrupt, for the fastest build too
        document += "<record><n>1</n></record>";
    WriteFile(folder / "a.xml", document + "</list>");
    struct Case {
        const char* events;
        const char* quiet;
        std::vector<const char*> written;
    };
    // Who is asked whether to cancel can answer by a second Ctrl-C.
    const Case cases[] = {
        {"Import XML: Approx=INT", "+quiet", {"reading, ", "Operation cancelled", "ended with 130"}},
        {"Analyse XML=TERM", "+quiet", {"Operation cancelled by user", "no database was made", "ended with 130"}},
        {"Import XML: Approx=INT,[C]ancel=INT", "-quiet", {"[O]K", "ended with -2"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.events);
        std::filesystem::remove(folder / "out.mdb");
        const ProcessResult result =
            RunCommand({"python3", ON_TERMINAL, c.events, VELMORA_PROGRAM, "xml=a.xml", "mdb=out.mdb", c.quiet});
        for (const char* text : c.written)
            EXPECT_TRUE(Contains(result.output, text)) << text << " in\n" << result.output << result.errors;
        if (std::filesystem::exists(folder / "out.mdb")) {
            EXPECT_SOUND(folder / "out.mdb");
        }
    }
}

/// However far the killed run has come: the next one brings what is missing, and nothing twice.
TEST_F(ProgramTest, AKilledRunGoesOnWithoutDoubles)
{
    for (const char* name : {"1", "2", "3", "4"}) {
        std::string document = "<list>";
        for (int record = 0; record < 2'000; ++record)
            document += std::string("<record><n>") + name + "</n></record>";
        WriteFile(folder / (std::string(name) + ".xml"), document + "</list>");
    }
    WriteFile(folder / "3.xml", "<list><w><l><i><n>5</n></i></l></w></list>"); // fails with +skip_empty
    const std::vector<std::string> words{"xml=?.xml", "mdb=out.mdb", "-d", "+once", "+continue", "+skip_empty", "+q"};
    for (const char* line : {"File 2 of 4", "File 4 of 4", "Close tables", "Done"}) {
        std::vector<std::string> killed{"python3", ON_TERMINAL, std::string(line) + "=KILL", VELMORA_PROGRAM};
        killed.insert(killed.end(), words.begin(), words.end());
        EXPECT_TRUE(Contains(RunCommand(killed).output, "ended with ")) << line;
    }
    const ProcessResult last = Run(words);
    EXPECT_EQ(last.status, 1) << last.output << last.errors;
    EXPECT_TRUE(Contains(last.output, "Left out because of errors: 1 of 4 files")) << last.output;
    EXPECT_SOUND(folder / "out.mdb");
    DatabaseSession session;
    session.OpenReadOnly(folder / "out.mdb");
    EXPECT_EQ(session.OpenTable("record").RecordCount(), 6'000U);
    EXPECT_EQ(session.OpenTable("velmora_log").RecordCount(), 3U);
}

TEST_F(ProgramTest, GivesASummaryToAPipeAlone)
{
    WriteFile(folder / "a.xml", "<a><b>1</b></a>");
    const ProcessResult result = Run({"+quiet", "xml=a.xml", "mdb=a.mdb", "summary=-"});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.output.starts_with("{\n  \"program\": \"velmora\"") && result.output.ends_with("\n}\n"))
        << result.output;
    EXPECT_TRUE(Contains(result.errors, " Done\n") && Contains(result.errors, "\na  ")) << result.errors;
}

TEST_F(ProgramTest, WritesADatabaseAsXmlAtOnce)
{
    {
        DatabaseSession session;
        session.Create(folder / "in.mdb", jet::JetVersion::Jet4, jet::Existing::Refuse);
        session.ExecuteSql("CREATE TABLE doc (PKEY Counter, a String)");
        session.ExecuteSql("CREATE UNIQUE INDEX doc_PKEY ON doc (PKEY) WITH PRIMARY");
        session.ExecuteSql("CREATE TABLE plain (a String)");
        session.SetOrigins("doc", {TableOrigin{{{"//doc", {0}}}, {}},
                                   {{"PKEY", {ColumnOrigin::Kind::Key}}, {"a", {ColumnOrigin::Kind::Child, "a"}}}});
        Recordset records = session.OpenTable("doc");
        records.AddNew();
        records.SetText(1, "1");
        records.Update();
        session.Commit();
    }
    const std::string before = ReadFile(folder / "in.mdb");
    const ProcessResult written = Run({"mdb=in.mdb", "export=out.xml", "+overwrit"});
    EXPECT_EQ(written.status, 0) << written.output << written.errors;
    EXPECT_TRUE(Contains(written.output, "Written: out.xml, 1 records\n")) << written.output;
    const std::string xml = ReadFile(folder / "out.xml");
    EXPECT_TRUE(Contains(xml, "<doc>\r\n  <a>1</a>\r\n</doc>")) << xml;

    const ProcessResult again = Run({"mdb=in.mdb", "export=out.xml"});
    EXPECT_EQ(again.status, 2);
    EXPECT_TRUE(Contains(again.output, "\"out.xml\" is there already; +overwrite replaces it")) << again.output;
    EXPECT_EQ(Run({"mdb=in.mdb", "export=out.xml", "+overwrite"}).status, 0);
    EXPECT_EQ(Run({"mdb=in.mdb", "export=no/such/out.xml"}).status, 1);
    EXPECT_TRUE(ReadFile(folder / "in.mdb") == before);
}

} // namespace
} // namespace velmora::testing
