#include "ui/window_fixture.h"

#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QCompleter>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QToolButton>
#include <QUrl>

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
        {"btnFindEXPORT", "txtFILE_EXPORT", "XML file to write from the database",
         "XML (*.xml)|*.xml|All Files (*.*)|*.*", ".xml", "/some/where"},
        {"btnFindLOG", "txtFILE_LOG", "Select file for logging", "*.log|*.log|*.txt|*.txt|All Files (*.*)|*.*", ".log",
         "/some/where"},
        {"btnFindTXT", "txtFILE_TXT", "Folder for export of text files (tarnwick)", "", "", ""},
    };
    Click("btnMore");
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

TEST_F(WindowTest, ShowsWhatIsWrongBesideTheField)
{
    WriteFile(folder / "a.xml", "<a/>");
    struct Case {
        std::string commandLine;
        const char* field;
        const char* problem;
    };
    const std::string good = "xml=" + Path("a.xml") + " mdb=" + Path("a.mdb");
    const Case cases[] = {
        {"xml=" + Path("b.xml"), "txtFILE_XML", "There is no such file"},
        {"xml=" + Path("b*.xml"), "txtFILE_XML", "No file matches this"},
        {"xml=" + Path("a.xml"), "txtFILE_MDB", "Name a database here, or a folder for text files below"},
        {good + " mdb=" + Path("none/a.mdb"), "txtFILE_MDB", "There is no such folder"},
        {good + " txt=" + Path("none/x"), "txtFILE_TXT", "The folder above it is missing"},
        {good + " txt=" + Path("x"), "txtDELIMITER", "Without a delimiter all values of a line run together"},
        {"export=" + Path("b.xml"), "txtFILE_MDB", "Name the database that is to be written as XML"},
        {good + " export=" + Path("b.xml"), "txtFILE_EXPORT",
         "To write XML from the database, leave source and text folder empty"},
        {"export=" + Path("a.xml"), "txtFILE_EXPORT", "The file is there, and is not to be replaced"},
        {good + " tp=a.b", "txtTABLE_PREFIX", "A name in Access holds no . ! [ ] and no backquote"},
        {good, "txtTABLE_PREFIX", ""},
        {"xml=-", "txtFILE_XML", "Standard input is read by velmora without a window: name a file here"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.commandLine);
        window.Form_Load(c.commandLine);
        const auto& field = Get<QLineEdit>(c.field);
        EXPECT_TRUE(QTest::qWaitFor([&] { return field.accessibleDescription() == c.problem; }, kPatience))
            << field.accessibleDescription().toStdString();
        EXPECT_EQ(field.findChild<QAction*>("problem") != nullptr, *c.problem != 0);
    }
}

/// The list offers what the folder has, and closes by itself where a whole file has been named.
TEST_F(WindowTest, CompletesPathsWhileTheyAreTyped)
{
    WriteFile(folder / "orders.xml", "<a/>");
    std::filesystem::create_directory(folder / "outbox");
    const QString whole = QString::fromStdString(Path("orders.xml"));
    auto& edit = Get<QLineEdit>("txtFILE_XML");
    Type("txtFILE_XML", whole.chopped(5)); // "ord"
    ASSERT_NE(edit.completer(), nullptr);
    const QAbstractItemView& list = *edit.completer()->popup();
    EXPECT_TRUE(QTest::qWaitFor([&] { return list.isVisible(); }, kPatience)) << "the folder is read meanwhile";
    EXPECT_EQ(edit.completer()->completionCount(), 1);
    QTest::keyClick(edit.completer()->popup(), Qt::Key_Down);
    QTest::keyClick(edit.completer()->popup(), Qt::Key_Return);
    EXPECT_EQ(edit.text(), whole);
    EXPECT_EQ(State().txtFILE_XML.text, whole.toStdString());
    Type("txtFILE_XML", whole);
    EXPECT_FALSE(list.isVisible());
}

TEST_F(WindowTest, OffersTheCodesOfARenamePattern)
{
    Type("txtFILE_XML_RENAMED", "old_.xml");
    Get<QLineEdit>("txtFILE_XML_RENAMED").setCursorPosition(4);
    for (QAction* action : Get<QToolButton>("btnRenameCodes").menu()->actions())
        if (action->text().startsWith("%f%\t"))
            action->trigger();
    EXPECT_EQ(Get<QLineEdit>("txtFILE_XML_RENAMED").text(), "old_%f%.xml");
    EXPECT_EQ(State().txtFILE_XML_RENAMED.text, "old_%f%.xml");
}

TEST_F(WindowTest, TakesDroppedFilesAndKeepsJobsAsFiles)
{
    for (const char* name : {"prod_1.xml", "prod_2.xml", "other.xml"})
        WriteFile(folder / name, "<a/>");
    const auto drop = [&](std::initializer_list<const char*> names) {
        QMimeData data;
        QList<QUrl> urls;
        for (const char* name : names)
            urls.append(QUrl::fromLocalFile(QString::fromStdString(Path(name))));
        data.setUrls(urls);
        QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&window, &enter);
        QDropEvent event(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&window, &event);
    };
    drop({"prod_1.xml", "prod_2.xml"});
    EXPECT_EQ(State().txtFILE_XML.text, Path("prod_*.xml"));
    drop({"prod_1.xml", "other.xml"});
    EXPECT_FALSE(Get<QLabel>("lblStatus").text().isEmpty()) << "no pattern names just these";
    drop({"."});
    EXPECT_EQ(State().txtFILE_XML.text, Path(".") + "/*.xml");
    drop({"a.mdb"});
    EXPECT_EQ(State().txtFILE_MDB.text, Path("a.mdb"));

    window.Form_Load("url=http://me:secret@x/ auth=me pwd=secret mdb=\"my file.mdb\" -relations");
    const auto choose = [&](int action) {
        desktop.answers = {QString::fromStdString(Path("a.velmora"))};
        Get<QPushButton>("btnJob").menu()->actions().at(action)->trigger();
    };
    choose(1);
    EXPECT_EQ(ReadFile(folder / "a.velmora").find("secret"), std::string::npos);
    window.Form_Load("");
    choose(0);
    EXPECT_EQ(State().txtFILE_MDB.text, "my file.mdb");
    EXPECT_EQ(State().txtXML_USER.text, "me");
    EXPECT_FALSE(State().chkCreateTableRelations.Checked());
}

} // namespace
} // namespace velmora::testing
