#pragma once

#include "app/application.h"
#include "ui/conversion.h"
#include "ui/desktop.h"
#include "ui/launchers.h"
#include "ui/window_host.h"

#include <QMainWindow>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>
#include <string_view>

class QMessageBox;
class QTabWidget;

namespace velmora {

class AboutPage;
class ButtonRow;
class CommandLineWindow;
class ControlsForm;
class ConverterPage;
class LeftOutWindow;
class MappingPage;
class PreviewWindow;
class ProgressPage;
class RunStatusBar;
class StructurePage;

/// The main window: five pages over the state of one application, the buttons that begin and end a run, and what the
/// last run did.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    /// With another `desktop` for tests; null: the one that is there.
    explicit MainWindow(std::unique_ptr<Desktop> desktop = nullptr);
    ~MainWindow() override;

    /// Fills every control by the raw command line and shows the state. Throws CommandLineError.
    void Form_Load(std::string_view commandLine);
    /// Takes the size and the page that it had last, and keeps them from now on. No test does.
    void Remember();
    /// The buttons "Convert" and "Exit", which is "Cancel" while a run goes on.
    void btnConvert_Click();
    void btnQuit_Click();
    /// A run that is only tried out, whatever is filled in.
    void btnPreview_Click();

    [[nodiscard]] Application& App() noexcept { return application_; }
    [[nodiscard]] const Conversion& Run() const noexcept { return conversion_; }

signals:
    /// A run has come to its end, and the window shows it.
    void RunEnded();

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void MakePages();
    void MakeSurroundings();
    void MakeShortcuts();

    /// Shows the state of the controls as it is, or as the run has handed it out.
    void Refresh(const Controls& controls);
    void ShowRunning(bool running);
    /// Draws what the run has reported since the last time.
    void Draw();
    void EndOfRun();
    void TellOutcome();
    void AskWhetherToCancel();

    void btnCommandLine_Click();
    void PressLauncher(const QString& button);
    void Look(const QString& path);
    void WriteAsXml(const QString& database, const QString& xml);
    void ShowLeftOut();
    void ShowPreview();
    void OpenJob(const QString& path);

    WindowHost host_;
    Application application_;
    Conversion conversion_;
    std::unique_ptr<Desktop> desktop_;
    Launchers launchers_;
    ControlsForm* form_;
    QTimer drawTimer_;
    QTimer checkTimer_; ///< looks at what was typed, when it has been left alone for a moment

    QTabWidget* tabs_ = nullptr;
    ConverterPage* converterPage_ = nullptr;
    MappingPage* mappingPage_ = nullptr;
    ProgressPage* progressPage_ = nullptr;
    StructurePage* structurePage_ = nullptr;
    AboutPage* aboutPage_ = nullptr;
    ButtonRow* buttons_ = nullptr;
    RunStatusBar* status_ = nullptr;
    QMessageBox* cancelQuestion_ = nullptr;
    CommandLineWindow* commandLineWindow_ = nullptr;
    LeftOutWindow* leftOutWindow_ = nullptr;
    PreviewWindow* previewWindow_ = nullptr;
    std::function<void()> openResult_;          ///< shows what the last run has written
    std::optional<Controls> beforeWayBack_{};   ///< what was filled in, while the menu's own run goes on
    std::optional<CheckState> beforePreview_{}; ///< of its check box, while the button's run goes on
    int shownPage_ = 0;                         ///< that the state last asked for
    bool isCancelling_ = false;                 ///< the person has said so, the run has not ended yet
    bool closesAtEnd_ = false;
    bool remembers_ = false;
};

} // namespace velmora
