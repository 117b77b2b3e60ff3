#include "ui/window_fixture.h"

#include <QLineEdit>

#include <filesystem>

namespace velmora::testing {
namespace {

TEST_F(WindowTest, PickersFillTheirBoxes)
{
    struct Case {
        const char* button;
        const char* box;
        const char* title;
        const char* filter;
        const char* suffix;
        const char* afterCancel;
    };
    const Case cases[] = {
        {"btnFindXML", "txtFILE_XML", "Select XML File to be loaded", "XML (*.xml)|*.xml|All Files (*.*)|*.*", ".xml",
         "/some/where"},
        {"btnFindMDB", "txtFILE_MDB", "Select MDB for export", "MS Access Database (*.mdb)|*.mdb|All Files (*.*)|*.*",
         ".mdb", "/some/where"},
        {"btnFindLOG", "txtFILE_LOG", "Select file for logging", "*.log|*.log|*.txt|*.txt|All Files (*.*)|*.*", ".log",
         "/some/where"},
        {"btnFindTXT", "txtFILE_TXT", "Folder for export of text files (tarnwick)", "", "", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.button);
        desktop.answers = {"/some/where"};
        Click(c.button);
        EXPECT_EQ(Get<QLineEdit>(c.box).text(), "/some/where");
        EXPECT_EQ(desktop.questions.back().title, c.title);
        EXPECT_EQ(desktop.questions.back().filter, c.filter);
        EXPECT_EQ(desktop.questions.back().suffix, c.suffix);
        Click(c.button);
        EXPECT_EQ(Get<QLineEdit>(c.box).text(), c.afterCancel);
    }
}

TEST_F(WindowTest, LaunchersOpenWhatTheBoxesName)
{
    WriteFile(folder / "a.mdb", "x");
    const std::string there = Path("a.mdb"), missing = Path("none.mdb"), nowhere = Path("no/folder/a.mdb");
    struct Case {
        const char* what;
        std::string box;
        std::string started;
    };
    const Case cases[] = {
        {"a file that is there", there, "/usr/bin/viewer " + there},
        {"one that is not", missing, "/usr/bin/launch x.desktop"},
        {"none", "", "/usr/bin/launch x.desktop"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        desktop.started.clear();
        Type("txtFILE_MDB", QString::fromStdString(c.box));
        Click("btnMS_ACCESS");
        EXPECT_EQ(desktop.started.join('|').toStdString(), c.started);
        EXPECT_TRUE(desktop.fileWasThere) << "a look-up needs a file";
    }
    EXPECT_FALSE(std::filesystem::exists(missing)) << "no placeholder stays behind";

    desktop.started.clear();
    desktop.associated = "Error: No Association";
    Type("txtFILE_MDB", QString::fromStdString(there));
    AnswerNextBox("OK");
    Click("btnMS_ACCESS");
    EXPECT_EQ(boxText, "Error: No Association");
    Type("txtFILE_MDB", QString::fromStdString(nowhere));
    AnswerNextBox("OK");
    Click("btnMS_ACCESS");
    EXPECT_EQ(boxText.toStdString(), "The file " + nowhere + " could not be found or created!");
    EXPECT_TRUE(desktop.started.isEmpty());

    desktop.associated = "/usr/bin/viewer";
    Click("btnOPEN_DIRECTORY");
    EXPECT_EQ(desktop.started.back().toStdString(), "/usr/bin/viewer " + folder.Path().string() + "/")
        << "the nearest folder that is there";
}

} // namespace
} // namespace velmora::testing
