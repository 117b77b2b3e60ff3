// Pictures of every page of the window, before, during and after a conversion, for somebody to look at.
// usage: velmora_screenshots XML FOLDER NAME [dark]; the size of things comes from QT_SCALE_FACTOR, the language from
// LANG.

#include "ui/browser/browser_window.h"
#include "ui/browser/diagram.h"
#include "ui/main_window.h"
#include "ui/resources.h"

#include <QApplication>
#include <QDir>
#include <QPalette>
#include <QPushButton>
#include <QStyleFactory>
#include <QTabWidget>
#include <QTimer>

#include <string>

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

private:
    const QString folder_, name_;
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
    const Photographer photographer(arguments[2], arguments[3]);
    const QString target = arguments[2] + "/" + arguments[3] + ".mdb";

    MainWindow window;
    window.Form_Load(("xml=\"" + arguments[1] + "\" mdb=\"" + target + "\"").toStdString());
    window.show();
    auto& tabs = *window.findChild<QTabWidget*>("tabMain");
    photographer.Take(window, "1-converter");
    QObject::connect(&window, &MainWindow::RunEnded, &application, [&] {
        photographer.Take(window, "2-converter-done");
        for (int page = 1; page < tabs.count(); ++page) {
            tabs.setCurrentIndex(page);
            photographer.Take(window, QString::number(page + 2) + "-page");
        }
        tabs.setCurrentIndex(0);
        window.findChild<QPushButton*>("btnOpenResult")->click();
        auto& browser = *window.findChild<BrowserWindow*>("frmBrowser");
        QObject::connect(&browser, &BrowserWindow::Idle, &application, [&] {
            auto& pages = *browser.findChild<QTabWidget*>("tabBrowser");
            for (int page = 0; page < pages.count(); ++page) {
                pages.setCurrentIndex(page);
                QApplication::processEvents();
                browser.findChild<Diagram*>()->ShowAll();
                photographer.Take(browser, "browser-" + QString::number(page + 1));
            }
            QApplication::quit();
        });
    });
    window.btnConvert_Click();
    return QApplication::exec();
}
