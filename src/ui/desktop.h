#pragma once

#include <QString>
#include <QStringList>

#include <string>

class QWidget;

namespace velmora {

/// A question for a file.
struct FileQuestion {
    QString title;
    QString filter; ///< as in "XML (*.xml)|*.xml|All Files (*.*)|*.*"
    QString suffix; ///< added to a name without one: ".xml"
    QString start;  ///< a file or folder to begin at
};

/// What the desktop around the window does for it: dialogs for files, and starting other programs. The one seam where
/// tests put something else.
class Desktop {
public:
    virtual ~Desktop() = default;

    // Empty when the person cancels.
    [[nodiscard]] virtual QString AskForFile(const FileQuestion& question) = 0;
    /// A file that need not be there. It does not ask whether one that is there may be replaced.
    [[nodiscard]] virtual QString AskForNewFile(const FileQuestion& question) = 0;
    [[nodiscard]] virtual QString AskForFolder(const QString& title, const QString& start) = 0;

    /// The program that opens the file, or a text that begins with "Error".
    [[nodiscard]] virtual std::string AssociatedProgram(const std::string& file) = 0;
    /// The program that opens files of this kind, to be started without one; or a text that begins with "Error".
    [[nodiscard]] virtual QStringList ProgramAlone(const std::string& file) = 0;
    /// Starts the program and lets it go: it lives on when this one ends.
    virtual bool Start(const QString& program, const QStringList& arguments) = 0;
};

/// The desktop that is there. Dialogs stand in front of `window`.
class StandardDesktop : public Desktop {
public:
    explicit StandardDesktop(QWidget* window) : window_(window) {}

    [[nodiscard]] QString AskForFile(const FileQuestion& question) override;
    [[nodiscard]] QString AskForNewFile(const FileQuestion& question) override;
    [[nodiscard]] QString AskForFolder(const QString& title, const QString& start) override;
    [[nodiscard]] std::string AssociatedProgram(const std::string& file) override;
    [[nodiscard]] QStringList ProgramAlone(const std::string& file) override;
    bool Start(const QString& program, const QStringList& arguments) override;

private:
    QWidget* window_;
};

/// A file to write: one that is there is taken only when the person says that it may be replaced, and otherwise another
/// one is asked for. Empty when the person cancels.
[[nodiscard]] QString AskForFileToWrite(Desktop& desktop, QWidget& window, const FileQuestion& question);

} // namespace velmora
