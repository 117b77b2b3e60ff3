#pragma once

#include "schema/database_view.h"
#include "ui/browser/page_model.h"

#include <QWidget>

#include <atomic>
#include <functional>
#include <thread>

class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QTableView;
class QTableWidget;

namespace velmora {

class Desktop;
class Diagram;

/// A look at a database: its tables, their columns and rows, and how they hang together. Nothing in it changes the
/// file. What may take long is read in a thread of its own, one thing at a time, and can be stopped.
class BrowserWindow : public QWidget {
    Q_OBJECT

public:
    /// `desktop` asks for files.
    BrowserWindow(const std::string& path, Desktop& desktop, QWidget* parent = nullptr);
    ~BrowserWindow() override;

    /// Reads the structure, and shows the first table. Shows a message when that fails.
    void Reload();
    [[nodiscard]] bool IsReading() const noexcept { return thread_.joinable(); }

signals:
    /// What was being read is shown, or was given up.
    void Idle();

private:
    [[nodiscard]] QWidget* MakeTableList();
    [[nodiscard]] QWidget* MakeRowsPage();
    [[nodiscard]] QWidget* MakeColumnsPage();
    [[nodiscard]] QWidget* MakeDiagramPage();

    void ShowStructure();
    void ShowTable(int number);
    void ShowPage(std::uint64_t page);
    void FindNext();
    void CopyRows();
    void SaveDiagram();

    /// Runs `read` in the thread and then `show` here; an error is shown instead. Nothing when the thread is busy.
    void InBackground(const QString& what, std::function<void()> read, std::function<void()> show);
    void ShowBusy(const QString& what);
    [[nodiscard]] const DatabaseContents::Table* Current() const;
    [[nodiscard]] bool GoesOn() const noexcept { return !stop_; }

    DatabaseView view_;
    Desktop& desktop_;
    DatabaseContents contents_;
    int current_ = -1;
    std::uint64_t page_ = 0;
    std::uint64_t nextFind_ = 0; ///< the row at which a search goes on

    std::thread thread_;
    std::atomic<bool> stop_ = false;

    PageModel model_;
    QTableWidget* tables_ = nullptr;
    QTableWidget* columns_ = nullptr;
    QTableView* rows_ = nullptr;
    QSpinBox* pageNumber_ = nullptr;
    QLabel* pageText_ = nullptr;
    QLineEdit* search_ = nullptr;
    QPushButton* find_ = nullptr;
    QPushButton* stopButton_ = nullptr;
    QLabel* status_ = nullptr;
    Diagram* diagram_ = nullptr;
};

} // namespace velmora
