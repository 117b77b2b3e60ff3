// The window's tests need no display: they run on Qt's offscreen platform.

#include "ui/resources.h"

#include <QApplication>
#include <QLocale>
#include <QStandardPaths>
#include <gtest/gtest.h>

int main(int argc, char* argv[])
{
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    QApplication application(argc, argv);
    QApplication::setApplicationName("velmora");
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    velmora::InstallResources(application);
    return RUN_ALL_TESTS();
}
