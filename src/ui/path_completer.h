#pragma once

#include <QCompleter>

class QFileSystemModel;

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

} // namespace velmora
