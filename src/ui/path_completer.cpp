#include "ui/path_completer.h"

#include <QDir>
#include <QFileInfo>
#include <QFileSystemModel>

namespace velmora {

PathCompleter::PathCompleter(QFileSystemModel& model, QObject* parent) : QCompleter(&model, parent), model_(model)
{
    setMaxVisibleItems(12);
}

QStringList PathCompleter::splitPath(const QString& path) const
{
    const QFileInfo file(path);
    if (file.isFile())
        return {QString(QChar(0))}; // nothing is called that
    // The model reads a folder when it becomes its root, and says when it has: then the list is there.
    model_.setRootPath(file.absolutePath());
    return QCompleter::splitPath(path);
}

QFileSystemModel* MakeFileSystemModel(bool foldersOnly, QObject* parent)
{
    auto* model = new QFileSystemModel(parent);
    model->setOption(QFileSystemModel::DontWatchForChanges);
    model->setOption(QFileSystemModel::DontUseCustomDirectoryIcons);
    model->setFilter(QDir::AllDirs | QDir::Drives | QDir::NoDotAndDotDot |
                     (foldersOnly ? QDir::Filters() : QDir::Files));
    return model;
}

} // namespace velmora
