#include "app/application.h"

#include "settings/command_line.h"
#include "support/scripted_host.h"
#include "support/shared.h"

#include <gtest/gtest.h>

namespace velmora {
namespace {

TEST(Application, StartsFromTheCommandLine)
{
    testing::ScriptedHost host;
    Application application(host);
    application.Form_Load("xml=a.xml foo -columns ver=97 -d debug");
    const Controls& controls = application.GetJob().controls;
    EXPECT_EQ(controls.txtFILE_XML.text, "a.xml");
    EXPECT_EQ(controls.cboDatabase.Text(), "Access 97");
    EXPECT_FALSE(controls.chkEXPORT_COLUMN_NAMES.Checked());
    EXPECT_TRUE(controls.chkAPPEND.Checked());
    EXPECT_TRUE(controls.chkExtendMDB.enabled) << "the existing database may be extended";
    EXPECT_FALSE(controls.chkEnableTagMapping.Checked());
    EXPECT_FALSE(controls.lblVersion.empty());
    EXPECT_TRUE(application.GetJob().settings.blDebug);
    EXPECT_EQ(host.lines, std::vector<std::string>{"Unknown parameter:foo"});
    EXPECT_THROW(application.Form_Load("xml=\"a b"), CommandLineError);
}

/// What a run leaves of "old.mdb", which holds another content than a database, and of the log.
struct Refusal {
    const char* options;
    bool hasDatabase;
    bool refused;
    const char* said = "";
};

TEST(Application, AMistypedWordDoesNotCostADatabase)
{
    const char* kDoubt = "may be mistyped";
    const Refusal cases[] = {
        {"-recreate-database", true, true, "Did you mean -recreate_database?"},
        {"-recreate-database", true, true, kDoubt},
        {"-recreate", true, true, kDoubt},
        {"-d -empty-tables e", true, true, "would be emptied"},
        {"-d -empty-tables", true, false},
        {"-recreate-database", false, false, "Did you mean -recreate_database?"},
        {"foo x", true, false, "Unknown parameter:foo"},
        {"-d previw", true, true, "\"preview\" writes nothing"},
        {"prewiew", false, true, kDoubt},
        {"-d --preview", true, true, kDoubt},
        {"-d --preview", true, true, "Did you mean preview?"},
        {"-d -preview", true, false},
        {"pwdd=secret xlm=b", true, true, "Unknown parameter:pwdd=***"},
        {"+strict foo", false, true, "+strict: \"foo\" is not known"},
        {"+strict  -q", false, false, "Unknown parameter:"},
        {"+strict tags=none", false, true, "+strict: the file of tag names could not be read"},
    };
    for (const Refusal& c : cases) {
        SCOPED_TRACE(c.options);
        const testing::TempFolder folder;
        const std::string in = folder.Path().string() + "/";
        testing::WriteFile(folder / "a.xml", "<a><b>1</b></a>");
        {
            testing::ScriptedHost host;
            Application first(host);
            first.Form_Load("xml=" + in + "a.xml q mdb=" + in + (c.hasDatabase ? "old.mdb" : "other.mdb"));
            EXPECT_EQ(first.Convert().convertedFiles, 1);
        }
        const std::string before = c.hasDatabase ? testing::ReadFile(folder / "old.mdb") : "";
        testing::ScriptedHost host;
        Application application(host);
        application.Form_Load("xml=" + in + "a.xml q mdb=" + in + "old.mdb log=" + in + "log " + c.options);
        const RunOutcome outcome = application.Convert();
        EXPECT_EQ(outcome.nothingToDo, c.refused) << ::testing::PrintToString(host.lines);
        EXPECT_EQ(outcome.convertedFiles, c.refused ? 0 : 1);
        const std::string log = testing::ReadFile(folder / "log");
        EXPECT_NE(log.find(c.said), std::string::npos) << log;
        EXPECT_EQ(log.find("secret"), std::string::npos) << log;
        if (c.refused) {
            EXPECT_EQ(std::filesystem::exists(folder / "old.mdb") ? testing::ReadFile(folder / "old.mdb") : "", before);
        }
    }
}

TEST(Application, ARefusalIsInTheLogUnlessTheLogIsTheReason)
{
    const testing::TempFolder folder;
    const std::string in = folder.Path().string() + "/";
    testing::WriteFile(folder / "a.xml", "<a><b>1</b></a>");
    for (const bool safe : {true, false}) {
        testing::ScriptedHost host;
        Application application(host);
        application.Form_Load("q xml=" + in + "a.xml mdb=" + in + "a.xml log=" + in + (safe ? "log" : "a.xml"));
        EXPECT_TRUE(application.Convert().nothingToDo);
    }
    EXPECT_NE(testing::ReadFile(folder / "log").find("is also the XML file"), std::string::npos);
    EXPECT_EQ(testing::ReadFile(folder / "a.xml"), "<a><b>1</b></a>");
}

} // namespace
} // namespace velmora
