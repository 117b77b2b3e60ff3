#include "ui/window_fixture.h"

#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTimer>

#include <filesystem>

namespace velmora::testing {

QString ScriptedDesktop::AskForFile(const FileQuestion& question)
{
    questions.push_back(question);
    if (answers.empty())
        return {};
    const QString answer = answers.front();
    answers.pop_front();
    return answer;
}

std::string ScriptedDesktop::AssociatedProgram(const std::string& file)
{
    fileWasThere = std::filesystem::exists(file);
    return associated;
}

QStringList ScriptedDesktop::ProgramAlone(const std::string& file)
{
    fileWasThere = std::filesystem::exists(file);
    return alone;
}

bool ScriptedDesktop::Start(const QString& program, const QStringList& arguments)
{
    started.append((QStringList{program} + arguments).join(' '));
    return true;
}

WindowTest::WindowTest() : WindowTest(std::make_unique<ScriptedDesktop>()) {}

WindowTest::WindowTest(std::unique_ptr<ScriptedDesktop> scripted) : desktop(*scripted), window(std::move(scripted))
{
    window.Form_Load("");
    window.show();
}

WindowTest::~WindowTest() = default;

void WindowTest::Click(const char* name)
{
    auto& button = Get<QAbstractButton>(name);
    EXPECT_TRUE(button.isEnabled() && button.isVisible()) << name << " cannot be clicked";
    button.click();
}

void WindowTest::Type(const char* name, const QString& text)
{
    auto& edit = Get<QLineEdit>(name);
    EXPECT_TRUE(edit.isEnabled()) << name << " takes no text";
    edit.selectAll();
    QTest::keyClick(&edit, Qt::Key_Delete);
    QTest::keyClicks(&edit, text);
}

void WindowTest::TurnToPage(int page)
{
    Get<QTabWidget>("tabMain").setCurrentIndex(page);
}

void WindowTest::WhenAsked(std::function<void(QWidget&)> action)
{
    auto* timer = new QTimer(&window);
    QObject::connect(timer, &QTimer::timeout, &window, [timer, action = std::move(action)] {
        QWidget* box = QApplication::activeModalWidget();
        if (box == nullptr)
            return;
        timer->stop();
        timer->deleteLater();
        action(*box);
    });
    timer->start(5);
}

void WindowTest::AnswerNextBox(const QString& button)
{
    WhenAsked([this, button](QWidget& widget) {
        auto* box = qobject_cast<QMessageBox*>(&widget);
        ASSERT_NE(box, nullptr);
        EXPECT_EQ(box->windowTitle(), "velmora   tarnwick");
        boxText = box->text();
        for (QAbstractButton* candidate : box->buttons())
            if (candidate->text().remove('&') == button) {
                candidate->click();
                return;
            }
        ADD_FAILURE() << "no button " << button.toStdString();
        box->reject();
    });
}

void WindowTest::Convert()
{
    QSignalSpy ended(&window, &MainWindow::RunEnded);
    Click("btnConvert");
    EXPECT_TRUE(ended.count() > 0 || ended.wait(kPatience));
}

QString WindowTest::Protocol()
{
    return Get<QPlainTextEdit>("txtPROT").toPlainText();
}

} // namespace velmora::testing
