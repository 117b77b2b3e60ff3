#include "ui/main_window.h"

#include "mapping/tag_map_file.h"
#include "platform/paths.h"
#include "platform/program.h"
#include "ui/about_page.h"
#include "ui/command_line_window.h"
#include "ui/controls_form.h"
#include "ui/converter_page.h"
#include "ui/mapping_page.h"
#include "ui/progress_page.h"
#include "ui/run_summary.h"
#include "ui/structure_page.h"

#include <QCloseEvent>
#include <QDesktopServices>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>
#include <QStatusBar>
#include <QTabWidget>
#include <QUrl>
#include <QVBoxLayout>

#include <iterator>

namespace velmora {

namespace {

constexpr int kDrawMilliseconds = 34; // at most 30 times a second
constexpr int kStructurePage = 3;

constexpr const char* kMappingFilter = "Tab Separated Values (*.tsv)|*.tsv|All Files (*.*)|*.*";
constexpr const char* kMappingSuffix = ".tsv";

QString Caption()
{
    return QString::fromUtf8(kCaption.data(), static_cast<qsizetype>(kCaption.size()));
}

} // namespace

MainWindow::MainWindow(std::unique_ptr<Desktop> desktop)
    : host_(*this), application_(host_), conversion_(application_, host_),
      desktop_(desktop ? std::move(desktop) : std::make_unique<StandardDesktop>(this)),
      launchers_(application_.GetJob().controls, host_, *desktop_, ProgramFolder()),
      form_(new ControlsForm(application_.GetJob().controls, this))
{
    setWindowTitle(Caption());
    setObjectName("frmMain");
    host_.Watch(application_.GetJob().controls);
    MakePages();
    MakeStatusBar();
    MakeShortcuts();
    connect(form_, &ControlsForm::Changed, this, [this] {
        if (commandLineWindow_ != nullptr)
            commandLineWindow_->Refresh();
    });
    connect(&conversion_, &Conversion::Finished, this, &MainWindow::EndOfRun);
    connect(&drawTimer_, &QTimer::timeout, this, &MainWindow::Draw);
    drawTimer_.setInterval(kDrawMilliseconds);
    resize(sizeHint().boundedTo(screen()->availableSize() * 0.9));
}

MainWindow::~MainWindow() = default;

void MainWindow::MakePages()
{
    converterPage_ = new ConverterPage(*form_);
    mappingPage_ = new MappingPage(application_.GetJob(), application_.GetTagMap(), *form_);
    progressPage_ = new ProgressPage;
    structurePage_ = new StructurePage;
    aboutPage_ = new AboutPage;
    tabs_ = new QTabWidget;
    tabs_->setObjectName("tabMain");
    tabs_->setAccessibleName(tr("Pages"));
    // Pages keep the names by which manuals know them.
    tabs_->addTab(converterPage_, tr("Converter"));
    tabs_->addTab(mappingPage_, tr("Tag-mapping"));
    tabs_->addTab(progressPage_, tr("Progress"));
    tabs_->addTab(structurePage_, tr("XML Info"));
    tabs_->addTab(aboutPage_, tr("About"));
    connect(converterPage_, &ConverterPage::ButtonPressed, this, &MainWindow::PressLauncher);
    connect(mappingPage_, &MappingPage::OpenPressed, this, &MainWindow::btnMappingOpen_Click);
    connect(mappingPage_, &MappingPage::SavePressed, this, &MainWindow::btnMappingSave_Click);

    auto* central = new QWidget;
    auto* column = new QVBoxLayout(central);
    column->addWidget(tabs_, 1);
    column->addWidget(MakeBottomRow());
    setCentralWidget(central);
}

QWidget* MainWindow::MakeBottomRow()
{
    const auto button = [](const char* name, const QString& text, const QString& explanation) {
        auto* made = new QPushButton(text);
        made->setObjectName(name);
        made->setToolTip(explanation);
        made->setAccessibleName(PlainLabel(text));
        return made;
    };
    commandLine_ =
        button("btnCommandLine", tr("Command &Line…"), tr("The command line that does the same without a window"));
    openDirectory_ = button("btnOPEN_DIRECTORY", tr("&Open folder"), tr("Open the folder of the target or the source"));
    convert_ = button("btnConvert", tr("&Convert"), tr("Convert what is named on the first page (F5)"));
    quit_ = button("btnQuit", tr("E&xit"), tr("Close the window; while a conversion is running, cancel it"));
    convert_->setDefault(true);
    connect(commandLine_, &QPushButton::clicked, this, &MainWindow::btnCommandLine_Click);
    connect(openDirectory_, &QPushButton::clicked, this, [this] { PressLauncher("btnOPEN_DIRECTORY"); });
    connect(convert_, &QPushButton::clicked, this, &MainWindow::btnConvert_Click);
    connect(quit_, &QPushButton::clicked, this, &MainWindow::btnQuit_Click);

    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(commandLine_);
    layout->addWidget(openDirectory_);
    layout->addStretch();
    layout->addWidget(convert_);
    layout->addWidget(quit_);
    return row;
}

void MainWindow::MakeStatusBar()
{
    status_ = new QLabel;
    status_->setObjectName("lblStatus");
    status_->setTextFormat(Qt::PlainText);
    openResult_ = new QPushButton(tr("Open the result"));
    openResult_->setObjectName("btnOpenResult");
    openResult_->setToolTip(tr("Show what the last conversion has written"));
    openResult_->setAccessibleName(openResult_->text());
    openResult_->hide();
    connect(openResult_, &QPushButton::clicked, this, &MainWindow::OpenResult);
    statusBar()->addWidget(status_, 1);
    statusBar()->addPermanentWidget(openResult_);
}

void MainWindow::MakeShortcuts()
{
    const auto shortcut = [this](const QKeySequence& keys, auto action) {
        connect(new QShortcut(keys, this), &QShortcut::activated, this, action);
    };
    for (int page = 0; page < tabs_->count(); ++page)
        shortcut(QKeySequence(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + page)),
                 [this, page] { tabs_->setCurrentIndex(page); });
    const auto whenIdle = [this](auto action) {
        return [this, action] {
            if (!conversion_.IsRunning())
                action();
        };
    };
    shortcut(QKeySequence::Open, whenIdle([this] { PressLauncher("btnFindXML"); }));
    shortcut(Qt::Key_F5, [this] { convert_->click(); });
    shortcut(QKeySequence(Qt::CTRL | Qt::Key_Return), [this] { convert_->click(); });
    shortcut(Qt::Key_Escape, [this] {
        if (conversion_.IsRunning())
            btnQuit_Click();
    });
    shortcut(QKeySequence(Qt::CTRL | Qt::Key_Q), [this] { btnQuit_Click(); });
    shortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C), whenIdle([this] { btnCommandLine_Click(); }));
    shortcut(QKeySequence::Find, [this] {
        tabs_->setCurrentIndex(kStructurePage);
        structurePage_->FocusSearch();
    });
    shortcut(QKeySequence::HelpContents, [this] { OpenManual(); });
}

void MainWindow::Form_Load(std::string_view commandLine)
{
    application_.Form_Load(commandLine);
    static_cast<void>(host_.TakeControls());
    mappingPage_->Redraw();
    progressPage_->Clear();
    progressPage_->AddLines(host_.TakeLines());
    Refresh(application_.GetJob().controls);
    converterPage_->FocusFirst();
}

void MainWindow::Refresh(const Controls& controls)
{
    form_->Refresh(controls);
    converterPage_->Refresh(controls);
    mappingPage_->Refresh(controls);
    structurePage_->Refresh(controls);
    aboutPage_->Refresh(controls);
    ShowCaptions(controls);
    // The person may look at other pages meanwhile: only a change by the run turns to one.
    if (shownPage_ != controls.tabMain) {
        shownPage_ = controls.tabMain;
        tabs_->setCurrentIndex(controls.tabMain);
    }
}

void MainWindow::ShowCaptions(const Controls& controls)
{
    const bool running = !controls.btnConvertEnabled;
    convert_->setText(running ? tr("Working...") : tr("&Convert"));
    convert_->setEnabled(!running);
    quit_->setText(!running ? tr("E&xit") : isCancelling_ ? tr("Cancelling...") : tr("Canc&el"));
    quit_->setEnabled(!isCancelling_);
    quit_->setAccessibleName(PlainLabel(quit_->text()));
    EnableForRun(running);
}

void MainWindow::EnableForRun(bool running)
{
    // While a run goes on, the state is its own.
    converterPage_->setEnabled(!running);
    mappingPage_->setEnabled(!running);
    commandLine_->setEnabled(!running);
    openDirectory_->setEnabled(!running);
    openResult_->setEnabled(!running);
}

void MainWindow::btnConvert_Click()
{
    if (conversion_.IsRunning())
        return;
    status_->clear();
    openResult_->hide();
    progressPage_->Clear();
    isCancelling_ = false;
    // Shown at once, without waiting for the run to say so.
    convert_->setText(tr("Working..."));
    convert_->setEnabled(false);
    quit_->setText(tr("Canc&el"));
    EnableForRun(true);
    conversion_.Start();
    drawTimer_.start();
}

void MainWindow::Draw()
{
    if (const auto controls = host_.TakeControls())
        Refresh(*controls);
    progressPage_->ShowProgress(host_.Progress(), conversion_.Milliseconds());
    progressPage_->AddLines(host_.TakeLines());
}

void MainWindow::EndOfRun()
{
    drawTimer_.stop();
    if (cancelQuestion_ != nullptr)
        cancelQuestion_->reject();
    isCancelling_ = false;
    Draw();
    application_.GetJob().controls.UpdateEnabled();
    mappingPage_->Redraw();
    Refresh(application_.GetJob().controls);
    const RunOutcome& outcome = conversion_.Outcome();
    status_->setText(RunSummary(outcome, conversion_.Milliseconds(), host_.LastError()));
    status_->setToolTip(status_->text());
    openResult_->setVisible(outcome.convertedFiles > 0);
    emit RunEnded();
    if (closesAtEnd_)
        close();
}

void MainWindow::btnQuit_Click()
{
    if (commandLineWindow_ != nullptr)
        commandLineWindow_->close();
    if (!conversion_.IsRunning())
        close();
    else if (!isCancelling_ && cancelQuestion_ == nullptr)
        AskWhetherToCancel();
}

/// The run stands still meanwhile, so that what is asked about does not come to its end behind the question.
void MainWindow::AskWhetherToCancel()
{
    const auto cancel = [this] {
        isCancelling_ = true;
        quit_->setText(tr("Cancelling..."));
        quit_->setEnabled(false);
        host_.RequestCancel();
    };
    // The run does not write it while it goes on.
    if (application_.GetJob().settings.blQuiet) {
        cancel();
        return;
    }
    host_.Pause();
    cancelQuestion_ = new QMessageBox(QMessageBox::Question, Caption(),
                                      QString::fromUtf8(kCancelQuestion.data(), kCancelQuestion.size()),
                                      QMessageBox::Ok | QMessageBox::Cancel, this);
    cancelQuestion_->setObjectName("cancelQuestion");
    cancelQuestion_->setDefaultButton(QMessageBox::Cancel);
    cancelQuestion_->setAttribute(Qt::WA_DeleteOnClose);
    connect(cancelQuestion_, &QDialog::finished, this, [this, cancel](int result) {
        cancelQuestion_ = nullptr;
        if (result == QMessageBox::Ok && conversion_.IsRunning()) {
            cancel();
            return;
        }
        closesAtEnd_ = false;
        host_.Resume();
    });
    cancelQuestion_->open();
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    if (!conversion_.IsRunning()) {
        event->accept();
        return;
    }
    event->ignore();
    closesAtEnd_ = true;
    btnQuit_Click();
}

void MainWindow::btnCommandLine_Click()
{
    if (commandLineWindow_ == nullptr)
        commandLineWindow_ = new CommandLineWindow(application_.GetJob().controls, this);
    commandLineWindow_->Refresh();
    commandLineWindow_->show();
    commandLineWindow_->activateWindow();
}

void MainWindow::PressLauncher(const QString& button)
{
    if (launchers_.Press(button.toStdString()))
        form_->Commit();
}

void MainWindow::btnMappingOpen_Click()
{
    Controls& controls = application_.GetJob().controls;
    const QString path = desktop_->AskForFile(
        {"Open mapping", kMappingFilter, kMappingSuffix, QString::fromStdString(controls.txtFILE_MAPPING.text)});
    if (path.isEmpty())
        return;
    controls.txtFILE_MAPPING.text = path.toStdString();
    static_cast<void>(velLoadTagMapping(application_.GetJob(), application_.GetTagMap(), path.toStdString()));
    mappingPage_->Redraw();
    progressPage_->AddLines(host_.TakeLines());
    form_->Commit();
}

void MainWindow::btnMappingSave_Click()
{
    Job& job = application_.GetJob();
    const bool isSomethingThere = PrepareSaving(job, application_.GetTagMap());
    mappingPage_->Redraw();
    if (!isSomethingThere) {
        host_.ShowMessage(kNothingToSave, Icon::Exclamation);
        return;
    }
    for (;;) {
        const QString path = desktop_->AskForNewFile({"Save Mapping", kMappingFilter, kMappingSuffix,
                                                      QString::fromStdString(job.controls.txtFILE_MAPPING.text)});
        if (path.isEmpty())
            return;
        if (FileExists(path.toStdString())) {
            const Answer answer = host_.Ask("The file already exists.\r\nDo you want to owerwrite it?", kCaption,
                                            Buttons::YesNoCancel, Icon::Question, Answer::No);
            if (answer == Answer::No)
                continue;
            if (answer == Answer::Cancel)
                return;
        }
        static_cast<void>(SaveTagMapping(job, application_.GetTagMap(), path.toStdString()));
        progressPage_->AddLines(host_.TakeLines());
        form_->Commit();
        return;
    }
}

void MainWindow::OpenResult()
{
    const Controls& controls = application_.GetJob().controls;
    if (controls.txtFILE_TXT.text.empty())
        PressLauncher("btnMS_ACCESS");
    else
        launchers_.OpenFolderOf(controls.txtFILE_TXT.text);
}

void MainWindow::OpenManual()
{
    const QString folder = QString::fromStdString(ProgramFolder());
    for (const char* place : {"/../share/doc/velmora/manual.md", "/../docs/manual.md", "/../../docs/manual.md"})
        if (QFileInfo::exists(folder + place)) {
            QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(folder + place).canonicalFilePath()));
            return;
        }
    status_->setText(tr("The manual is not installed"));
}

} // namespace velmora
