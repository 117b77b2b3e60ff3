#include "ui/browser/browser_window.h"
#include "ui/browser/diagram.h"
#include "ui/browser/diagram_layout.h"
#include "ui/window_fixture.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QGraphicsScene>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableView>
#include <QTableWidget>

#include <filesystem>

namespace velmora::testing {
namespace {

class BrowserTest : public WindowTest {
protected:
    /// Converts a document and opens the browser over the result.
    BrowserWindow& Look(const std::string& xml)
    {
        WriteFile(folder / "a.xml", xml);
        window.Form_Load("xml=" + Path("a.xml") + " mdb=" + Path("a.mdb"));
        Convert();
        Click("btnOpenResult");
        auto& browser = Get<BrowserWindow>("frmBrowser");
        Wait(browser);
        return browser;
    }
    /// By the menu, over any file.
    BrowserWindow& LookAt(const std::string& file)
    {
        desktop.answers = {QString::fromStdString(file)};
        for (QAction* action : Get<QPushButton>("btnJob").menu()->actions())
            if (action->text() == "&Look at a database…")
                action->trigger();
        return Get<BrowserWindow>("frmBrowser");
    }
    static void Wait(BrowserWindow& browser)
    {
        EXPECT_TRUE(QTest::qWaitFor([&] { return !browser.IsReading(); }, kPatience));
    }
    static std::string Cell(const QTableView& view, int row, int column)
    {
        return view.model()->index(row, column).data().toString().toStdString();
    }
};

TEST_F(BrowserTest, ShowsTablesRowsAndColumnsOfWhatWasConverted)
{
    std::string xml = "<list>";
    for (int i = 0; i < 1500; ++i)
        xml.append("<item id='")
            .append(std::to_string(i))
            .append("'><name>n")
            .append(std::to_string(i))
            .append("</name></item>");
    BrowserWindow& browser = Look(xml + "</list>");
    auto& tables = Get<QTableWidget>("tblTables");
    ASSERT_EQ(tables.rowCount(), 2);
    EXPECT_EQ(tables.item(0, 0)->text(), "item");
    const auto& rows = Get<QTableView>("tblRows");
    EXPECT_EQ(rows.model()->rowCount(), 1000);
    EXPECT_EQ(Cell(rows, 0, 3), "n0");

    Get<QSpinBox>("spnPage").setValue(2);
    Wait(browser);
    EXPECT_EQ(rows.model()->rowCount(), 500);
    EXPECT_EQ(Cell(rows, 0, 3), "n1000");
    EXPECT_EQ(rows.model()->headerData(0, Qt::Vertical).toString().remove(',').toStdString(), "1001");

    Type("txtSearch", "N77");
    Click("btnFindRow");
    Wait(browser);
    EXPECT_EQ(Get<QSpinBox>("spnPage").value(), 1) << "it turns to the row's page";
    EXPECT_EQ(rows.selectionModel()->selectedRows().at(0).row(), 77);
    Click("btnCopyRows");
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), "PKEY\tFKEY\tattr_id\tname\n78\t1\t77\tn77\n");

    Get<QTabWidget>("tabBrowser").setCurrentIndex(1);
    const auto& columns = Get<QTableWidget>("tblColumns");
    EXPECT_EQ(columns.item(0, 0)->text() + columns.item(0, 3)->text(), "PKEYprimary key");
    EXPECT_EQ(columns.item(1, 3)->text(), "refers to another table");
    Get<QTabWidget>("tabBrowser").setCurrentIndex(2);
    for (const char* name : {"d.svg", "d.png"}) {
        desktop.answers = {QString::fromStdString(Path(name))};
        Click("btnSaveDiagram");
        EXPECT_GT(std::filesystem::file_size(folder / name), 1000U);
    }

    std::filesystem::resize_file(folder / "a.mdb", 4096);
    AnswerNextBox("OK");
    Get<QSpinBox>("spnPage").setValue(2);
    Wait(browser);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !boxText.isEmpty(); }, kPatience));
    EXPECT_TRUE(boxText.contains("has changed: read it again")) << boxText.toStdString();
    boxText.clear();
    AnswerNextBox("OK");
    Click("btnReload");
    EXPECT_TRUE(QTest::qWaitFor([&] { return !boxText.isEmpty(); }, kPatience)) << "a damaged file gives a message";
}

TEST_F(BrowserTest, GivesAMessageForWhatCannotBeRead)
{
    REQUIRE_SHARED(shared);
    WriteFile(folder / "no.mdb", "no database");
    const std::pair<std::string, const char*> cases[] = {
        {Path("missing.mdb"), "find"},
        {Path("no.mdb"), "recognizes"},
        {(shared / "corpus/mdb/V2000_with-password.mdb").string(), "assword"},
    };
    for (const auto& c : cases) {
        const std::string& file = c.first;
        const char* message = c.second;
        SCOPED_TRACE(file);
        boxText.clear();
        AnswerNextBox("OK");
        BrowserWindow& browser = LookAt(file);
        EXPECT_TRUE(QTest::qWaitFor([&] { return !boxText.isEmpty(); }, kPatience));
        EXPECT_TRUE(boxText.contains(message)) << boxText.toStdString();
        EXPECT_EQ(Get<QTableWidget>("tblTables").rowCount(), 0);
        delete &browser;
    }
}

TEST_F(BrowserTest, StopsASearch)
{
    std::string xml = "<list>";
    for (int i = 0; i < 5000; ++i)
        xml += "<item><name>n</name></item>";
    BrowserWindow& browser = Look(xml + "</list>");
    Type("txtSearch", "nobody");
    EXPECT_FALSE(IsEnabled("btnStop"));
    Click("btnFindRow");
    EXPECT_FALSE(IsEnabled("btnFindRow") || IsEnabled("tblTables"));
    Click("btnStop");
    Wait(browser);
    EXPECT_EQ(Get<QLabel>("lblBrowser").text(), "Stopped");
    Click("btnFindRow");
    Wait(browser);
    EXPECT_EQ(Get<QLabel>("lblBrowser").text(), "No further row has this text");
}

/// Boxes never lie on each other; a chain goes from left to right; simple trees have no crossing lines.
TEST(DiagramLayout, PutsTablesBehindThoseThatTheyReferTo)
{
    const auto contents = [](int tables, std::vector<std::pair<int, int>> relations) {
        DatabaseContents made;
        for (int i = 0; i < tables; ++i)
            made.tables.push_back({"t" + std::to_string(i)});
        for (const auto& [from, to] : relations)
            made.relations.push_back({"r", "t" + std::to_string(from), "t" + std::to_string(to)});
        return made;
    };
    struct Case {
        const char* name;
        DatabaseContents contents;
    };
    const Case cases[] = {
        {"nothing", contents(0, {})},
        {"lonely ones", contents(7, {})},
        {"a tree whose leaves come in the wrong order", contents(7, {{1, 0}, {2, 0}, {5, 1}, {3, 2}, {6, 1}, {4, 2}})},
        {"a ring and a loop", contents(4, {{0, 1}, {1, 2}, {2, 0}, {3, 3}})},
        {"two trees", contents(5, {{1, 0}, {2, 0}, {4, 3}})},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const auto boxes = LayOutDiagram(
            c.contents, [](std::size_t table) { return QSizeF(100, 20.0 + 10.0 * static_cast<double>(table)); }, 30);
        ASSERT_EQ(boxes.size(), c.contents.tables.size());
        for (std::size_t i = 0; i < boxes.size(); ++i)
            for (std::size_t j = i + 1; j < boxes.size(); ++j)
                EXPECT_FALSE(boxes[i].intersects(boxes[j])) << i << " and " << j;
    }
    const DatabaseContents& tree = cases[2].contents;
    const auto boxes = LayOutDiagram(
        tree, [](std::size_t) { return QSizeF(100, 20); }, 30);
    const auto number = [](const std::string& table) { return static_cast<std::size_t>(std::stoi(table.substr(1))); };
    for (const auto& one : tree.relations)
        for (const auto& other : tree.relations) {
            const QRectF from = boxes[number(one.table)], to = boxes[number(one.referencedTable)];
            EXPECT_GT(from.left(), to.right());
            const QRectF otherFrom = boxes[number(other.table)], otherTo = boxes[number(other.referencedTable)];
            if (from.left() == otherFrom.left()) {
                EXPECT_GE((from.top() - otherFrom.top()) * (to.top() - otherTo.top()), 0) << "lines cross";
            }
        }
}

} // namespace
} // namespace velmora::testing
