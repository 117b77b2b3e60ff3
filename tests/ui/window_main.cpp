// The window's tests need no display: they run on Qt's offscreen platform.
//
// usage: ui_test [options of GoogleTest], or on a display: ui_test --places XML MDB, which converts the document and
// tells of each control that can be seen then where its middle is in the window: for who is to use a mouse there.

#include "ui/main_window.h"
#include "ui/resources.h"

#include <QApplication>
#include <QLocale>
#include <QSignalSpy>
#include <QStandardPaths>
#include <gtest/gtest.h>
#include <iostream>
#include <string_view>

namespace {

int TellPlaces(const std::string& xml, const std::string& mdb)
{
    velmora::MainWindow window;
    window.Form_Load("xml=\"" + xml + "\" mdb=\"" + mdb + "\"");
    window.show();
    QSignalSpy ended(&window, &velmora::MainWindow::RunEnded);
    window.btnConvert_Click();
    while (ended.isEmpty())
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QApplication::processEvents(); // the layout follows what the run has shown
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        const QPoint middle = widget->mapTo(&window, widget->rect().center());
        if (widget->isVisible() && !widget->objectName().isEmpty())
            std::cout << widget->objectName().toStdString() << ' ' << middle.x() << ' ' << middle.y() << '\n';
    }
    return 0;
}

} // namespace

int main(int argc, char* argv[])
{
    testing::InitGoogleTest(&argc, argv);
    const bool tellsPlaces = argc == 4 && std::string_view(argv[1]) == "--places";
    if (!tellsPlaces)
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    QApplication application(argc, argv);
    QApplication::setApplicationName("velmora");
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    velmora::InstallResources(application);
    return tellsPlaces ? TellPlaces(argv[2], argv[3]) : RUN_ALL_TESTS();
}
