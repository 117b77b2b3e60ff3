// The window's tests need no display: they run on Qt's offscreen platform.

#include <QApplication>
#include <QStandardPaths>
#include <gtest/gtest.h>

int main(int argc, char* argv[])
{
    testing::InitGoogleTest(&argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QStandardPaths::setTestModeEnabled(true);
    QApplication application(argc, argv);
    QApplication::setApplicationName("velmora");
    return RUN_ALL_TESTS();
}
