#include "app/application.h"

#include "settings/command_line_split.h"
#include "support/scripted_host.h"

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

} // namespace
} // namespace velmora
