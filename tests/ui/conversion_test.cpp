#include "ui/progress_page.h"
#include "ui/window_fixture.h"

#include <QAction>
#include <QGraphicsView>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTableWidget>

#include <utility>

namespace velmora::testing {
namespace {

std::string ManyItems(int count)
{
    std::string xml = "<items>";
    for (int i = 0; i < count; ++i)
        xml.append("<item><name>n").append(std::to_string(i)).append("</name></item>");
    return xml + "</items>";
}

TEST_F(WindowTest, ConvertsAndSaysWhatWasDone)
{
    WriteFile(folder / "a.xml",
              "<people><person id='1'><name>Ann</name></person><person><name>Bo</name></person></people>");
    Type("txtFILE_XML", QString::fromStdString(Path("a.xml")));
    Type("txtFILE_MDB", QString::fromStdString(Path("a.mdb")));
    Convert();
    EXPECT_SOUND(folder / "a.mdb");
    EXPECT_EQ(Get<QAbstractButton>("btnConvert").text(), "&Convert");
    EXPECT_EQ(Get<QTabWidget>("tabMain").currentIndex(), 0);
    EXPECT_TRUE(Get<QLabel>("lblStatus").text().startsWith("Done: 1 file, 2 tables, 3 records"))
        << Get<QLabel>("lblStatus").text().toStdString();
    EXPECT_TRUE(Protocol().section('\n', 0, 0).endsWith("Done")) << "the newest line comes first";
    EXPECT_TRUE(Protocol().contains("Approx. 4 records")) << "an estimate, of which 2 have come";
    EXPECT_EQ(Get<QProgressBar>("ProgressBar").value(), Get<QProgressBar>("ProgressBar").maximum());
    EXPECT_TRUE(Get<QPlainTextEdit>("txtXML").toPlainText().contains("//people/person/name"));
    EXPECT_EQ(State().documentTags, (std::vector<std::string>{"attr_id", "name", "people", "person"}));
    Click("btnOpenResult");
    EXPECT_NE(window.findChild<QWidget*>("frmBrowser"), nullptr);
}

TEST_F(WindowTest, ShowsWhatAConversionWouldDo)
{
    WriteFile(folder / "a.xml", "<people>lost<person id='1'><name>Ann</name></person><person/></people>");
    window.Form_Load("txt=" + Path("out") + " xml=" + Path("a.xml") + " delimiter=;");
    for (const bool isSecond : {false, true}) {
        QSignalSpy ended(&window, &MainWindow::RunEnded);
        Click("btnPreview");
        EXPECT_FALSE(IsEnabled("btnPreview") || IsEnabled("btnConvert"));
        ASSERT_TRUE(ended.wait(kPatience));
        EXPECT_FALSE(std::filesystem::exists(folder / "out"));
        EXPECT_TRUE(Get<QLabel>("lblStatus").text().startsWith("A run would leave something behind: 1 file, 2 tables"));
        EXPECT_TRUE(Get<QWidget>("frmPreview").isVisible());
        EXPECT_TRUE(
            Get<QPlainTextEdit>("txtPREVIEW").toPlainText().contains("person, new: 1 record, belongs to people"));
        EXPECT_GT(Get<QWidget>("frmPreview").findChild<QGraphicsView*>()->scene()->items().size(), 2);
        EXPECT_TRUE(State().txtFILE_MDB.text.empty());
        Click("btnClosePreview");
        if (isSecond) {
            Click("btnOpenResult");
            EXPECT_TRUE(Get<QWidget>("frmPreview").isVisible());
        }
    }
    Convert();
    EXPECT_TRUE(std::filesystem::exists(folder / "out" / "person.txt")) << "the button has left nothing behind";
}

TEST_F(WindowTest, DoesNotWaitForStandardInput)
{
    window.Form_Load("xml=- mdb=" + Path("a.mdb"));
    Convert();
    EXPECT_TRUE(Protocol().contains("Standard input (xml=-) is read by velmora without a window"));
    EXPECT_TRUE(Get<QLabel>("lblStatus").text().startsWith("Nothing was converted"));
}

TEST_F(WindowTest, TellsHowMuchIsRead)
{
    WindowHost host(window);
    auto& page = *window.findChild<ProgressPage*>();
    const auto shown = [&](std::int64_t total) {
        host.SetProgressRange(ProgressBarId::Bytes, total);
        page.ShowProgress(host.Progress(), 3'000);
        return Get<QLabel>("lblTime").text().toStdString();
    };
    host.SetProgress(ProgressBarId::Bytes, 5'000'000);
    EXPECT_EQ(shown(10'000'000), "00:03 elapsed, 5.0 MB of 10.0 MB read");
    EXPECT_EQ(shown(0), "00:03 elapsed, 5.0 MB read");
    host.SetProgress(ProgressBarId::Records, 1);
    EXPECT_EQ(shown(10'000'000), "00:03 elapsed");
}

/// The question comes at once, wherever the run is, and the run stands still while it is open: neither answer depends
/// on how fast things go.
TEST_F(WindowTest, CancelsWhenConfirmedAndGoesOnWhenNot)
{
    WriteFile(folder / "a.xml", ManyItems(30'000));
    window.Form_Load("xml=" + Path("a.xml") + " mdb=" + Path("a.mdb"));
    for (const bool confirmed : {false, true}) {
        SCOPED_TRACE(confirmed);
        QSignalSpy ended(&window, &MainWindow::RunEnded);
        window.btnConvert_Click();
        window.btnQuit_Click();
        EXPECT_EQ(Get<QAbstractButton>("btnConvert").text(), "Working...");
        EXPECT_EQ(Get<QAbstractButton>("btnQuit").text(), "Canc&el");
        EXPECT_FALSE(IsEnabled("txtFILE_XML") || IsEnabled("btnConvert") || IsEnabled("lstMAPPING"));
        auto* question = window.findChild<QMessageBox*>("cancelQuestion");
        ASSERT_NE(question, nullptr);
        EXPECT_EQ(question->text(), "Conversion is running. Do you really want to cancel it?");
        EXPECT_EQ(question->defaultButton(), question->button(QMessageBox::Cancel));
        question->button(confirmed ? QMessageBox::Ok : QMessageBox::Cancel)->click();
        EXPECT_EQ(Get<QAbstractButton>("btnQuit").text(), confirmed ? "Cancelling..." : "Canc&el");
        EXPECT_TRUE(ended.wait(kPatience));
        EXPECT_EQ(Protocol().contains("Operation cancelled by user"), confirmed);
        EXPECT_TRUE(Get<QLabel>("lblStatus").text().startsWith(confirmed ? "Cancelled" : "Done: 1 file"))
            << Get<QLabel>("lblStatus").text().toStdString();
        EXPECT_TRUE(IsEnabled("txtFILE_XML"));
    }
    EXPECT_SOUND(folder / "a.mdb");
}

/// By whichever rules the document was imported.
TEST_F(WindowTest, DescribesTheStructureAndOffersItsNames)
{
    std::string xml = "<a>";
    for (int i = 0; i < 1234; ++i)
        xml += "<grün id='x'>7</grün>";
    WriteFile(folder / "a.xml", xml + "<b>text</b></a>");
    for (const auto& [rules, table] : {std::pair("-complete", "11"), std::pair("+complete", "1 ")}) {
        SCOPED_TRACE(rules);
        window.Form_Load("xml=" + Path("a.xml") + " mdb=" + Path("a.mdb") + " " + rules);
        Convert();
        EXPECT_EQ(Get<QPlainTextEdit>("txtXML").toPlainText().section('\n', 0, 6).toStdString(),
                  std::string("        Level\n"
                              "        |   Children\n"
                              "        |   |     Siblings\n"
                              "        |   |     |    Attributes\n"
                              "        |   |     |    |   Type             Name    XPath\n"
                              "---------------------------------------------------------\n") +
                      table + "      0   1235  0    0   Num(0)           a       //a");
        EXPECT_TRUE(Get<QPlainTextEdit>("txtXML").toPlainText().contains(
            "      1   0     1233 1   Num(7)           grün    //a/grün\n0       2   0     0    0   Str(1) "));
        EXPECT_EQ(State().documentTags, (std::vector<std::string>{"a", "attr_id", "b", "grün"}));
    }
}

TEST_F(WindowTest, WritesADatabaseAsXmlAndKeepsWhatIsFilledIn)
{
    WriteFile(folder / "a.xml", "<a><b id='7'>text<c>1</c></b></a>");
    window.Form_Load("+complete xml=" + Path("a.xml") + " mdb=" + Path("a.mdb"));
    Convert();
    WriteFile(folder / "b.xml", "old");
    const auto writeAsXml = [&](const char* answer) {
        desktop.answers = {QString::fromStdString(Path("a.mdb")), QString::fromStdString(Path("b.xml"))};
        AnswerNextBox(answer);
        for (QAction* action : Get<QPushButton>("btnJob").menu()->actions())
            if (action->text() == "&Write a database as XML…")
                action->trigger();
    };
    writeAsXml("Cancel");
    EXPECT_EQ(boxText, "The file already exists.\r\nDo you want to owerwrite it?");
    EXPECT_EQ(ReadFile(folder / "b.xml"), "old");
    QSignalSpy ended(&window, &MainWindow::RunEnded);
    writeAsXml("Yes");
    EXPECT_TRUE(ended.wait(kPatience));
    EXPECT_NE(ReadFile(folder / "b.xml").find("<b id=\"7\">text<c>1</c></b>"), std::string::npos)
        << ReadFile(folder / "b.xml");
    EXPECT_TRUE(Get<QLabel>("lblStatus").text().startsWith("Done: the database was written as XML"))
        << Get<QLabel>("lblStatus").text().toStdString();
    Click("btnOpenResult");
    EXPECT_EQ(desktop.started.join('|').toStdString(), "/usr/bin/viewer " + Path("b.xml"));
    EXPECT_EQ(Get<QLineEdit>("txtFILE_XML").text().toStdString(), Path("a.xml"));
    EXPECT_EQ(State().txtFILE_EXPORT.text, "");
}

TEST_F(WindowTest, ListsWhatWasNotImportedWithItsCure)
{
    WriteFile(folder / "a.xml", "<a><b id='7'>text<c>1</c></b></a>");
    window.Form_Load("xml=" + Path("a.xml") + " mdb=" + Path("a.mdb") + " -attributes");
    Convert();
    EXPECT_EQ(Get<QAbstractButton>("btnLeftOut").text(), "Not imported: 2…");
    TurnToPage(2);
    Click("btnLeftOutOfRun");
    const auto& table = Get<QTableWidget>("tblLeftOut");
    QStringList lines;
    for (int row = 0; row < table.rowCount(); ++row) {
        QStringList cells;
        for (int column = 0; column < table.columnCount(); ++column)
            cells.append(table.item(row, column)->text());
        lines.append(cells.join('|'));
    }
    EXPECT_EQ(lines.join('\n').toStdString(),
              "//a/b/attr_id|1|attributes are left out (-attributes)|\"7\"|Check “Import Attributes”\n"
              "//a/b|1|text beside child elements|\"text\"|Check “Import every value”");
}

TEST_F(WindowTest, AsksForAMissingDelimiter)
{
    WriteFile(folder / "a.xml", "<a><b><c>1</c><d>2</d></b></a>");
    window.Form_Load("xml=" + Path("a.xml") + " txt=" + Path("out") + " mdb=" + Path("a.mdb"));
    WhenAsked([](QWidget& widget) {
        auto* dialog = qobject_cast<QInputDialog*>(&widget);
        ASSERT_NE(dialog, nullptr);
        EXPECT_EQ(dialog->windowTitle(), "Delimiter");
        dialog->setTextValue(";");
        dialog->accept();
    });
    Convert();
    EXPECT_EQ(Get<QLineEdit>("txtDELIMITER").text(), ";");
    EXPECT_NE(ReadFile(folder / "out" / "b.txt").find("1;2"), std::string::npos);
}

TEST_F(WindowTest, ShowsAnErrorInABoxAndInTheStatusBar)
{
    WriteFile(folder / "a.xml", "<a><b/></a>");
    WriteFile(folder / "taken", "");
    window.Form_Load("xml=" + Path("a.xml") + " mdb=" + Path("a.mdb") + " log=" + Path("taken/a.log"));
    AnswerNextBox("OK");
    Convert();
    EXPECT_TRUE(boxText.startsWith("An Error has occured!")) << boxText.toStdString();
    EXPECT_TRUE(Get<QLabel>("lblStatus").text().startsWith("Error"));
}

/// A window that is closed meanwhile asks, cancels, and closes when the run has ended.
TEST_F(WindowTest, ClosesAfterACancelledRun)
{
    WriteFile(folder / "a.xml", ManyItems(30'000));
    window.Form_Load("xml=" + Path("a.xml") + " mdb=" + Path("a.mdb"));
    QSignalSpy ended(&window, &MainWindow::RunEnded);
    window.btnConvert_Click();
    window.close();
    EXPECT_TRUE(window.isVisible());
    auto* question = window.findChild<QMessageBox*>("cancelQuestion");
    ASSERT_NE(question, nullptr);
    question->button(QMessageBox::Ok)->click();
    EXPECT_TRUE(ended.wait(kPatience));
    EXPECT_FALSE(window.isVisible());
}

} // namespace
} // namespace velmora::testing
