#include "ui/main_window.h"

#include "log/passwords.h"
#include "mapping/tag_map_file.h"
#include "platform/paths.h"
#include "platform/program.h"
#include "ui/about_page.h"
#include "ui/browser/browser_window.h"
#include "ui/command_line_window.h"
#include "ui/controls_form.h"
#include "ui/converter_page.h"
#include "ui/dropped_files.h"
#include "ui/job_file.h"
#include "ui/left_out_window.h"
#include "ui/mapping_page.h"
#include "ui/memory.h"
#include "ui/problems.h"
#include "ui/progress_page.h"
#include "ui/run_summary.h"
#include "ui/structure_page.h"

#include <QCloseEvent>
#include <QDesktopServices>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QMessageBox>
#include <QMimeData>
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

constexpr int kDrawMilliseconds = 150; // smooth enough, and next to nothing beside the run
constexpr int kCheckMilliseconds = 300;
constexpr int kStructurePage = 3;

constexpr const char* kMappingFilter = "Tab Separated Values (*.tsv)|*.tsv|All Files (*.*)|*.*";
constexpr const char* kMappingSuffix = ".tsv";
constexpr const char* kJobFilter = "Job (*.velmora)|*.velmora|All Files (*.*)|*.*";

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
    job_ = MakeJobMenu();
    connect(commandLine_, &QPushButton::clicked, this, &MainWindow::btnCommandLine_Click);
    connect(openDirectory_, &QPushButton::clicked, this, [this] { PressLauncher("btnOPEN_DIRECTORY"); });
    connect(convert_, &QPushButton::clicked, this, &MainWindow::btnConvert_Click);
    connect(quit_, &QPushButton::clicked, this, &MainWindow::btnQuit_Click);

    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(job_);
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
    status_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // a long text does not widen the window
    openResult_ = new QPushButton(tr("Open the result"));
    openResult_->setObjectName("btnOpenResult");
    openResult_->setToolTip(tr("Show what the last conversion has written"));
    openResult_->setAccessibleName(openResult_->text());
    openResult_->hide();
    leftOut_ = new QPushButton;
    leftOut_->setObjectName("btnLeftOut");
    leftOut_->setToolTip(tr("Show what was not imported, and what cures it"));
    leftOut_->hide();
    connect(leftOut_, &QPushButton::clicked, this, &MainWindow::ShowLeftOut);
    connect(progressPage_, &ProgressPage::LeftOutPressed, this, &MainWindow::ShowLeftOut);
    statusBar()->addPermanentWidget(leftOut_);
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
    job_->setEnabled(!running);
    if (commandLineWindow_ != nullptr)
        commandLineWindow_->setEnabled(!running);
    openResult_->setEnabled(!running);
}

void MainWindow::btnConvert_Click()
{
    if (conversion_.IsRunning())
        return;
    status_->clear();
    openResult_->hide();
    leftOut_->hide();
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
    leftOut_->setText(tr("Not imported: %1…").arg(QLocale().toString(qlonglong{outcome.leftOut.values})));
    leftOut_->setAccessibleName(leftOut_->text());
    leftOut_->setVisible(outcome.leftOut.values > 0);
    progressPage_->OfferLeftOut(outcome.leftOut.values > 0);
    if (remembers_) {
        const Controls& controls = application_.GetJob().controls;
        Memory::AddRecentFile("xml", QString::fromStdString(controls.FromUrl() ? "" : controls.txtFILE_XML.text));
        Memory::AddRecentFile("mdb", QString::fromStdString(controls.txtFILE_MDB.text));
    }
    checkTimer_.start();
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
    // The run leaves this control alone.
    if (application_.GetJob().controls.chkQuiet.Checked()) {
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

void MainWindow::btnMappingOpen_Click()
{
    Controls& controls = application_.GetJob().controls;
    const QString path = desktop_->AskForFile(
        {"Open mapping", kMappingFilter, kMappingSuffix, QString::fromStdString(controls.txtFILE_MAPPING.text)});
    if (path.isEmpty())
        return;
    LoadMapping(path.toStdString());
}

void MainWindow::LoadMapping(const std::string& path)
{
    application_.GetJob().controls.txtFILE_MAPPING.text = path;
    static_cast<void>(velLoadTagMapping(application_.GetJob(), application_.GetTagMap(), path));
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
        const Answer answer = MayReplace(path);
        if (answer == Answer::No)
            continue;
        if (answer == Answer::Cancel)
            return;
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
        Look(controls.txtFILE_MDB.text);
    else
        launchers_.OpenFolderOf(controls.txtFILE_TXT.text);
}

void MainWindow::Look(const std::string& path)
{
    auto* browser = new BrowserWindow(NativePath(path), *desktop_, this);
    browser->show();
    browser->Reload();
}

void MainWindow::LookAtDatabase()
{
    const QString path =
        desktop_->AskForFile({tr("Look at a database"), "MS Access Database (*.mdb)|*.mdb|All Files (*.*)|*.*", ".mdb",
                              QString::fromStdString(application_.GetJob().controls.txtFILE_MDB.text)});
    if (!path.isEmpty())
        Look(path.toStdString());
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

Answer MainWindow::MayReplace(const QString& path)
{
    if (!FileExists(path.toStdString()))
        return Answer::Yes;
    return host_.Ask("The file already exists.\r\nDo you want to owerwrite it?", kCaption, Buttons::YesNoCancel,
                     Icon::Question, Answer::No);
}

void MainWindow::ShowLeftOut()
{
    if (leftOutWindow_ == nullptr)
        leftOutWindow_ = new LeftOutWindow(this);
    leftOutWindow_->Show(conversion_.Outcome().leftOut);
}

void MainWindow::Remember()
{
    remembers_ = true;
    Memory::RestoreWindow(*this, *tabs_);
}

QPushButton* MainWindow::MakeJobMenu()
{
    auto* menu = new QMenu(this);
    menu->addAction(tr("&Open a job…"), this, [this] {
        const QString path = desktop_->AskForFile({tr("Open a job"), kJobFilter, kJobSuffix, {}});
        if (!path.isEmpty())
            OpenJob(path);
    });
    menu->addAction(tr("&Save as a job…"), this, &MainWindow::SaveJobAs);
    menu->addAction(tr("&Look at a database…"), this, &MainWindow::LookAtDatabase);
    auto* recent = menu->addMenu(tr("&Recent files"));
    connect(recent, &QMenu::aboutToShow, this, [this, recent] { ShowRecentFiles(*recent); });
    auto* button = new QPushButton(tr("&Job"));
    button->setObjectName("btnJob");
    button->setToolTip(tr("Keep all that is filled in as a file, or open one"));
    button->setAccessibleName(PlainLabel(button->text()));
    button->setMenu(menu);
    return button;
}

void MainWindow::ShowRecentFiles(QMenu& menu)
{
    menu.clear();
    const auto add = [&](const char* kind, TextControl Controls::*field) {
        for (const QString& path : Memory::RecentFiles(kind))
            menu.addAction(path, this, [this, path, field] {
                (application_.GetJob().controls.*field).text = path.toStdString();
                form_->Commit();
            });
    };
    add("xml", &Controls::txtFILE_XML);
    menu.addSeparator();
    add("mdb", &Controls::txtFILE_MDB);
}

void MainWindow::OpenJob(const QString& path)
{
    try {
        Form_Load(ReadJob(path.toStdString()));
    } catch (const std::exception& error) {
        host_.ShowMessage(WithoutPasswords(error.what()), Icon::Exclamation);
    }
}

void MainWindow::SaveJobAs()
{
    for (;;) {
        const QString path = desktop_->AskForNewFile({tr("Save as a job"), kJobFilter, kJobSuffix, {}});
        if (path.isEmpty())
            return;
        const Answer answer = MayReplace(path);
        if (answer == Answer::No)
            continue;
        if (answer == Answer::Cancel)
            return;
        if (const std::error_code failure = SaveJob(application_.GetJob().controls, path.toStdString()))
            host_.ShowMessage("The job " + path.toStdString() + " cannot be written: " + failure.message(),
                              Icon::Exclamation);
        return;
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
        LoadMapping(dropped.mapping.toStdString());
    status_->setText(dropped.isUnclear
                         ? tr("Drop XML files that one pattern can name, a folder, a database, or a mapping file")
                         : QString());
    form_->Commit();
    event->acceptProposedAction();
}

} // namespace velmora
