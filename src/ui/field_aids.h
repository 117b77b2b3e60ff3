#pragma once

#include <QCompleter>

class QFileSystemModel;
class QLineEdit;
class QToolButton;

/// What helps to fill in a field.
namespace velmora {

/// Offers what is in the folder that is being typed. Where a whole file has been named it offers nothing: nobody has to
/// close a list before the next click.
class PathCompleter : public QCompleter {
    Q_OBJECT

public:
    /// `model` outlives it, and reads folders as they are needed.
    explicit PathCompleter(QFileSystemModel& model, QObject* parent = nullptr);

protected:
    [[nodiscard]] QStringList splitPath(const QString& path) const override;

private:
    QFileSystemModel& model_;
};

/// Of files and folders, or of folders alone.
[[nodiscard]] QFileSystemModel* MakeFileSystemModel(bool foldersOnly, QObject* parent);

/// A button with a menu of what a rename pattern can be made of; what is chosen is put into `pattern` where the cursor
/// is, as if it had been typed.
[[nodiscard]] QToolButton* MakeRenameCodes(QLineEdit& pattern);

} // namespace velmora
