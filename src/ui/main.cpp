// velmora-gui: the window, with everything filled in that the command line names.

#include "log/passwords.h"
#include "platform/program.h"
#include "settings/command_line.h"
#include "source/plain_words.h"
#include "ui/main_window.h"
#include "ui/resources.h"

#include <QApplication>
#include <QMessageBox>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using namespace velmora;

/// Plain file names, as a file manager gives them, fill in their fields.
std::string LineOf(const std::vector<std::string>& arguments)
{
    return JoinArguments(TakePlainWords(arguments).arguments);
}

/// A quiet run shows its progress and then closes the window.
void ConvertAndClose(MainWindow& window)
{
    QObject::connect(&window, &MainWindow::RunEnded, &window, &QWidget::close, Qt::QueuedConnection);
    window.btnConvert_Click();
}

/// A quiet run needs no window where the console program is installed, which has an exit status besides.
bool IsQuiet(const std::vector<std::string>& arguments)
{
    try {
        Controls controls;
        ApplyCommandLine(LineOf(arguments), controls, [](std::string_view) {});
        return controls.chkQuiet.Checked();
    } catch (const CommandLineError&) {
        return false; // told by the window
    }
}

} // namespace

int main(int argc, char* argv[])
{
    const std::vector<std::string> arguments(argv + 1, argv + std::max(argc, 1));
    if (IsQuiet(arguments)) {
        const std::string console = FindInstalled("velmora");
        if (!console.empty() && BecomeProgram(console, arguments))
            return 0;
    }
    QApplication qt(argc, argv);
    QApplication::setApplicationName("velmora");
    QApplication::setApplicationVersion(QString::fromUtf8(Version().data(), static_cast<qsizetype>(Version().size())));
    QApplication::setDesktopFileName(kDesktopId);
    InstallResources(qt);

    MainWindow window;
    try {
        window.Form_Load(LineOf(arguments));
    } catch (const CommandLineError& error) {
        QMessageBox::critical(nullptr, window.windowTitle(), QString::fromStdString(WithoutPasswords(error.what())));
        return 2;
    }
    window.Remember();
    window.show();
    if (window.App().GetJob().controls.chkQuiet.Checked())
        ConvertAndClose(window);
    return QApplication::exec();
}
