#include "settings/options.h"
#include "ui/control_table.h"
#include "ui/window_fixture.h"

#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QTabWidget>
#include <QTranslator>

#include <algorithm>
#include <map>

namespace velmora::testing {
namespace {

TEST_F(WindowTest, HasTheFivePagesAndStartsAtTheSourceFile)
{
    EXPECT_EQ(window.windowTitle(), "velmora   tarnwick");
    const auto& tabs = Get<QTabWidget>("tabMain");
    QStringList titles;
    for (int i = 0; i < tabs.count(); ++i)
        titles.append(tabs.tabText(i));
    EXPECT_EQ(titles.join('|'), "Converter|Tag-mapping|Progress|XML Info|About");
    EXPECT_TRUE(window.focusWidget() == &Get<QLineEdit>("txtFILE_XML"));
}

/// Every option, whichever there are, has a control with label and explanation: moved by hand, its control has moved;
/// moved in the state, the widget has.
TEST_F(WindowTest, EveryControlMovesItsStateAndBack)
{
    Type("txtFILE_TXT", "somewhere");
    Type("txtXML_USER", "somebody");
    Click("btnMore");
    for (const ControlRow& row : ControlRows()) {
        SCOPED_TRACE(row.name);
        auto& widget = Get<QWidget>(row.name.c_str());
        EXPECT_TRUE(widget.toolTip().contains(ToolTip(*row.option))) << "it is explained";
        const auto labels = window.findChildren<QLabel*>();
        const bool isLabelled = std::any_of(labels.begin(), labels.end(), [&](const QLabel* label) {
            return label->buddy() == &widget && label->text() == row.label && !row.label.isEmpty();
        });
        const bool tellsByItself = row.option->IsSwitch() || row.name == "cboDatabase";
        EXPECT_TRUE(isLabelled || tellsByItself);
        if (const auto* check = std::get_if<CheckControl Controls::*>(&row.option->control)) {
            CheckControl& state = State().*(*check);
            if (!state.enabled || !state.visible)
                continue;
            auto& box = static_cast<QCheckBox&>(widget);
            const CheckState before = state.value;
            for (int clicks = row.isThreeState ? 3 : 2; clicks > 0; --clicks) {
                box.click();
                EXPECT_EQ(box.checkState() == Qt::Checked, state.value == CheckState::Checked);
                EXPECT_EQ(box.checkState() == Qt::PartiallyChecked, state.value == CheckState::Grey);
                EXPECT_NE(state.value == before, clicks != 1);
            }
        } else if (const auto* text = std::get_if<TextControl Controls::*>(&row.option->control)) {
            if (!(State().*(*text)).enabled)
                continue;
            Type(row.name.c_str(), "abc");
            EXPECT_EQ((State().*(*text)).text, "abc");
        } else {
            auto& box = static_cast<QComboBox&>(widget);
            QTest::keyClick(&box, Qt::Key_Down);
            EXPECT_EQ((State().*std::get<ComboControl Controls::*>(row.option->control)).selected, 1U);
        }
    }
    window.Form_Load("xml=\"a b.xml\" ver=97 -relations +skip_empty url=http://x/ pwd=p");
    EXPECT_EQ(Get<QLineEdit>("txtFILE_XML").text(), "a b.xml");
    EXPECT_EQ(Get<QComboBox>("cboDatabase").currentText(), "Access 97");
    EXPECT_FALSE(Get<QCheckBox>("chkCreateTableRelations").isChecked());
    EXPECT_EQ(Get<QTabWidget>("tabSourceType").currentIndex(), 1);
    EXPECT_EQ(Get<QLineEdit>("txtXML_PASSWORD").displayText().count('p'), 0);
}

TEST_F(WindowTest, EnablesWhatHasAnEffect)
{
    WriteFile(folder / "there.mdb", "");
    struct Case {
        std::string commandLine;
        const char* enabled;
        const char* disabled;
    };
    const Case cases[] = {
        {"", "chkRecreateDatabase cboDatabase txtKEY_PRIMARY txtKEY_FOREIGN txtATTR_PREFIX",
         "chkExtendMDB chkEmptyTables txtDELIMITER chkAPPEND chkEXPORT_COLUMN_NAMES txtXML_PASSWORD btnREMOVE_PAIR"},
        {"-recreate_database mdb=none.mdb", "chkExtendMDB chkEmptyTables cboDatabase chkCreateTableRelations", ""},
        {"-recreate_database mdb=" + Path("there.mdb"), "chkExtendMDB chkEmptyTables txtTABLE_PREFIX", "cboDatabase"},
        {"-relations -attributes", "chkOneTablePerElement", "txtKEY_PRIMARY txtKEY_FOREIGN txtATTR_PREFIX"},
        {"txt=x", "txtDELIMITER chkAPPEND chkEXPORT_COLUMN_NAMES chkQUOTED", ""},
        {"url=http://x/ auth=me", "txtXML_PASSWORD", ""},
    };
    const auto names = [](const char* list) { return QString(list).split(' ', Qt::SkipEmptyParts); };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.commandLine);
        window.Form_Load(c.commandLine);
        for (const QString& name : names(c.enabled))
            EXPECT_TRUE(IsEnabled(name.toLatin1())) << name.toStdString();
        for (const QString& name : names(c.disabled))
            EXPECT_FALSE(IsEnabled(name.toLatin1())) << name.toStdString();
    }
}

/// What can be reached with the keyboard has a name and an explanation, and no Alt letter stands twice on a page.
void ExpectNamesAndLetters(MainWindow& window)
{
    window.findChild<QAbstractButton*>("btnMore")->click();
    auto& tabs = *window.findChild<QTabWidget*>("tabMain");
    for (int page = 0; page < tabs.count(); ++page) {
        tabs.setCurrentIndex(page);
        std::map<QChar, std::string> letters;
        for (QWidget* widget : window.findChildren<QWidget*>()) {
            if (!widget->isVisible())
                continue;
            const bool isField = qobject_cast<QLineEdit*>(widget) != nullptr ||
                                 qobject_cast<QAbstractButton*>(widget) != nullptr ||
                                 qobject_cast<QComboBox*>(widget) != nullptr;
            if (isField && widget->focusPolicy() != Qt::NoFocus && !widget->objectName().startsWith("qt_")) {
                EXPECT_FALSE(widget->accessibleName().isEmpty()) << widget->objectName().toStdString();
                EXPECT_FALSE(widget->toolTip().isEmpty()) << widget->objectName().toStdString();
            }
            QString text;
            if (const auto* button = qobject_cast<QAbstractButton*>(widget))
                text = button->text();
            else if (const auto* label = qobject_cast<QLabel*>(widget); label != nullptr && label->buddy() != nullptr)
                text = label->text();
            const auto match = QRegularExpression("&([^&])").match(text);
            if (!match.hasMatch())
                continue;
            const QChar letter = match.captured(1).at(0).toUpper();
            EXPECT_EQ(letters.count(letter), 0U) << letter.toLatin1() << " twice on page " << page << ": "
                                                 << letters[letter] << ", " << text.toStdString();
            letters[letter] = text.toStdString();
        }
    }
}

TEST_F(WindowTest, CanBeUsedWithTheKeyboardAloneAndReadAloud)
{
    ExpectNamesAndLetters(window);
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window, kPatience));
    QTest::keyClick(&window, Qt::Key_2, Qt::ControlModifier);
    EXPECT_EQ(Get<QTabWidget>("tabMain").currentIndex(), 1);
}

TEST_F(WindowTest, ShowsTheConsoleProgramsCommandLineAndHidesThePassword)
{
    window.Form_Load("xml=a.xml mdb=a.mdb url=http://x/ auth=me pwd=secret");
    Click("btnCommandLine");
    const auto& text = Get<QPlainTextEdit>("txtCommandLine");
    const auto shown = [&] { return text.toPlainText().toStdString(); };
    EXPECT_NE(shown().find("/velmora xml=\"a.xml\" mdb=\"a.mdb\""), std::string::npos) << shown();
    EXPECT_EQ(shown().find("secret"), std::string::npos);
    Click("chkShowPassword");
    EXPECT_NE(shown().find("pwd=\"secret\""), std::string::npos);
    Click("btnCopyCommandLine");
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), shown());
    Type("txtFILE_XML", "b.xml");
    EXPECT_NE(shown().find("xml=\"b.xml\""), std::string::npos) << "it follows the window";
}

/// Every text two fifths longer, as other languages have it.
class LongLanguage : public QTranslator {
public:
    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char* /*context*/, const char* text, const char* /*comment*/,
                                    int /*count*/) const override
    {
        const QString english = QString::fromUtf8(text);
        return english + QString(english.size() * 2 / 5 + 1, 'm');
    }
};

TEST(Translation, LongerTextsAreNotCut)
{
    const int width = MainWindow().minimumSizeHint().width();
    LongLanguage language;
    QCoreApplication::installTranslator(&language);
    {
        MainWindow window;
        window.Form_Load("");
        window.show();
        window.findChild<QAbstractButton*>("btnMore")->click();
        window.resize(window.minimumSizeHint());
        EXPECT_GT(window.width(), width);
        EXPECT_LE(window.width(), width * 7 / 4);
        auto& tabs = *window.findChild<QTabWidget*>("tabMain");
        for (int page = 0; page < tabs.count(); ++page) {
            tabs.setCurrentIndex(page);
            QCoreApplication::processEvents();
            for (QWidget* widget : window.findChildren<QWidget*>()) {
                const auto* label = qobject_cast<QLabel*>(widget);
                const auto* button = qobject_cast<QAbstractButton*>(widget);
                const QString text = label != nullptr ? label->text() : button != nullptr ? button->text() : "";
                const bool mayBeCut = widget->objectName() == "lblStatus" || (label != nullptr && label->wordWrap());
                if (widget->isVisible() && !mayBeCut && !text.isEmpty()) {
                    EXPECT_GE(widget->width(), widget->sizeHint().width()) << text.toStdString() << " on page " << page;
                }
            }
        }
    }
    QCoreApplication::removeTranslator(&language);
}

TEST(Translation, GermanIsWholeAndHasItsOwnLetters)
{
    QTranslator german;
    ASSERT_TRUE(german.load(":/translations/velmora_de.qm"));
    // What stands below the window is translated by its English text.
    const auto expectGerman = [&](const char* context, std::string_view text) {
        EXPECT_FALSE(text.empty() ? false : german.translate(context, std::string(text).c_str()).isEmpty()) << text;
    };
    for (const ControlRow& row : ControlRows()) {
        const bool hasLabel = !row.name.starts_with('+') && !row.name.ends_with('='); // not called by its word alone
        for (const std::string_view text : {row.option->help, row.option->offHelp})
            if (hasLabel)
                expectGerman("Option", text);
    }
    for (const OptionHeading& heading : OptionHeadings())
        expectGerman("Option", heading.text);
    for (int reason = 1; !Describe(static_cast<LossReason>(reason)).empty(); ++reason)
        expectGerman("LossReason", Describe(static_cast<LossReason>(reason)));
    QCoreApplication::installTranslator(&german);
    {
        MainWindow window;
        window.Form_Load("");
        window.show();
        EXPECT_EQ(window.findChild<QTabWidget*>("tabMain")->tabText(0), "Konverter");
        EXPECT_EQ(window.findChild<QAbstractButton*>("btnConvert")->text(), "&Konvertieren");
        ExpectNamesAndLetters(window);
    }
    QCoreApplication::removeTranslator(&german);
}

} // namespace
} // namespace velmora::testing
