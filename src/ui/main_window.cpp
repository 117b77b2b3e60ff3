#include "ui/main_window.h"

#include "log/passwords.h"
#include "platform/file_listing.h"
#include "platform/paths.h"
#include "platform/program.h"
#include "ui/about_page.h"
#include "ui/browser/browser_window.h"
#include "ui/button_row.h"
#include "ui/command_line_window.h"
#include "ui/controls_form.h"
#include "ui/converter_page.h"
#include "ui/dropped_files.h"
#include "ui/job_file.h"
#include "ui/job_menu.h"
#include "ui/left_out_window.h"
#include "ui/mapping_page.h"
#include "ui/memory.h"
#include "ui/message_box.h"
#include "ui/preview_window.h"
#include "ui/problems.h"
#include "ui/progress_page.h"
#include "ui/run_status_bar.h"
#include "ui/structure_page.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QMessageBox>
#include <QMimeData>
#include <QScreen>
#include <QShortcut>
#include <QTabWidget>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace velmora {

namespace {

constexpr int kDrawMilliseconds = 250; // smooth enough, and next to nothing beside the run
constexpr int kCheckMilliseconds = 300;
constexpr int kStructurePage = 3;

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
    MakeSurroundings();
    MakeShortcuts();
    connect(form_, &ControlsForm::Changed, this, [this] {
        Job& job = application_.GetJob();
        job.settings.blDebug = job.controls.chkDebug.value != CheckState::Unchecked; // counts at once
        if (commandLineWindow_ != nullptr)
            commandLineWindow_->Refresh();
        checkTimer_.start();
    });
    checkTimer_.setSingleShot(true);
    checkTimer_.setInterval(kCheckMilliseconds);
    connect(&checkTimer_, &QTimer::timeout, this, [this] {
        if (!conversion_.IsRunning())
            form_->ShowProblems(FindProblems(application_.GetJob().controls));
    });
    connect(&conversion_, &Conversion::Finished, this, &MainWindow::EndOfRun);
    connect(&drawTimer_, &QTimer::timeout, this, &MainWindow::Draw);
    drawTimer_.setInterval(kDrawMilliseconds);
    setAcceptDrops(true);
    resize(sizeHint().boundedTo(screen()->availableSize() * 0.9));
}

MainWindow::~MainWindow() = default;

void MainWindow::MakePages()
{
    converterPage_ = new ConverterPage(*form_);
    mappingPage_ = new MappingPage(application_.GetJob(), application_.GetTagMap(), *form_, *desktop_);
    progressPage_ = new ProgressPage(*desktop_);
    structurePage_ = new StructurePage(*desktop_);
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
    connect(mappingPage_, &MappingPage::ProtocolWritten, this, [this] { progressPage_->AddLines(host_.TakeLines()); });
    connect(progressPage_, &ProgressPage::LeftOutPressed, this, &MainWindow::ShowLeftOut);
}

/// What is there on every page: the buttons and the status bar.
void MainWindow::MakeSurroundings()
{
    auto* jobMenu = new JobMenu(*form_, *desktop_, *this);
    connect(jobMenu, &JobMenu::JobChosen, this, &MainWindow::OpenJob);
    connect(jobMenu, &JobMenu::DatabaseChosen, this, &MainWindow::Look);
    connect(jobMenu, &JobMenu::WayBackChosen, this, &MainWindow::WriteAsXml);
    buttons_ = new ButtonRow(jobMenu);
    connect(buttons_, &ButtonRow::CommandLinePressed, this, &MainWindow::btnCommandLine_Click);
    connect(buttons_, &ButtonRow::OpenFolderPressed, this, [this] { PressLauncher("btnOPEN_DIRECTORY"); });
    connect(buttons_, &ButtonRow::PreviewPressed, this, &MainWindow::btnPreview_Click);
    connect(buttons_, &ButtonRow::ConvertPressed, this, &MainWindow::btnConvert_Click);
    connect(buttons_, &ButtonRow::QuitPressed, this, &MainWindow::btnQuit_Click);
    status_ = new RunStatusBar;
    connect(status_, &RunStatusBar::LeftOutPressed, this, &MainWindow::ShowLeftOut);
    connect(status_, &RunStatusBar::OpenResultPressed, this, [this] { openResult_(); });

    auto* central = new QWidget;
    auto* column = new QVBoxLayout(central);
    column->addWidget(tabs_, 1);
    column->addWidget(buttons_);
    setCentralWidget(central);
    setStatusBar(status_);
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
    shortcut(Qt::Key_F5, [this] { buttons_->PressConvert(); });
    shortcut(QKeySequence(Qt::CTRL | Qt::Key_Return), [this] { buttons_->PressConvert(); });
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
    shortcut(QKeySequence::HelpContents, [this] {
        if (!launchers_.OpenManual())
            status_->Tell(tr("The manual is not installed"));
    });
}

void MainWindow::Form_Load(std::string_view commandLine)
{
    application_.Form_Load(commandLine);
    status_->Clear();
    static_cast<void>(host_.TakeControls());
    mappingPage_->Redraw();
    progressPage_->Clear();
    progressPage_->AddLines(host_.TakeLines());
    Refresh(application_.GetJob().controls);
    form_->ShowProblems({}); // those of what was filled in before
    checkTimer_.start();
    converterPage_->FocusFirst();
}

void MainWindow::Refresh(const Controls& controls)
{
    form_->Refresh(controls);
    converterPage_->Refresh(controls);
    mappingPage_->Refresh(controls);
    structurePage_->Refresh(controls);
    aboutPage_->Refresh(controls);
    ShowRunning(!controls.btnConvertEnabled);
    // The person may look at other pages meanwhile: only a change by the run turns to one.
    if (shownPage_ != controls.tabMain) {
        shownPage_ = controls.tabMain;
        tabs_->setCurrentIndex(controls.tabMain);
    }
}

void MainWindow::ShowRunning(bool running)
{
    using enum ButtonRow::RunState;
    buttons_->Show(!running ? Idle : isCancelling_ ? Cancelling : Running);
    // While a run goes on, the state is its own.
    converterPage_->setEnabled(!running);
    mappingPage_->setEnabled(!running);
    status_->EnableForRun(running);
    if (commandLineWindow_ != nullptr)
        commandLineWindow_->setEnabled(!running);
}

void MainWindow::btnConvert_Click()
{
    if (conversion_.IsRunning())
        return;
    status_->Clear();
    progressPage_->Clear();
    isCancelling_ = false;
    ShowRunning(true); // at once, without waiting for the run to say so
    conversion_.Start();
    drawTimer_.start();
}

void MainWindow::btnPreview_Click()
{
    if (conversion_.IsRunning())
        return;
    CheckControl& preview = application_.GetJob().controls.chkPreview;
    beforePreview_ = std::exchange(preview.value, CheckState::Checked);
    btnConvert_Click();
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
    TellOutcome();
    Controls& controls = application_.GetJob().controls;
    if (beforeWayBack_)
        controls = *std::exchange(beforeWayBack_, std::nullopt);
    if (beforePreview_)
        controls.chkPreview.value = *std::exchange(beforePreview_, std::nullopt);
    controls.UpdateEnabled();
    mappingPage_->Redraw();
    Refresh(controls);
    checkTimer_.start();
    QApplication::alert(this); // to whoever has turned to another window meanwhile
    emit RunEnded();
    if (closesAtEnd_)
        close();
}

void MainWindow::TellOutcome()
{
    const RunOutcome& outcome = conversion_.Outcome();
    const Controls& controls = application_.GetJob().controls;
    const std::string database = controls.txtFILE_MDB.text, xml = controls.txtFILE_EXPORT.text,
                      folder = controls.txtFILE_TXT.text;
    const bool isWayBack = !xml.empty();
    status_->Tell(RunSummary(outcome, isWayBack, conversion_.Milliseconds(), host_.LastError()));
    status_->OfferLeftOut(outcome.leftOut.values);
    progressPage_->OfferLeftOut(outcome.leftOut.values > 0);
    if (outcome.preview)
        openResult_ = [this] { ShowPreview(); };
    else if (isWayBack)
        openResult_ = [this, xml] { FileExists(xml) ? launchers_.OpenFile(xml) : launchers_.OpenFolderOf(xml); };
    else if (!folder.empty())
        openResult_ = [this, folder] { launchers_.OpenFolderOf(folder); };
    else
        openResult_ = [this, database] { Look(QString::fromStdString(database)); };
    const bool hasEndedWell = !outcome.failed && !outcome.cancelled && !outcome.nothingToDo;
    if (hasEndedWell)
        progressPage_->ShowDone(host_.Progress());
    // What a run has saved stays, also when it was cancelled.
    const bool hasSaved = std::any_of(outcome.tables.begin(), outcome.tables.end(),
                                      [](const TableReport& table) { return table.records > 0; });
    status_->OfferResult(isWayBack ? hasEndedWell : outcome.preview || outcome.convertedFiles > 0 || hasSaved);
    if (outcome.preview && !outcome.cancelled && !closesAtEnd_)
        ShowPreview();
    if (remembers_) {
        Memory::AddRecentFile("xml", QString::fromStdString(controls.FromUrl() ? "" : controls.txtFILE_XML.text));
        Memory::AddRecentFile("mdb", QString::fromStdString(database));
    }
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
        ShowRunning(true);
        host_.RequestCancel();
    };
    // The run leaves these controls alone. Nothing is lost of a preview.
    const Controls& controls = application_.GetJob().controls;
    if (controls.chkQuiet.Checked() || controls.chkPreview.Checked()) {
        cancel();
        return;
    }
    host_.Pause();
    cancelQuestion_ = MakeMessageBox(*this, QString::fromUtf8(kCancelQuestion.data(), kCancelQuestion.size()),
                                     Buttons::OkCancel, Icon::Question, Answer::Cancel);
    cancelQuestion_->setObjectName("cancelQuestion");
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
        if (remembers_)
            Memory::SaveWindow(*this, *tabs_);
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

void MainWindow::Look(const QString& path)
{
    auto* browser = new BrowserWindow(NativePath(path.toStdString()), *desktop_, this);
    browser->show();
    browser->Reload();
}

/// A run of its own beside what is filled in, which comes back in the end.
void MainWindow::WriteAsXml(const QString& database, const QString& xml)
{
    Controls& controls = application_.GetJob().controls;
    beforeWayBack_ = controls;
    controls.tabSourceType = 0;
    for (const auto field : {&Controls::txtFILE_XML, &Controls::txtXML_URL, &Controls::txtFILE_TXT})
        (controls.*field).text.clear();
    controls.txtFILE_MDB.text = database.toStdString();
    controls.txtFILE_EXPORT.text = xml.toStdString();
    // The person was asked about that very file; several documents get numbered names, about which the run asks.
    const QFileInfo file(xml);
    const QString numbered = file.path() + '/' + file.completeBaseName() + "_*.xml";
    const bool mayReplace = file.exists() && ListFiles(numbered.toStdString()).empty();
    controls.chkOverwrite.value = mayReplace ? CheckState::Checked : CheckState::Unchecked;
    btnConvert_Click();
}

void MainWindow::ShowLeftOut()
{
    if (leftOutWindow_ == nullptr)
        leftOutWindow_ = new LeftOutWindow(this);
    leftOutWindow_->Show(conversion_.Outcome().leftOut);
}

void MainWindow::ShowPreview()
{
    if (previewWindow_ == nullptr)
        previewWindow_ = new PreviewWindow(this);
    const RunOutcome& outcome = conversion_.Outcome();
    previewWindow_->Show(outcome, application_.GetJob().settings,
                         StatusOf(outcome, application_.MappingLoaded(), true));
}

void MainWindow::Remember()
{
    remembers_ = true;
    Memory::RestoreWindow(*this, *tabs_);
}

void MainWindow::OpenJob(const QString& path)
{
    try {
        Form_Load(ReadJob(path.toStdString()));
    } catch (const std::exception& error) {
        host_.ShowMessage(WithoutPasswords(error.what()), Icon::Exclamation);
    }
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event)
{
    if (event->mimeData()->hasUrls() && !conversion_.IsRunning())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event)
{
    QStringList paths;
    for (const QUrl& url : event->mimeData()->urls())
        if (url.isLocalFile())
            paths.append(url.toLocalFile());
    const DroppedFiles dropped = UnderstandDrop(paths);
    Controls& controls = application_.GetJob().controls;
    if (!dropped.job.isEmpty())
        OpenJob(dropped.job);
    if (!dropped.xml.isEmpty()) {
        controls.txtFILE_XML.text = dropped.xml.toStdString();
        controls.tabSourceType = 0;
        converterPage_->Refresh(controls);
    }
    if (!dropped.mdb.isEmpty())
        controls.txtFILE_MDB.text = dropped.mdb.toStdString();
    if (!dropped.mapping.isEmpty())
        mappingPage_->Load(dropped.mapping);
    status_->Tell(dropped.isUnclear
                      ? tr("Drop XML files that one pattern can name, a folder, a database, or a mapping file")
                      : QString());
    form_->Commit();
    event->acceptProposedAction();
}

} // namespace velmora
