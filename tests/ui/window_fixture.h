#pragma once

#include "support/shared.h"
#include "ui/main_window.h"

#include <QAbstractButton>
#include <QStringList>
#include <QTest>
#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <memory>
#include <string>

namespace velmora::testing {

/// Milliseconds after which a test gives up waiting for something. Never how long something takes.
inline constexpr int kPatience = 120'000;

/// A desktop that answers from a script and starts nothing.
class ScriptedDesktop : public Desktop {
public:
    std::deque<QString> answers;                       ///< to dialogs, in order; empty when none are left
    std::vector<FileQuestion> questions;               ///< that were asked
    QStringList started;                               ///< program and arguments, joined by a blank
    std::string associated = "/usr/bin/viewer";        ///< AssociatedProgram
    QStringList alone{"/usr/bin/launch", "x.desktop"}; ///< ProgramAlone
    bool fileWasThere = false;                         ///< when either was asked

    QString AskForFile(const FileQuestion& question) override;
    QString AskForNewFile(const FileQuestion& question) override { return AskForFile(question); }
    QString AskForFolder(const QString& title, const QString& start) override
    {
        return AskForFile({title, {}, {}, start});
    }
    std::string AssociatedProgram(const std::string& file) override;
    QStringList ProgramAlone(const std::string& file) override;
    bool Start(const QString& program, const QStringList& arguments) override;
};

/// The main window, shown offscreen, and what a person does with it.
class WindowTest : public ::testing::Test {
protected:
    WindowTest();
    ~WindowTest() override;

    /// The widget of that name.
    template <class Widget>
    Widget& Get(const char* name)
    {
        auto* widget = window.findChild<Widget*>(name);
        if (widget == nullptr)
            throw std::runtime_error(std::string("no widget ") + name);
        return *widget;
    }
    [[nodiscard]] bool IsEnabled(const char* name) { return Get<QWidget>(name).isEnabled(); }
    [[nodiscard]] Controls& State() { return window.App().GetJob().controls; }

    void Click(const char* name);
    /// Replaces what stands in the field, key by key.
    void Type(const char* name, const QString& text);
    void TurnToPage(int page);
    /// The next box or dialog that comes up is handled by `action`.
    void WhenAsked(std::function<void(QWidget&)> action);
    /// The next message box is answered by the button with this text; its text goes to `boxText`.
    void AnswerNextBox(const QString& button);
    /// Presses Convert and waits for the run's end.
    void Convert();
    [[nodiscard]] QString Protocol();
    std::string Path(const char* name) { return (folder / name).string(); }

    TempFolder folder;
    ScriptedDesktop& desktop;
    MainWindow window;
    QString boxText;

private:
    explicit WindowTest(std::unique_ptr<ScriptedDesktop> scripted);
};

} // namespace velmora::testing
