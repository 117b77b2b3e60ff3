#pragma once

#include "import/loss_report.h"

#include <QWidget>

class QLabel;
class QTableWidget;

namespace velmora {

/// What the last run did not import: path, number, reason, an example, and what cures it.
class LeftOutWindow : public QWidget {
    Q_OBJECT

public:
    explicit LeftOutWindow(QWidget* parent = nullptr);

    void Show(const LossSummary& summary);

private:
    void Copy();

    QLabel* heading_;
    QTableWidget* table_;
};

} // namespace velmora
