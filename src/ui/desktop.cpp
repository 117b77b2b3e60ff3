#include "ui/desktop.h"

#include "platform/program.h"
#include "ui/message_box.h"

#include <QCoreApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QMimeDatabase>
#include <QProcess>
#include <QStandardPaths>

namespace velmora {

namespace {

constexpr int kLookUpMilliseconds = 3000;

/// From pairs of a text and a pattern to what Qt wants: the text alone where it names the pattern itself.
QStringList NameFilters(const QString& filter)
{
    QStringList filters;
    const QStringList parts = filter.split('|');
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2)
        filters.append(parts[i].contains('(') ? parts[i] : QStringLiteral("%1 (%2)").arg(parts[i], parts[i + 1]));
    return filters.replaceInStrings("*.*", "*");
}

QString Run(QFileDialog& dialog, const FileQuestion& question)
{
    dialog.setWindowTitle(question.title);
    dialog.setNameFilters(NameFilters(question.filter));
    dialog.setDefaultSuffix(question.suffix);
    const QFileInfo start(question.start);
    if (!question.start.isEmpty()) {
        dialog.setDirectory(start.isDir() ? start.filePath() : start.path());
        if (!start.isDir())
            dialog.selectFile(start.fileName());
    }
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

} // namespace

QString StandardDesktop::AskForFile(const FileQuestion& question)
{
    QFileDialog dialog(window_);
    // A database or a log may be named before there is one.
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    return Run(dialog, question);
}

QString StandardDesktop::AskForNewFile(const FileQuestion& question)
{
    QFileDialog dialog(window_);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setOption(QFileDialog::DontConfirmOverwrite);
    return Run(dialog, question);
}

QString StandardDesktop::AskForFolder(const QString& title, const QString& start)
{
    return QFileDialog::getExistingDirectory(window_, title, start);
}

std::string StandardDesktop::AssociatedProgram(const std::string& file)
{
    return FindAssociatedProgram(file);
}

QStringList StandardDesktop::ProgramAlone(const std::string& file)
{
    QStringList none{QStringLiteral("Error: No Association")};
    const QString type =
        QMimeDatabase().mimeTypeForFile(QString::fromStdString(file), QMimeDatabase::MatchExtension).name();
    QProcess query;
    query.start("xdg-mime", {"query", "default", type});
    if (!query.waitForFinished(kLookUpMilliseconds))
        return none;
    const QString entry = QString::fromUtf8(query.readAllStandardOutput()).trimmed();
    const QString launcher = QStandardPaths::findExecutable("gtk-launch");
    return entry.isEmpty() || launcher.isEmpty() ? none : QStringList{launcher, entry};
}

bool StandardDesktop::Start(const QString& program, const QStringList& arguments)
{
    return QProcess::startDetached(program, arguments);
}

QString AskForFileToWrite(Desktop& desktop, QWidget& window, const FileQuestion& question)
{
    for (;;) {
        QString path = desktop.AskForNewFile(question);
        if (path.isEmpty() || !QFileInfo::exists(path))
            return path;
        const QString text = QCoreApplication::translate("Desktop", "The file already exists.") + "\r\n" +
                             QCoreApplication::translate("Desktop", "Do you want to owerwrite it?");
        const Answer answer = AskInBox(window, text, Buttons::YesNoCancel, Icon::Question, Answer::No);
        if (answer == Answer::Yes)
            return path;
        if (answer == Answer::Cancel)
            return {};
    }
}

} // namespace velmora
