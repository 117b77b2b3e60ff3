#include "app/application.h"

#include "settings/command_line_split.h"
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

TEST(Application, LoadsTheMappingFileThatTheCommandLineNames)
{
    struct Case {
        const char* name;
        const char* content; ///< nullptr: no such file
        bool loaded;
        std::size_t entries;
    };
    const Case cases[] = {
        {"read", "a\tb\r\n", true, 1},
        {"missing", nullptr, false, 0},
        {"damaged", "a\tb\r\n\r\n", false, 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const testing::TempFolder folder;
        const std::string path = (folder / "map.tsv").string();
        if (c.content != nullptr)
            testing::WriteFile(path, c.content);
        testing::ScriptedHost host;
        Application application(host);
        application.Form_Load("q tags=" + path);
        EXPECT_EQ(application.MappingLoaded(), c.loaded);
        EXPECT_EQ(application.GetTagMap().UpperBound(), c.entries);
        EXPECT_TRUE(application.GetJob().controls.chkEnableTagMapping.Checked());
        EXPECT_TRUE(host.messages.empty()) << "an unattended run is not stopped by a box";
    }
}

} // namespace
} // namespace velmora
