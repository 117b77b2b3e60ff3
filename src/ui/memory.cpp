#include "ui/memory.h"

#include <QMainWindow>
#include <QSettings>
#include <QTabWidget>

namespace velmora {

namespace {

constexpr qsizetype kRecentFiles = 10;

QSettings Settings()
{
    return {QSettings::IniFormat, QSettings::UserScope, "velmora", "window"};
}

} // namespace

void Memory::SaveWindow(const QMainWindow& window, const QTabWidget& pages)
{
    QSettings settings = Settings();
    settings.setValue("geometry", window.saveGeometry());
    settings.setValue("page", pages.currentIndex());
}

void Memory::RestoreWindow(QMainWindow& window, QTabWidget& pages)
{
    const QSettings settings = Settings();
    window.restoreGeometry(settings.value("geometry").toByteArray());
    pages.setCurrentIndex(settings.value("page").toInt());
}

QStringList Memory::RecentFiles(const QString& field)
{
    return Settings().value("recent/" + field).toStringList();
}

void Memory::AddRecentFile(const QString& field, const QString& path)
{
    if (path.isEmpty())
        return;
    QStringList files = RecentFiles(field);
    files.removeAll(path);
    files.prepend(path);
    Settings().setValue("recent/" + field, files.mid(0, kRecentFiles));
}

} // namespace velmora
