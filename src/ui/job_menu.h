#pragma once

#include <QMenu>

namespace velmora {

class ControlsForm;
class Desktop;

/// What the button "Job" offers: all that is filled in as a file, the files used last, and what can be done with a
/// database that is there.
class JobMenu : public QMenu {
    Q_OBJECT

public:
    /// `desktop` asks for files. Dialogs stand in front of `window`.
    JobMenu(ControlsForm& form, Desktop& desktop, QWidget& window);

signals:
    void JobChosen(const QString& path);
    void DatabaseChosen(const QString& path);
    /// A database is to be written as XML. If the file is there, it may be replaced.
    void WayBackChosen(const QString& database, const QString& xml);

private:
    void OpenJob();
    void SaveJobAs();
    void LookAtDatabase();
    void WriteAsXml();
    void ShowRecentFiles(QMenu& menu);
    [[nodiscard]] QString AskForDatabase(const QString& title);

    ControlsForm& form_;
    Desktop& desktop_;
    QWidget& window_;
};

} // namespace velmora
