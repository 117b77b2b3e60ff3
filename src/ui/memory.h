#pragma once

#include <QStringList>

class QMainWindow;
class QTabWidget;

namespace velmora {

/// What the window keeps from one start to the next: its size, its last page, and the files used last. No option, and
/// never a password.
class Memory {
public:
    static void SaveWindow(const QMainWindow& window, const QTabWidget& pages);
    static void RestoreWindow(QMainWindow& window, QTabWidget& pages);

    /// The newest first.
    [[nodiscard]] static QStringList RecentFiles(const QString& field);
    static void AddRecentFile(const QString& field, const QString& path);
};

} // namespace velmora
