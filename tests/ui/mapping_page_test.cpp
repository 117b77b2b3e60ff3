#include "ui/window_fixture.h"

#include <QLineEdit>
#include <QListWidget>

namespace velmora::testing {
namespace {

class MappingPageTest : public WindowTest {
protected:
    MappingPageTest() { TurnToPage(1); }

    QListWidget& List() { return Get<QListWidget>("lstMAPPING"); }
    /// The lines, joined; the selected one begins with "*".
    QString Lines()
    {
        QStringList lines;
        for (int i = 0; i < List().count(); ++i)
            lines.append((i == List().currentRow() ? "*" : "") + List().item(i)->text());
        return lines.join('|').replace("--- Click here to add a new mapping ---", "add");
    }
    void ClickLine(int line)
    {
        QTest::mouseClick(List().viewport(), Qt::LeftButton, {}, List().visualItemRect(List().item(line)).center());
    }
    QString Boxes() { return Get<QLineEdit>("txtTAG").text() + "," + Get<QLineEdit>("txtCOLUMN").text(); }
};

TEST_F(MappingPageTest, EditsAtEveryKeystroke)
{
    EXPECT_EQ(List().item(0)->text(), "--- Click here to add a new mapping ---");
    EXPECT_FALSE(IsEnabled("btnREMOVE_PAIR"));
    Type("txtTAG", "a");
    EXPECT_EQ(Lines(), "*<a>  -->  []|add") << "the first keystroke makes the first entry";
    Type("txtCOLUMN", "One");
    EXPECT_EQ(Lines(), "*<a>  -->  [One]|add");
    ClickLine(1);
    ClickLine(2);
    EXPECT_EQ(Lines(), "<a>  -->  [One]|<>  -->  []|*<>  -->  []|add") << "two clicks, two blank entries";
    EXPECT_EQ(Boxes(), ",");
    Type("txtTAG", "c");
    ClickLine(0);
    EXPECT_EQ(Boxes(), "a,One");
    Click("btnREMOVE_PAIR");
    EXPECT_EQ(Lines(), "*<>  -->  []|<c>  -->  []|add") << "the selection stays at its place";
    List().setCurrentRow(2);
    Type("txtTAG", "x");
    EXPECT_EQ(Lines(), "<>  -->  []|<c>  -->  []|*add") << "typing on the line for adding changes nothing";
    Click("btnREMOVE_PAIR");
    EXPECT_EQ(Lines(), "*<>  -->  []|add") << "removing there takes the last entry";
    Type("txtTAG", "last");
    Click("btnREMOVE_PAIR");
    EXPECT_EQ(Lines(), "add");
    EXPECT_EQ(Boxes(), "last,") << "the boxes keep their text";
    List().setCurrentRow(0);
    Click("btnREMOVE_PAIR");
    EXPECT_EQ(Lines(), "*add") << "nothing to remove";
    ClickLine(0);
    EXPECT_EQ(Lines(), "*<last>  -->  []|add") << "the first entry takes what was typed before";
}

TEST_F(MappingPageTest, SavesAndOpensAfterACancelToo)
{
    AnswerNextBox("OK");
    Click("btnMappingSave");
    EXPECT_EQ(boxText, "There is no mapping to be saved!");

    Type("txtTAG", "a");
    Type("txtCOLUMN", "One");
    ClickLine(1);
    WriteFile(folder / "old.tsv", "old");
    const QString old = QString::fromStdString(Path("old.tsv"));
    const QString fresh = QString::fromStdString(Path("new.tsv"));
    desktop.answers = {old, fresh};
    AnswerNextBox("No");
    Click("btnMappingSave");
    EXPECT_EQ(boxText, "The file already exists.\r\nDo you want to owerwrite it?");
    EXPECT_EQ(desktop.questions.front().title, "Save Mapping");
    EXPECT_EQ(desktop.questions.front().filter, "Tab Separated Values (*.tsv)|*.tsv|All Files (*.*)|*.*");
    EXPECT_EQ(ReadFile(folder / "old.tsv"), "old");
    EXPECT_EQ(ReadFile(folder / "new.tsv"), "a\tOne\r\n") << "blank entries are not saved";
    EXPECT_EQ(Get<QLineEdit>("txtFILE_MAPPING").text(), fresh);
    desktop.answers = {old};
    AnswerNextBox("Yes");
    Click("btnMappingSave");
    EXPECT_EQ(ReadFile(folder / "old.tsv"), "a\tOne\r\n");

    window.App().GetJob().settings.blAbort = true; // as a cancelled run leaves it
    WriteFile(folder / "two.tsv", "b\tTwo\r\nc\tThree\r\n");
    desktop.answers = {QString::fromStdString(Path("two.tsv"))};
    Click("btnMappingOpen");
    EXPECT_EQ(desktop.questions.back().title, "Open mapping");
    EXPECT_EQ(desktop.questions.back().start, old);
    EXPECT_EQ(Lines(), "<b>  -->  [Two]|<c>  -->  [Three]|add");
}

} // namespace
} // namespace velmora::testing
