// Pictures of the window for somebody to look at: each page and state, a look at a database, and boxes.
// usage: velmora_screenshots XML FOLDER NAME [dark]; the size of things comes from QT_SCALE_FACTOR, the language from
// LANG.

#include "ui/browser/browser_window.h"
#include "ui/main_window.h"
#include "ui/resources.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QMessageBox>
#include <QPalette>
#include <QProgressBar>
#include <QPushButton>
#include <QStyleFactory>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTimer>

#include <functional>

namespace {

using namespace velmora;

/// As dark themes have it; what is disabled is told apart in fields too.
QPalette DarkPalette()
{
    const QColor window(48, 48, 48), base(34, 34, 34), text(225, 225, 225), dim(125, 125, 125);
    QPalette palette(window);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, text);
        palette.setColor(QPalette::Disabled, role, dim);
    }
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::Disabled, QPalette::Base, window);
    palette.setColor(QPalette::AlternateBase, window.lighter(130));
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::PlaceholderText, QColor(150, 150, 150));
    palette.setColor(QPalette::Link, QColor(110, 170, 240));
    palette.setColor(QPalette::Highlight, QColor(45, 105, 170));
    return palette;
}

void WaitFor(const std::function<bool()>& condition)
{
    while (!condition())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
}

class Photographer {
public:
    Photographer(QString folder, QString name) : folder_(std::move(folder)), name_(std::move(name)) {}

    void Take(QWidget& widget, const QString& what) const
    {
        QApplication::processEvents();
        const QString path = folder_ + "/" + name_ + "-" + what + ".png";
        if (!widget.grab().save(path))
            qFatal("%s could not be written", qPrintable(path));
    }
    void TakePages(QTabWidget& pages, QWidget& window, const QString& what) const
    {
        for (int page = 0; page < pages.count(); ++page) {
            pages.setCurrentIndex(page);
            QApplication::processEvents();
            Take(window, what + QString::number(page + 1));
        }
        pages.setCurrentIndex(0);
    }

private:
    const QString folder_, name_;
};

/// The window in all its states, over files in one folder.
class Session {
public:
    Session(QString xml, QString folder, const Photographer& photographer)
        : xml_(std::move(xml)), folder_(std::move(folder)), photographer_(photographer),
          tabs_(*window_.findChild<QTabWidget*>("tabMain"))
    {
        QObject::connect(&window_, &MainWindow::RunEnded, &window_, [this] { hasEnded_ = true; });
        window_.show();
        window_.resize(window_.sizeHint()); // the screen there is without a display is a small one
    }

    void PhotographIdle()
    {
        Load("xml=\"" + xml_ + "\" mdb=\"" + folder_ + "/orders.mdb\"");
        photographer_.Take(window_, "idle");
        Press("btnMore");
        QApplication::processEvents();
        const QSize size = window_.size();
        window_.resize(window_.sizeHint());
        photographer_.Take(window_, "more");
        Press("btnMore");
        window_.resize(size);
        Load("url=https://example.org/orders.xml auth=me pwd=secret");
        photographer_.Take(window_, "url");
        Load("xml=\"" + xml_ + "\" mdb=\"" + folder_ + "/orders.mdb\"");
        hasEnded_ = false;
        Press("btnPreview");
        WaitFor([this] { return hasEnded_; });
        auto& preview = *window_.findChild<QWidget*>("frmPreview");
        photographer_.Take(preview, "preview");
        preview.close();
    }
    void PhotographDone()
    {
        Convert();
        WaitFor([this] { return hasEnded_; });
        photographer_.TakePages(tabs_, window_, "done-");
        Press("btnOpenResult");
        auto& browser = *window_.findChild<BrowserWindow*>("frmBrowser");
        WaitFor([&] { return !browser.IsReading(); });
        photographer_.TakePages(*browser.findChild<QTabWidget*>("tabBrowser"), browser, "browser-");
        browser.close();
    }
    /// In the midst of a run, where it stands still while somebody is asked, and after the answer.
    void PhotographRun()
    {
        QFile large(folder_ + "/large.xml");
        if (large.open(QIODevice::WriteOnly))
            large.write("<list>" + QByteArray("<item><name>a name</name></item>").repeated(400'000) + "</list>");
        large.close();
        Load("xml=\"" + large.fileName() + "\" mdb=\"" + folder_ + "/large.mdb\"");
        Convert();
        const auto& bar = *window_.findChild<QProgressBar*>("ProgressBar");
        WaitFor([&] { return bar.value() > bar.maximum() / 3 || hasEnded_; });
        window_.btnQuit_Click();
        auto* question = window_.findChild<QMessageBox*>("cancelQuestion");
        photographer_.Take(window_, "running");
        if (question != nullptr) {
            photographer_.Take(*question, "question");
            question->button(QMessageBox::Ok)->click();
        }
        WaitFor([this] { return hasEnded_; });
        photographer_.Take(window_, "cancelled");
    }
    void PhotographProblems()
    {
        Load("xml=missing.xml mdb=/nowhere/a.mdb tp=a.b");
        Press("chkQuiet");
        Press("chkQuiet");
        WaitFor([this] { return !window_.findChild<QLineEdit*>("txtFILE_XML")->accessibleDescription().isEmpty(); });
        photographer_.Take(window_, "problems");

        Load("xml=\"" + xml_ + "\" mdb=\"" + folder_ + "/orders.mdb\" log=\"" + folder_ + "/large.xml/a.log\"");
        QTimer whenTold; // the box has an event loop of its own
        QObject::connect(&whenTold, &QTimer::timeout, &window_, [this] {
            if (QWidget* box = QApplication::activeModalWidget()) {
                photographer_.Take(*box, "error");
                box->close();
            }
        });
        whenTold.start(20);
        Convert();
        WaitFor([this] { return hasEnded_; });
        photographer_.Take(window_, "failed");
    }
    void PhotographLeftOut()
    {
        QFile odd(folder_ + "/odd.xml");
        if (odd.open(QIODevice::WriteOnly))
            odd.write("<a><b id='7'>text<c>1</c></b><b><c>2</c>more text</b><d e='x'/></a>");
        odd.close();
        Load("xml=\"" + odd.fileName() + "\" mdb=\"" + folder_ + "/odd.mdb\" -attributes");
        Convert();
        WaitFor([this] { return hasEnded_; });
        photographer_.Take(window_, "left-out");
        Press("btnLeftOut");
        photographer_.Take(*window_.findChild<QWidget*>("frmLeftOut"), "left-out-list");
    }

private:
    void Load(const QString& commandLine) { window_.Form_Load(commandLine.toStdString()); }
    void Press(const char* button) { window_.findChild<QAbstractButton*>(button)->click(); }
    void Convert()
    {
        hasEnded_ = false;
        window_.btnConvert_Click();
    }

    const QString xml_, folder_;
    const Photographer& photographer_;
    MainWindow window_;
    QTabWidget& tabs_;
    bool hasEnded_ = false;
};

} // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QApplication::setApplicationName("velmora");
    InstallResources(application);
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() < 4)
        qFatal("usage: velmora_screenshots XML FOLDER NAME [dark]");
    if (arguments.value(4) == "dark")
        QApplication::setPalette(DarkPalette());
    QDir().mkpath(arguments[2]);
    const QTemporaryDir files;
    const Photographer photographer(arguments[2], arguments[3]);
    Session session(arguments[1], files.path(), photographer);
    session.PhotographIdle();
    session.PhotographDone();
    session.PhotographRun();
    session.PhotographProblems();
    session.PhotographLeftOut();
}
